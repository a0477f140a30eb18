#include "scan/OutdatedFilter.h"

#include "platform/VLSettings.h"

OutdatedFilterOptions OutdatedFilterOptions::fromSettings(const VLSettings &settings)
{
    OutdatedFilterOptions options;
    options.showMAS = settings.boolValue(SettingKey::showMAS);
    options.showBeta = settings.boolValue(SettingKey::showBeta);
    options.showPaidUpgrades = settings.boolValue(SettingKey::showPaidUpgrades);
    options.showNewerOS = settings.boolValue(SettingKey::showNewerOS);
    return options;
}

bool isListedAsOutdated(const VLApp &app, const OutdatedFilterOptions &options)
{
    if (!app.isInstalled() || !app.isOutdated) {
        return false;
    }
    if (app.isAppStore && !options.showMAS) {
        return false;
    }
    if (app.beta.contains(QLatin1String("beta"), Qt::CaseInsensitive) && !options.showBeta) {
        return false;
    }
    if (app.isPaidUpgrade && !options.showPaidUpgrades) {
        return false;
    }
    return !(app.requiresNewerOSVersion && !options.showNewerOS);
}

AppList outdatedApps(const AppList &apps, const OutdatedFilterOptions &options)
{
    AppList listed;
    for (const AppRef &app : apps) {
        if (isListedAsOutdated(*app, options)) {
            listed.append(app);
        }
    }
    return listed;
}
