#include "install/Replacement.h"

#include "install/AuthHelper.h"
#include "install/PlaceTool.h"
#include "platform/FileStatus.h"
#include "platform/NativePath.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

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

} // namespace

Replacement::Replacement(AuthHelper &auth) : m_auth(auth) {}

bool Replacement::replace(const QString &item, const QString &target)
{
    const QString place = QDir::cleanPath(target);
    return mayWriteInto(QFileInfo(place).absolutePath()) ? PlaceTool::run(QStringLiteral("replace"), {item, place})
                                                         : m_auth.replacePathWithForcedAuthentication(item, place);
}

bool Replacement::merge(const QList<FolderMerge> &merges)
{
    const bool privileged =
        std::any_of(merges.begin(), merges.end(), [](const FolderMerge &merge) { return !mayWriteInto(merge.target); });
    return privileged ? m_auth.mergeFoldersWithForcedAuthentication(merges)
                      : PlaceTool::run(QStringLiteral("merge"), PlaceTool::mergePaths(merges));
}
