#pragma once

// A vendor's own installer app inside a download: opened on the desktop, waited for until the processes it started
// have ended (never longer than 30 minutes), and the app it installed then found by its bundle identifier.

#include <QString>

namespace VendorInstaller {

// false when there is no desktop to open the installer on, or it could not be opened.
bool runToEnd(const QString &installerApp);
// The installed app with bundleID, outside excludedFolder (the installer's own copy), in the application folders
// (Applications under the setting volumeRoot and under the home folder, and their subfolders): asked once a second,
// up to 6 times; "" when it did not appear.
QString findInstalledApp(const QString &bundleID, const QString &excludedFolder);

} // namespace VendorInstaller
