#pragma once

// The payload form of newer installer packages: the magic "pbzx", the chunk size, then chunks of flags, length and
// data, each an xz stream (or, when it would not shrink, the bytes as they are). Together they make a cpio archive.

#include <QString>

namespace PbzxPayload {

bool isPbzx(const QString &payload);
enum class Decoded { Done, Damaged, TooLarge };
// Writes the cpio archive that payload holds to cpioFile; Damaged on a damaged or cut-off payload, TooLarge (and
// stopped there) when the archive would pass maxBytes.
Decoded decode(const QString &payload, const QString &cpioFile, qint64 maxBytes);

} // namespace PbzxPayload
