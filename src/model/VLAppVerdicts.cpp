// The record's verdicts: outdated, paid upgrade, needs a newer OS.

#include "model/RunningOS.h"
#include "model/StringUtils.h"
#include "model/VLApp.h"
#include "model/VersionRules.h"
#include "platform/Log.h"

void VLApp::checkIfOutdated()
{
    if (!skippedVersion.isNull() && vlVersion != RecordText::unknown && skippedVersion == vlVersion) {
        vlLog(QStringLiteral("skipping %1").arg(displayName));
        isOutdated = false;
    } else {
        isOutdated = !dontCheckForUpdates && isLocalVersionOutdatedByRemoteVersion(localVersion, vlVersion);
    }
    checkIfPaidUpgrade();
}

void VLApp::checkIfPaidUpgrade()
{
    // Only a catalogue-flagged update that changes the major version is a paid upgrade. Otherwise the verdict
    // stays as it was: an update that is skipped or excluded keeps its mark.
    if (isOutdated && !containsString(license, QStringLiteral("free"), true) && paid_update == QLatin1String("1") &&
        localVersion.contains(QLatin1Char('.'))) {
        const QString localMajor = localVersion.section(QLatin1Char('.'), 0, 0);
        const QString remoteMajor = vlVersion.section(QLatin1Char('.'), 0, 0);
        isPaidUpgrade = isLocalVersionOutdatedByRemoteVersion(localMajor, remoteMajor);
    }
}

bool VLApp::getRequiresNewerOSVersion() const
{
    if (minOS.isEmpty() || minOS == RecordText::unknown) {
        return false;
    }
    const QString running = runningOSVersion();
    if (running.isNull()) {
        return false;
    }
    return isLocalVersionOutdatedByRemoteVersion(cleanOSVersion(running), minOS);
}
