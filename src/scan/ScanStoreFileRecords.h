#pragma once

// Finds each record's object in a store's text without parsing it, so that records are parsed one by one and a
// large store is never held as one parsed document beside its text.

#include <QByteArrayView>

#include <optional>
#include <vector>

namespace ScanStoreFileRecords {

// The objects of {"apps":[{...},...]} as this program writes it (whitespace between tokens allowed); nullopt for any
// other layout (a byte-order mark, other keys, an entry that is no object, deep nesting, anything after the end),
// which the caller parses whole instead. Strings are followed, not checked: each object still has to parse.
std::optional<std::vector<QByteArrayView>> split(QByteArrayView text);

} // namespace ScanStoreFileRecords
