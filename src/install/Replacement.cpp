#include "install/Replacement.h"

#include "install/AuthHelper.h"
#include "install/PlaceTool.h"
#include "install/PlacingRoom.h"
#include "platform/Log.h"
#include "platform/NativePath.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

#include <algorithm>

#include <sys/stat.h>
#include <unistd.h>

namespace {

// Whether we may write into folder, or, where it is missing, make it in the nearest folder that exists.
bool mayWriteInto(const QString &folder)
{
    return access(NativePath::encode(PlacingRoom::nearestFolder(folder)).constData(), W_OK) == 0;
}

// What root places never carries a set-id bit: an app that relied on a set-id helper should at least say why it fails.
void logSetIdBits(const QString &item)
{
    QStringList paths{item};
    QDirIterator entries(item, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        paths.append(entries.next());
    }
    for (const QString &path : std::as_const(paths)) {
        struct stat info = {};
        if (lstat(NativePath::encode(path).constData(), &info) == 0 && !S_ISLNK(info.st_mode) &&
            (info.st_mode & (S_ISUID | S_ISGID)) != 0) {
            vlLog(QStringLiteral("set-id bit not kept on a root copy: %1").arg(path));
        }
    }
}

} // namespace

Replacement::Replacement(AuthHelper &auth) : m_auth(auth) {}

bool Replacement::replace(const QString &item, const QString &target)
{
    const QString place = QDir::cleanPath(target);
    if (mayWriteInto(QFileInfo(place).absolutePath())) {
        return PlaceTool::run(QStringLiteral("replace"), {item, place});
    }
    logSetIdBits(item);
    return m_auth.replacePathWithForcedAuthentication(item, place);
}

bool Replacement::merge(const QList<FolderMerge> &merges)
{
    const bool privileged =
        std::any_of(merges.begin(), merges.end(), [](const FolderMerge &merge) { return !mayWriteInto(merge.target); });
    if (!privileged) {
        return PlaceTool::run(QStringLiteral("merge"), PlaceTool::mergePaths(merges));
    }
    for (const FolderMerge &merge : merges) {
        logSetIdBits(merge.folder);
    }
    return m_auth.mergeFoldersWithForcedAuthentication(merges);
}
