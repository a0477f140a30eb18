#include "install/PlaceTool.h"

#include "install/VLSynchronousTask.h"

#include <QDir>
#include <QFileInfo>

namespace PlaceTool {

QString path()
{
    static const QString tool = [] {
        const QString running = QFileInfo(QStringLiteral("/proc/self/exe")).canonicalFilePath();
        const QString build = QFileInfo(QStringLiteral(VELMORA_BINARY_DIR)).canonicalFilePath();
        const bool fromBuild = !build.isEmpty() && running.startsWith(build + QLatin1Char('/'));
        return fromBuild ? QStringLiteral(VELMORA_PLACE_BUILT) : QStringLiteral(VELMORA_PLACE_INSTALLED);
    }();
    return tool;
}

QStringList command(const QString &verb, const QStringList &paths)
{
    QStringList words = {path(), verb};
    // The program takes only absolute paths with no ".", ".." or empty steps.
    for (const QString &place : paths) {
        words.append(QDir::cleanPath(QFileInfo(place).absoluteFilePath()));
    }
    return words;
}

QStringList mergePaths(const QList<FolderMerge> &merges)
{
    QStringList paths;
    for (const FolderMerge &merge : merges) {
        paths << merge.folder << merge.target;
    }
    return paths;
}

bool run(const QString &verb, const QStringList &paths)
{
    const QStringList words = command(verb, paths);
    return VLSynchronousTask::task(words.first(), {}, words.mid(1)).has_value();
}

} // namespace PlaceTool
