#pragma once

// The colours the app lists' rows share: the window's list and the panel draw an update's failure alike.

#include <QColor>
#include <QPalette>

// A red that reads on the rows' base: the deep one on a light palette, a lighter one on a dark palette.
inline QColor failureTextColor(const QPalette &palette)
{
    return palette.color(QPalette::Base).lightness() < 128 ? QColor(0xff, 0x7a, 0x6e) : QColor(0xd9, 0x2d, 0x20);
}
