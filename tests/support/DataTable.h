#pragma once

// A data table's columns declared, and a row's values read, in one line each instead of one line per column:
//     columns<QString, bool>("path", "listed");
//     auto [path, listed] = fetch<QString, bool>("path", "listed");

#include <QTest>

#include <tuple>
#include <type_traits>

template <typename... T> void columns(std::conditional_t<true, const char *, T>... names)
{
    (QTest::addColumn<T>(names), ...);
}

template <typename... T> std::tuple<T...> fetch(std::conditional_t<true, const char *, T>... names)
{
    return {*static_cast<T *>(QTest::qData(names, qMetaTypeId<T>()))...};
}
