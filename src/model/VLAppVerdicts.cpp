// The record's verdicts: outdated, paid upgrade, needs a newer OS.

#include "platform/Log.h"
#include "model/RunningOS.h"
#include "model/StringUtils.h"
#include "model/VLApp.h"
#include "model/VersionRules.h"

void VLApp::checkIfOutdated()
{
    if (!skippedVersion.isNull() && vlVersion != QLatin1String("-") && skippedVersion == vlVersion) {
        vlLog(QStringLiteral("skipping %1").arg(displayName));
        isOutdated = false;
        checkIfPaidUpgrade();
        return;
    }
    isOutdated = isLocalVersionOutdatedByRemoteVersion(localVersion, vlVersion);
    if (dontCheckForUpdates) {
        isOutdated = false;
    }
    checkIfPaidUpgrade();
}

void VLApp::checkIfPaidUpgrade()
{
    // Only a catalogue-flagged update that changes the major version is a paid upgrade.
    if (isOutdated && !containsString(license, QStringLiteral("free"), true) && paid_update == QLatin1String("1") &&
        localVersion.contains(QLatin1Char('.'))) {
        const QString localMajor = localVersion.section(QLatin1Char('.'), 0, 0);
        const QString remoteMajor = vlVersion.section(QLatin1Char('.'), 0, 0);
        isPaidUpgrade = isLocalVersionOutdatedByRemoteVersion(localMajor, remoteMajor);
    }
}

bool VLApp::getRequiresNewerOSVersion() const
{
    if (minOS.isEmpty() || minOS == QLatin1String("-")) {
        return false;
    }
    const QString running = runningOSVersion();
    if (running.isNull()) {
        return false;
    }
    return isLocalVersionOutdatedByRemoteVersion(cleanOSVersion(running), minOS);
}
