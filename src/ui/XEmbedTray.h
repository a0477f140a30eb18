#pragma once

// Whether an XEmbed tray runs on the X server: a desktop without a StatusNotifierHost may still have one, which owns
// the _NET_SYSTEM_TRAY_S<screen> selection. Asked of the X server directly, so that Qt's own answer, which it gives
// once, is not settled before the desktop's tray host has come up.

namespace XEmbedTray {

// False off X11 and before a tray has taken the selection.
bool isRunning();

} // namespace XEmbedTray
