#pragma once

// A disk image's volume copied out into a folder, which stands for the image attached there: 7zz reads the image
// (a UDIF wrapper around HFS+ or APFS, a bare HFS+ or APFS volume, or an ISO 9660 one), so no loop device, FUSE or
// administrator rights are needed. Links inside the volume stay links.

#include "install/UnpackBudget.h"

#include <QString>

namespace DiskImage {

// Fills mountPoint (an empty folder) with the volume's contents, each step within a budget tied to the image's size;
// false when the image could not be read or passed its budget, with the reason in failure when one is known.
bool attach(const QString &image, const QString &mountPoint, const UnpackLimits &limits, QString *failure);

} // namespace DiskImage
