#pragma once

// An app's icon as the views draw it: the bundle's own, else the catalogue's, else the program's.

#include <QIcon>

class VLApp;

namespace AppIcon {

QIcon iconFor(const VLApp &app);
// The program's own: one icon shared by every caller, so that its file is parsed once and each size drawn once.
QIcon programIcon();

} // namespace AppIcon
