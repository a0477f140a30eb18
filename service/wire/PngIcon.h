#pragma once

#include <QByteArray>

namespace PngIcon {

// A square RGB image of the given colour with a darker frame, as PNG bytes.
QByteArray make(int size, quint8 red, quint8 green, quint8 blue);

} // namespace PngIcon
