#pragma once

// The folders the program keeps its files in.

#include <QString>

namespace AppPaths {
// ~/.local/share/Velmora/Velmora Desktop 6 (created on demand); holds the scan store and the icon cache.
QString dataFolder();
// $TMPDIR/velmora-<uid>, created when missing: mode 0700 and owned by us, or "" when such a folder cannot be had
// safely. Call it right before writing there: the check holds for that moment only.
QString privateTempFolder();
// The same folder's name, without creating or checking anything (for naming download paths ahead of time); ""
// when TMPDIR names a folder that does not exist.
QString privateTempFolderName();
} // namespace AppPaths
