#pragma once

// Finished rows stay in the panel with their done mark for about half an hour: a timer every 1200 seconds removes
// the apps that are no longer outdated and were updated at least 1801 seconds away from now (either way).

#include "scan/AppList.h"

#include <QDateTime>

namespace PanelExpiry {

inline constexpr int kTimerSeconds = 1200;
inline constexpr qint64 kKeptSeconds = 1800;

bool isExpired(const VLApp &app, const QDateTime &now);
AppList removeOlderLaunchApps(const AppList &apps, const QDateTime &now);

} // namespace PanelExpiry
