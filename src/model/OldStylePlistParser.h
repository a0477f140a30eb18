#pragma once

// The old-style text property list: "key" = "value"; pairs as .strings files hold them, or one { dictionary } as
// some Info.plist files do, with comments, escapes, nested ( arrays ), { dictionaries } and <hex data>, within the
// bounds of PlistBudget. The text comes from decodeStringsText.

#include <QByteArray>
#include <QString>
#include <QVariantMap>

#include <optional>

std::optional<QVariantMap> parseOldStylePlist(const QString &text, QString *problem = nullptr);

// The text of a .strings file, its encoding found from the byte-order mark or the zero bytes of UTF-16, else UTF-8.
QString decodeStringsText(const QByteArray &bytes);
