#pragma once

// How deeply a property list nests its arrays and dictionaries, told from its bytes without parsing it. The
// parser and the code that frees its tree recurse once per level, so a bundle holding a list nested a hundred
// thousand levels deep would bring down the whole scan; such a list is refused before it is parsed.

#include <QByteArray>

namespace PlistNesting {

// True when the XML or binary property list in bytes nests arrays and dictionaries more than limit levels deep.
// Bytes that are not a well-formed list of either kind answer false: the parser refuses them on its own.
bool nestsDeeperThan(const QByteArray &bytes, int limit);

} // namespace PlistNesting
