#include "install/Replacement.h"

#include "install/AuthHelper.h"
#include "install/VLSynchronousTask.h"
#include "install/WorkFolder.h"
#include "platform/FolderReader.h"
#include "platform/Log.h"
#include "platform/NativePath.h"

#include <QDir>
#include <QFileInfo>

#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>

namespace {

bool lexists(const QString &path)
{
    struct stat info = {};
    return lstat(NativePath::encode(path).constData(), &info) == 0;
}

} // namespace

Replacement::Replacement(AuthHelper &auth) : m_auth(auth) {}

bool Replacement::replace(const QString &item, const QString &target)
{
    const QFileInfo targetInfo(target);
    const QString folder = targetInfo.absolutePath();
    const bool privileged = needsRights(folder);
    const bool hadOldCopy = lexists(target);
    // Hidden, so that a scan running meanwhile does not list the old copy as an app of its own.
    const QString aside = folder + QStringLiteral("/.") + targetInfo.fileName() + QLatin1Char('.') +
                          WorkFolder::uniqueName() + QStringLiteral(".old");
    if (hadOldCopy && !move(target, aside, privileged)) {
        vlLog(QStringLiteral("could not move %1 aside").arg(target));
        return false;
    }
    if (!copy(item, target, privileged)) {
        vlLog(QStringLiteral("could not copy %1 to %2").arg(item, target));
        remove(target, privileged);
        if (hadOldCopy && !move(aside, target, privileged)) {
            vlLog(QStringLiteral("could not put %1 back from %2").arg(target, aside));
        }
        return false;
    }
    // An old copy owned by someone else may need the rights even in a folder of ours.
    if (hadOldCopy && !remove(aside, privileged) && !privileged) {
        remove(aside, true);
    }
    return true;
}

bool Replacement::merge(const QString &folder, const QString &target)
{
    const bool privileged = needsRights(QFileInfo(target).absolutePath()) || needsRights(target);
    // Entry by entry, so that target itself keeps its owner, mode and times.
    FolderReader reader(NativePath::encode(folder));
    for (const FolderReader::Entry &entry : reader.entries()) {
        const QString name = QLatin1Char('/') + NativePath::decode(entry.name);
        if (!copy(folder + name, target + name, privileged)) {
            return false;
        }
    }
    return reader.failure().isEmpty();
}

bool Replacement::copy(const QString &source, const QString &destination, bool privileged)
{
    if (privileged) {
        return m_auth.copyPathWithForcedAuthentication(source, destination);
    }
    return VLSynchronousTask::task(
               WorkFolder::tool(QStringLiteral("cp")), {},
               {QStringLiteral("-a"), QStringLiteral("-T"), QStringLiteral("--"), source, destination})
        .has_value();
}

bool Replacement::move(const QString &source, const QString &destination, bool privileged)
{
    if (privileged) {
        return m_auth.movePathWithForcedAuthentication(source, destination);
    }
    return std::rename(NativePath::encode(source).constData(), NativePath::encode(destination).constData()) == 0;
}

bool Replacement::remove(const QString &path, bool privileged)
{
    if (!lexists(path)) {
        return true;
    }
    return privileged ? m_auth.removePathWithForcedAuthentication(path) : WorkFolder::remove(path);
}

bool Replacement::needsRights(const QString &folder)
{
    if (!QFileInfo::exists(folder)) {
        QDir().mkpath(folder);
    }
    return !QFileInfo::exists(folder) || access(NativePath::encode(folder).constData(), W_OK) != 0;
}
