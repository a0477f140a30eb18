#include "model/UserChoices.h"

#include "model/VLApp.h"
#include "platform/Log.h"

namespace UserChoices {

void ignore(VLApp &app)
{
    app.skippedVersion = app.vlVersion;
    app.isOutdated = false;
}

void unignore(VLApp &app)
{
    app.skippedVersion = QStringLiteral("-");
    app.checkIfOutdated();
}

void setVersionToCurrent(VLApp &app)
{
    vlLog(QStringLiteral("set version to current %1").arg(app.displayName));
    app.isSetLocalVersionToCurrent = true;
    app.localVersion = app.vlVersion;
    app.checkIfOutdated();
}

void unsetVersionToCurrent(VLApp &app)
{
    app.isSetLocalVersionToCurrent = false;
    app.getLocalVersionTakingIntoAccountVersionOverride();
    vlLog(QStringLiteral("reset local version to %1").arg(app.localVersion));
    app.checkIfOutdated();
}

void setDontCheckForUpdates(VLApp &app, bool dontCheck)
{
    app.dontCheckForUpdates = dontCheck;
    app.checkIfOutdated();
}

} // namespace UserChoices
