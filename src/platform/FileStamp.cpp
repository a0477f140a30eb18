#include "platform/FileStamp.h"

#include <QFile>

#include <sys/stat.h>

FileStamp FileStamp::of(const QString &path)
{
    struct stat info = {};
    return stat(QFile::encodeName(path).constData(), &info) == 0 ? fromStat(info) : FileStamp{};
}

FileStamp FileStamp::fromStat(const struct stat &info)
{
    return {true,        S_ISREG(info.st_mode), info.st_dev,
            info.st_ino, qint64(info.st_size),  qint64(info.st_mtim.tv_sec) * 1000000000 + info.st_mtim.tv_nsec};
}
