#pragma once

// The marker texts of the record's fields. A null QString is an absent value; these two are present ones.

#include <QString>

namespace RecordText {

// Not known; in localPath, not installed.
inline const QString unknown = QStringLiteral("-");
// Known to be empty.
inline const QString empty = QStringLiteral("");
// App Store copies carry this after their display name: a blank and U+F8FF.
inline const QString appStoreMark = QStringLiteral(" \uF8FF");
inline const QString appStoreSign = QStringLiteral("\uF8FF");

} // namespace RecordText
