#include "install/PlacingRoom.h"

#include "platform/FileStatus.h"
#include "platform/NativePath.h"

#include <QDirIterator>
#include <QFileInfo>

#include <sys/statvfs.h>

namespace {

constexpr qint64 kBlock = 4096;

qint64 entryBytes(const QString &path)
{
    const FileStatus status = FileStatus::of(path, FileStatus::Links::Own);
    const QFileInfo info(path);
    const qint64 bytes = status.reached() && info.isFile() && !info.isSymLink() ? status.size : 0;
    return std::max<qint64>(kBlock, (bytes + kBlock - 1) / kBlock * kBlock);
}

} // namespace

qint64 PlacingRoom::volumeFreeBytes(const QString &folder)
{
    struct statvfs info = {};
    if (statvfs(NativePath::encode(folder).constData(), &info) != 0) {
        return -1;
    }
    return qint64(info.f_bavail) * qint64(info.f_frsize);
}

QString PlacingRoom::nearestFolder(QString folder)
{
    while (!FileStatus::of(folder).reached() && folder != QLatin1String("/")) {
        folder = QFileInfo(folder).absolutePath();
    }
    return folder;
}

qint64 PlacingRoom::copyBytes(const QString &path)
{
    qint64 total = entryBytes(path);
    QDirIterator entries(path, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        total += entryBytes(entries.next());
    }
    return total;
}

QString PlacingRoom::check(const QString &item, const QString &target, qint64 reserveBytes, const FreeBytes &freeBytes)
{
    // The target's folder may not exist yet: its nearest existing folder is on the volume it will be made on.
    const QString folder = nearestFolder(QFileInfo(target).absolutePath());
    const qint64 free = freeBytes(folder);
    const qint64 needed = copyBytes(item);
    if (free < 0 || free - needed > reserveBytes) {
        return {};
    }
    return tr("%1 needs %2 MB and %3 MB must stay free, but %4 has %5 MB free")
        .arg(QFileInfo(target).fileName(), QString::number(needed >> 20), QString::number(reserveBytes >> 20), folder,
             QString::number(free >> 20));
}
