#pragma once

// velmora --screenshot DIR: the panel in its three states, the window on each view with its details pane, and the
// preferences, drawn from the stored scan into PNG files at scale factors 1 and 2 ("NAME.png", "NAME@2x.png").

#include <QString>

namespace ScreenshotRenderer {

bool renderAll(const QString &folder);

} // namespace ScreenshotRenderer
