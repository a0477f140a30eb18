#pragma once

// The catalogue's checksum of a download file: hexadecimal MD5, SHA-1 or SHA-256, told apart by their length.

#include <QString>

namespace FileHash {
// True when the file's digest equals hash (any letter case). A hash of no known length, or an unreadable file, never
// matches: a file that cannot be checked is not installed.
bool matches(const QString &filePath, const QString &hash);
} // namespace FileHash
