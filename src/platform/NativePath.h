#pragma once

// Paths as the system names them: bytes, which need not be UTF-8. Each byte of a name that is not UTF-8 becomes
// one character U+DC80..U+DCFF in the text, so that encode gives the same bytes back and a file with such a name
// can still be read (QFile::decodeName turns them into U+FFFD, which names no file).

#include <QByteArray>
#include <QString>

namespace NativePath {

QString decode(const QByteArray &bytes);
// The bytes of a path: UTF-8, with the characters decode made from stray bytes turned back into those bytes.
QByteArray encode(const QString &path);

} // namespace NativePath
