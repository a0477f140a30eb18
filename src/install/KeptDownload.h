#pragma once

// The copy of a finished download that the setting "keepDownload" asks for, in a folder of the day under the
// user's downloads ("~/Downloads/Velmora Desktop/Velmora Desktop yyyy-MM-dd/").

#include <QDate>
#include <QString>

class VLSettings;

namespace KeptDownload {
// The day's folder as named from the settings (not created).
QString copyFolder(const VLSettings &settings, const QDate &today);
// Copies file into the day's folder (made when missing) unless a file of that name is there already; failures are
// logged and otherwise ignored.
void keep(const QString &file, const VLSettings &settings);
} // namespace KeptDownload
