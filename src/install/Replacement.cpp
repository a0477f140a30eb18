#include "install/Replacement.h"

#include "install/AuthHelper.h"
#include "install/PlaceTool.h"
#include "platform/FileStatus.h"
#include "platform/FolderReader.h"
#include "platform/NativePath.h"

#include <QDir>
#include <QFileInfo>

#include <unistd.h>

namespace {

// Whether we may write into folder, or, where it is missing, make it in the nearest folder that exists.
bool mayWriteInto(QString folder)
{
    while (!FileStatus::of(folder).reached() && folder != QLatin1String("/")) {
        folder = QFileInfo(folder).absolutePath();
    }
    return access(NativePath::encode(folder).constData(), W_OK) == 0;
}

// Whether what is at path belongs to someone else: replacing it then needs the rights even in a folder of ours.
bool ownedByOther(const QString &path)
{
    const FileStatus status = FileStatus::of(path, FileStatus::Links::Own);
    return status.reached() && status.owner != geteuid();
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

bool Replacement::merge(const QList<FolderMerge> &merges)
{
    bool privileged = false;
    QStringList paths;
    for (const FolderMerge &merge : merges) {
        const QString place = QDir::cleanPath(merge.target);
        privileged = privileged || !mayWriteInto(place);
        FolderReader reader(NativePath::encode(merge.folder));
        for (const FolderReader::Entry &entry : reader.entries()) {
            privileged = privileged || ownedByOther(place + QLatin1Char('/') + NativePath::decode(entry.name));
        }
        paths << merge.folder << place;
    }
    return privileged ? m_auth.mergeFoldersWithForcedAuthentication(merges)
                      : PlaceTool::run(QStringLiteral("merge"), paths);
}
