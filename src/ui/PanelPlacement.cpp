#include "ui/PanelPlacement.h"

#include <algorithm>
#include <cmath>

namespace PanelPlacement {

QRect anchorRect(const QRect &iconGeometry, const QPoint &cursor)
{
    if (iconGeometry.isEmpty()) {
        return {cursor, QSize(1, 1)};
    }
    return iconGeometry;
}

QRect panelFrame(const QRect &anchor, const QRect &screen)
{
    int x = static_cast<int>(std::lround(anchor.x() + anchor.width() / 2.0 - kHalfWidthOffset));
    const int screenRight = screen.x() + screen.width();
    const int excess = x + kWidth - (screenRight - kRightMargin);
    if (excess > 0) {
        x -= excess;
    }
    x = std::max(x, screen.x());

    // A tray at the top opens the panel downwards; one in the lower half of the screen opens it upwards.
    const bool trayAtTop = anchor.center().y() < screen.center().y();
    int y = trayAtTop ? anchor.y() + anchor.height() : anchor.y() - kHeight;
    y = std::clamp(y, screen.y(), std::max(screen.y(), screen.y() + screen.height() - kHeight));
    return {x, y, kWidth, kHeight};
}

} // namespace PanelPlacement
