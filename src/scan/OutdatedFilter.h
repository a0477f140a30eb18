#pragma once

// Which records the outdated list shows (panel, main window, "check" and "list --outdated", badge,
// notification counts, Update All): installed, outdated, and not hidden by the user's display settings.

#include "scan/AppList.h"

class VLSettings;

struct OutdatedFilterOptions
{
    bool showMAS = false;
    bool showBeta = false;
    bool showPaidUpgrades = true;
    bool showNewerOS = false;

    static OutdatedFilterOptions fromSettings(const VLSettings &settings);
};

bool isListedAsOutdated(const VLApp &app, const OutdatedFilterOptions &options);
AppList outdatedApps(const AppList &apps, const OutdatedFilterOptions &options);
