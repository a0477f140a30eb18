#include "platform/FileBytes.h"

#include "platform/NativePath.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace FileBytes {
namespace {

Result failed(Failure failure, int error = 0, const FileStamp &stamp = {})
{
    Result result;
    result.failure = failure;
    result.stamp = stamp;
    if (error != 0) {
        result.reason = QString::fromLocal8Bit(std::strerror(error));
    }
    return result;
}

} // namespace

Result read(const QString &path, qint64 limit)
{
    const int fd = open(NativePath::encode(path).constData(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    if (fd < 0) {
        return errno == ENOENT || errno == ENOTDIR ? failed(Failure::Missing) : failed(Failure::Unreadable, errno);
    }
    struct stat info = {};
    if (fstat(fd, &info) != 0) {
        const int error = errno;
        close(fd);
        return failed(Failure::Unreadable, error);
    }
    const FileStamp stamp = FileStamp::fromStat(info);
    if (!S_ISREG(info.st_mode)) {
        close(fd);
        return failed(Failure::Unreadable, S_ISDIR(info.st_mode) ? EISDIR : EINVAL, stamp);
    }
    if (info.st_size > limit) {
        close(fd);
        return failed(Failure::TooLarge, 0, stamp);
    }
    // The size is a hint only: the file may grow or shrink while it is read.
    QByteArray bytes(qsizetype(info.st_size) + 1, Qt::Uninitialized);
    qsizetype used = 0;
    for (;;) {
        if (used == bytes.size()) {
            if (used > limit) {
                close(fd);
                return failed(Failure::TooLarge, 0, stamp);
            }
            bytes.resize(std::min<qsizetype>(bytes.size() * 2 + 4096, qsizetype(limit) + 1));
        }
        const ssize_t count = ::read(fd, bytes.data() + used, size_t(bytes.size() - used));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            const int error = errno;
            close(fd);
            return failed(Failure::Unreadable, error, stamp);
        }
        if (count == 0) {
            break;
        }
        used += count;
    }
    close(fd);
    bytes.truncate(used);
    Result result;
    result.bytes = std::move(bytes);
    result.stamp = stamp;
    return result;
}

} // namespace FileBytes
