#include "install/Replacement.h"

#include "install/AuthHelper.h"
#include "install/PlaceTool.h"
#include "platform/FolderReader.h"
#include "platform/NativePath.h"

#include <QDir>
#include <QFileInfo>

#include <sys/stat.h>
#include <unistd.h>

namespace {

// Whether we may write into folder, or, where it is missing, make it in the nearest folder that exists.
bool mayWriteInto(QString folder)
{
    while (!QFileInfo::exists(folder) && folder != QLatin1String("/")) {
        folder = QFileInfo(folder).absolutePath();
    }
    return access(NativePath::encode(folder).constData(), W_OK) == 0;
}

// Whether what is at path belongs to someone else: replacing it then needs the rights even in a folder of ours.
bool ownedByOther(const QString &path)
{
    struct stat info = {};
    return lstat(NativePath::encode(path).constData(), &info) == 0 && info.st_uid != geteuid();
}

} // namespace

Replacement::Replacement(AuthHelper &auth) : m_auth(auth) {}

bool Replacement::replace(const QString &item, const QString &target)
{
    const QString place = QDir::cleanPath(target);
    return !mayWriteInto(QFileInfo(place).absolutePath()) || ownedByOther(place)
               ? m_auth.replacePathWithForcedAuthentication(item, place)
               : PlaceTool::run(QStringLiteral("replace"), {item, place});
}

bool Replacement::merge(const QString &folder, const QString &target)
{
    const QString place = QDir::cleanPath(target);
    bool privileged = !mayWriteInto(place);
    FolderReader reader(NativePath::encode(folder));
    for (const FolderReader::Entry &entry : reader.entries()) {
        privileged = privileged || ownedByOther(place + QLatin1Char('/') + NativePath::decode(entry.name));
    }
    return privileged ? m_auth.mergeFolderWithForcedAuthentication(folder, place)
                      : PlaceTool::run(QStringLiteral("merge"), {folder, place});
}
