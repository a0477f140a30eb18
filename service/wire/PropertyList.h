#pragma once

// XML property lists for the list replies, from JSON values (texts, numbers, booleans, lists, dictionaries).

#include <QByteArray>
#include <QJsonObject>

namespace PropertyList {

QByteArray xml(const QJsonObject &root);

} // namespace PropertyList
