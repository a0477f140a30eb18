#include "ui/PanelMenus.h"

#include "install/VLUpdateAllQueue.h"
#include "model/RecordText.h"
#include "model/VLApp.h"

#include <QCoreApplication>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("PanelMenus", text);
}

MenuEntry separator()
{
    return {PanelAction::Separator, QString()};
}

} // namespace

namespace PanelMenus {

QString siteName()
{
    return QStringLiteral("Velmora");
}

QList<MenuEntry> gearMenu(const GearMenuState &state)
{
    QList<MenuEntry> entries;
    if (state.doneScanning && state.outdatedCount > 0) {
        if (updateAllButtonState(state.inProgress, state.waiting) == UpdateAllButton::UpdateAll) {
            entries.append({PanelAction::UpdateAll, tr("Update All")});
        } else {
            entries.append({PanelAction::CancelUpdateAll, tr("Cancel")});
        }
    }
    entries.append({PanelAction::ShowWindow, tr("Launch Desktop")});
    entries.append({PanelAction::ShowPreferences, tr("Preferences")});
    entries.append({PanelAction::Quit, tr("Quit Velmora Desktop")});
    return entries;
}

QList<MenuEntry> rowMenu(const VLApp &app, const RowMenuContext &context)
{
    const bool installed = app.localPath != RecordText::unknown;
    QList<MenuEntry> entries;
    if (installed) {
        entries.append({PanelAction::ViewInMainWindow, tr("View in Desktop")});
    }
    if (app.isOutdated) {
        entries.append({PanelAction::Ignore, tr("Ignore")});
    }
    entries.append(separator());
    if (context.memberSignedIn || !installed) {
        if (!app.listname.isEmpty()) {
            entries.append({PanelAction::RemoveFromWatchList, tr("Remove from Watch List")});
        } else {
            entries.append({PanelAction::AddToWatchList, tr("Add to Watch List")});
        }
        entries.append(separator());
    }
    entries.append({PanelAction::ViewOnSite, tr("View on ") + siteName()});
    if (app.isAppStore) {
        entries.append({PanelAction::ViewInMacAppStore, tr("View in Mac App Store")});
    }
    if (app.kind != QLatin1String("plugin") && installed) {
        entries.append({PanelAction::Open, tr("Open")});
    }
    if (installed && !app.didFail) {
        entries.append({PanelAction::Reveal, tr("Reveal in Finder")});
        if (context.vldVersionInstalled) {
            entries.append({PanelAction::OpenVLDV, tr("Open in VLDVersion")});
        }
        if (context.appDeleteInstalled) {
            entries.append({PanelAction::OpenAppDelete, tr("Delete with AppDelete")});
        }
    }
    entries.append(separator());
    entries.append({PanelAction::ReportProblem, tr("Report a problem")});
    if (app.isSetLocalVersionToCurrent && app.localVersion == app.vlVersion) {
        entries.append({PanelAction::UnsetVersionToCurrent, tr("Set version to installed")});
    } else if (!app.isSetLocalVersionToCurrent && app.localVersion != app.vlVersion) {
        entries.append({PanelAction::SetVersionToCurrent, tr("Set version to current")});
    }
    return entries;
}

} // namespace PanelMenus
