#pragma once

// A data table's columns declared, a row added, and a row's values read, in one line each:
//     columns<QString, bool>("path", "listed");
//     row("hidden file", "/a/.b", false);
//     auto [path, listed] = fetch<QString, bool>("path", "listed");

#include <QTest>

#include <tuple>
#include <type_traits>

template <typename... T> void columns(std::conditional_t<true, const char *, T>... names)
{
    (QTest::addColumn<T>(names), ...);
}

// The values go in as QTest::newRow() << value would put them: a string literal becomes a QString.
template <typename... T> void row(const char *tag, const T &...values)
{
    (QTest::newRow(tag) << ... << values);
}

template <typename... T> std::tuple<T...> fetch(std::conditional_t<true, const char *, T>... names)
{
    return {*static_cast<T *>(QTest::qData(names, qMetaTypeId<T>()))...};
}
