#pragma once

// The old-style text property list that .strings files use: "key" = "value"; pairs, comments, escapes,
// nested ( arrays ) and { dictionaries }. The bytes may be UTF-16 (with or without a byte-order mark) or UTF-8.

#include <QByteArray>
#include <QString>
#include <QVariantMap>

#include <optional>

std::optional<QVariantMap> parseOldStylePlist(const QByteArray &bytes, QString *problem = nullptr);

// The text of a .strings file, its encoding found from the byte-order mark or the zero bytes of UTF-16.
QString decodeStringsText(const QByteArray &bytes);
