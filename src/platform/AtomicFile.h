#pragma once

// Writing a file whole or not at all. The new contents go to a temporary file beside the target (same folder, so
// the same file system), every write is checked, the data is flushed to the disk, and only then is the file renamed
// over the target. A write that cannot complete (a full disk, a file-size limit, an I/O error) removes the
// temporary file and leaves the target as it was: readers, and a process killed at any moment, see the old file or
// the new one, never a cut one.

#include <QByteArray>
#include <QString>

#include <functional>

namespace AtomicFile {

struct Result
{
    bool ok = false;
    QString reason; // the system's words when !ok
};

// Replaces path with bytes; the new file is private to the user (mode 0600).
Result write(const QString &path, const QByteArray &bytes);
// The same for contents made piece by piece, so that a large file is never held whole: nextPiece(piece) fills the
// emptied piece and returns false once nothing is left (a piece it fills on that call is still written).
Result write(const QString &path, const std::function<bool(QByteArray &)> &nextPiece);

// The names write() gives its temporary files for path all start with this. Such a file that no write is using is
// the leftover of a writer killed before its rename.
QString temporaryPrefix(const QString &path);

// Writes every byte to the open descriptor (short and interrupted writes are continued) and flushes it to the disk.
Result writeAndSync(int fd, const QByteArray &bytes);

} // namespace AtomicFile
