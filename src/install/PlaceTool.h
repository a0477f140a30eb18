#pragma once

// velmora-place, our own program that puts items in place (src/place): a replacement or a package's files in one
// run, so that a step needing administrator rights asks for them once. Run directly where the user may write, and
// behind the escalation command (AuthHelper) where not.

#include <QString>
#include <QStringList>

namespace PlaceTool {

// The build's own copy while we run from the build folder, else the installed one (the path the polkit action
// names).
QString path();
// The command line for a verb and its absolute paths.
QStringList command(const QString &verb, const QStringList &paths);
// Runs the verb as the user; true when it succeeded.
bool run(const QString &verb, const QStringList &paths);

} // namespace PlaceTool
