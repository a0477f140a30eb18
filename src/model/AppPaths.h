#pragma once

// The folders the program keeps its files in.

#include <QString>

namespace AppPaths {
// ~/.local/share/Velmora/Velmora Desktop 6 (created on demand); holds the scan store and the icon cache.
QString dataFolder();
// $TMPDIR/velmora-<uid>: mode 0700 and owned by us, or "" when such a folder cannot be had safely.
QString privateTempFolder();
} // namespace AppPaths
