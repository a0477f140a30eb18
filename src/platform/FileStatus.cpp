#include "platform/FileStatus.h"

#include "platform/NativePath.h"

#include <cerrno>
#include <cstring>

#include <sys/stat.h>

namespace {

qint64 nsecs(const struct timespec &time)
{
    return qint64(time.tv_sec) * 1000000000 + time.tv_nsec;
}

} // namespace

FileStatus FileStatus::of(const QString &path, Links links)
{
    FileStatus status;
    struct stat info = {};
    const QByteArray name = NativePath::encode(path);
    if ((links == Links::Follow ? stat(name.constData(), &info) : lstat(name.constData(), &info)) != 0) {
        status.failure = QString::fromLocal8Bit(std::strerror(errno));
        return status;
    }
    status.size = qint64(info.st_size);
    status.isFolder = S_ISDIR(info.st_mode);
#ifdef __APPLE__
    status.modifiedNsecs = nsecs(info.st_mtimespec);
    status.accessedNsecs = nsecs(info.st_atimespec);
#else
    status.modifiedNsecs = nsecs(info.st_mtim);
    status.accessedNsecs = nsecs(info.st_atim);
#endif
    return status;
}
