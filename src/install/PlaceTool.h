#pragma once

// velmora-place, our own program that puts items in place (src/place): a replacement or a package's files in one
// run, so that a step needing administrator rights asks for them once. Run directly where the user may write, and
// behind the escalation command (AuthHelper) where not.

#include <QList>
#include <QString>
#include <QStringList>

// A folder whose contents go into target, merged with what target holds.
struct FolderMerge
{
    QString folder;
    QString target;
};

namespace PlaceTool {

// The build's own copy while we run from the build folder, else the installed one (the path the polkit action
// names).
QString path();
// The command line for a verb and its absolute paths.
QStringList command(const QString &verb, const QStringList &paths);
// The paths of the merge verb: each folder followed by its target.
QStringList mergePaths(const QList<FolderMerge> &merges);
// Runs the verb as the user; true when it succeeded.
bool run(const QString &verb, const QStringList &paths);

} // namespace PlaceTool
