#pragma once

// Where the panel opens: centred under (or, for a panel at the bottom of the screen, over) the tray icon, ending at
// least 14 points before the screen's right edge and kept on the screen. A tray that gives no icon geometry (a
// StatusNotifierItem host) leaves the cursor, taken when the icon was clicked, to stand for the icon.

#include <QPoint>
#include <QRect>

namespace PanelPlacement {

inline constexpr int kWidth = 361;
inline constexpr int kHeight = 268;
inline constexpr int kRightMargin = 14;
inline constexpr double kHalfWidthOffset = 180.5;

// The rectangle the panel is placed against: the icon's, or a point at the cursor when the icon has none.
QRect anchorRect(const QRect &iconGeometry, const QPoint &cursor);

// The panel's frame for anchor on a screen whose usable area is screen.
QRect panelFrame(const QRect &anchor, const QRect &screen);

} // namespace PanelPlacement
