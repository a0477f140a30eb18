#include "platform/AppPaths.h"

#include "platform/Log.h"

#include <QDir>
#include <QStandardPaths>

#include <sys/stat.h>
#include <unistd.h>

namespace AppPaths {

QString dataFolder()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                           QStringLiteral("/Velmora/Velmora Desktop 6");
    QDir().mkpath(folder);
    return folder;
}

QString privateTempFolderName()
{
    // Qt answers "" when TMPDIR names a folder that does not exist; the name must not fall back to the root folder.
    const QString base = QDir::tempPath();
    return base.isEmpty() ? QString() : base + QStringLiteral("/velmora-") + QString::number(getuid());
}

QString privateTempFolder()
{
    const QString folder = privateTempFolderName();
    if (folder.isEmpty()) {
        vlLog(QStringLiteral("cannot create temporary folder: TMPDIR names no folder"));
        return {};
    }
    const QByteArray native = QFile::encodeName(folder);
    if (mkdir(native.constData(), 0700) != 0 && errno != EEXIST) {
        vlLog(QStringLiteral("cannot create temporary folder %1").arg(folder));
        return {};
    }
    // Someone else may have planted the name first: accept only a real folder of ours that nobody else can enter.
    struct stat info = {};
    if (lstat(native.constData(), &info) != 0 || !S_ISDIR(info.st_mode) || info.st_uid != getuid() ||
        (info.st_mode & 077) != 0) {
        vlLog(QStringLiteral("unsafe temporary folder %1").arg(folder));
        return {};
    }
    return folder;
}

} // namespace AppPaths
