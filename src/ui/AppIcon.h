#pragma once

// An app's icon as the views draw it: the bundle's own, else the catalogue's, else the program's.

#include <QIcon>

class VLApp;

namespace AppIcon {

QIcon iconFor(const VLApp &app);

} // namespace AppIcon
