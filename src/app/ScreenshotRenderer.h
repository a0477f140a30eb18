#pragma once

// velmora --screenshot DIR: the panel in its three states, the window on each view with its details pane, the
// preferences, the account's forms and the deals cart (the profile and the cart for a member the keychain holds), drawn
// from the stored scan into PNG files at scale factors 1 and 2 ("NAME.png", "NAME@2x.png"). With
// VELMORA_SCREENSHOT_PALETTE=dark in the environment they are drawn in a dark palette.

#include <QString>

namespace ScreenshotRenderer {

bool renderAll(const QString &folder);

} // namespace ScreenshotRenderer
