#pragma once

// JSON objects kept in a text column.

#include <QJsonDocument>
#include <QJsonObject>

namespace JsonColumn {

inline QString text(const QJsonObject &object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

inline QJsonObject object(const QString &text)
{
    return QJsonDocument::fromJson(text.toUtf8()).object();
}

} // namespace JsonColumn
