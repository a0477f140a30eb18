#pragma once

#include <QString>

// The version of the Mac system the minimum-OS tests compare with: "ProductVersion" of
// System/Library/CoreServices/SystemVersion.plist under the setting volumeRoot, else the setting osVersion.
// Null when neither says: then no record requires a newer OS (a Linux version number says nothing about a Mac's).
QString runningOSVersion();
