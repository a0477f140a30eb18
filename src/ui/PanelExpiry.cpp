#include "ui/PanelExpiry.h"

#include <cstdlib>

namespace PanelExpiry {

bool isExpired(const VLApp &app, const QDateTime &now)
{
    if (app.isOutdated) {
        return false;
    }
    // An app that left the outdated list without an update (ignored, set current) has nothing to show.
    if (!app.lastupdated.isValid()) {
        return true;
    }
    return std::llabs(app.lastupdated.secsTo(now)) > kKeptSeconds;
}

AppList removeOlderLaunchApps(const AppList &apps, const QDateTime &now)
{
    AppList kept;
    for (const AppRef &app : apps) {
        if (!isExpired(*app, now)) {
            kept.append(app);
        }
    }
    return kept;
}

} // namespace PanelExpiry
