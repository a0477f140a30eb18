#pragma once

#include <QStringList>

#include <initializer_list>

// Test tables write their texts as UTF-8 literals.
inline QString s(const char *text)
{
    return QString::fromUtf8(text);
}

inline QStringList L(std::initializer_list<const char *> items)
{
    QStringList list;
    for (const char *item : items) {
        list.append(QString::fromUtf8(item));
    }
    return list;
}
