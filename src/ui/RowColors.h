#pragma once

// The colours the app lists' rows share: the window's list and the panel draw an update's failure alike.

#include <QColor>

inline const QColor kFailureTextColor(0xd9, 0x2d, 0x20);
