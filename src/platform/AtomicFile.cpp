#include "platform/AtomicFile.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace AtomicFile {
namespace {

Result failure(int error)
{
    return {false, QString::fromLocal8Bit(std::strerror(error))};
}

// Makes a finished rename last through a crash; a folder that cannot be synced changes nothing that was written.
void syncFolder(const QString &path)
{
    const int fd = open(QFile::encodeName(QFileInfo(path).path()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0) {
        fsync(fd);
        close(fd);
    }
}

Result writeAll(int fd, const QByteArray &bytes)
{
    const char *data = bytes.constData();
    qint64 left = bytes.size();
    while (left > 0) {
        const ssize_t written = ::write(fd, data, size_t(left));
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written < 0) {
            return failure(errno);
        }
        // A full disk may take part of a write and refuse the rest only on the next call.
        data += written;
        left -= written;
    }
    return {true, {}};
}

Result sync(int fd)
{
    // Without this the rename could reach the disk before the data, and a crash leave an empty file.
    if (fsync(fd) != 0) {
        return failure(errno);
    }
    return {true, {}};
}

} // namespace

QString temporaryPrefix(const QString &path)
{
    return path + QStringLiteral(".new-");
}

Result writeAndSync(int fd, const QByteArray &bytes)
{
    const Result written = writeAll(fd, bytes);
    return written.ok ? sync(fd) : written;
}

Result write(const QString &path, const QByteArray &bytes)
{
    bool given = false;
    return write(path, [&bytes, &given](QByteArray &piece) {
        if (!given) {
            piece = bytes;
            given = true;
        }
        return false;
    });
}

Result write(const QString &path, const std::function<bool(QByteArray &)> &nextPiece)
{
    QByteArray name = QFile::encodeName(temporaryPrefix(path) + QStringLiteral("XXXXXX"));
    const int fd = mkostemp(name.data(), O_CLOEXEC);
    if (fd < 0) {
        return failure(errno);
    }
    Result result{true, {}};
    QByteArray piece;
    for (bool more = true; more && result.ok;) {
        piece.resize(0); // keeps the capacity: the next piece is built in the same buffer
        more = nextPiece(piece);
        result = writeAll(fd, piece);
    }
    if (result.ok) {
        result = sync(fd);
    }
    // Some file systems report a failed write only when the file is closed.
    if (close(fd) != 0 && result.ok) {
        result = failure(errno);
    }
    if (result.ok && rename(name.constData(), QFile::encodeName(path).constData()) != 0) {
        result = failure(errno);
    }
    if (!result.ok) {
        unlink(name.constData());
        return result;
    }
    syncFolder(path);
    return result;
}

} // namespace AtomicFile
