#pragma once

// Maps one record of the real-world catalogue (one object per "token") to a record of our own shape.

#include <QJsonObject>

namespace PublicCatalogueMapping {

QJsonObject map(const QJsonObject &source);
// ">= :big_sur" -> "11.0"; a list of names -> the oldest; "<= ..." (a ceiling, not a minimum) -> "".
QString minimumOsVersion(const QJsonValue &minMacos);

} // namespace PublicCatalogueMapping
