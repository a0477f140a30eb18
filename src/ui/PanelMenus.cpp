#include "ui/PanelMenus.h"

#include "install/VLUpdateAllQueue.h"
#include "model/RecordText.h"
#include "model/VLApp.h"

#include <QCoreApplication>

namespace {

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
            entries.append({PanelAction::UpdateAll, QCoreApplication::translate("PanelMenus", "Update All")});
        } else {
            entries.append({PanelAction::CancelUpdateAll, QCoreApplication::translate("PanelMenus", "Cancel")});
        }
    }
    entries.append({PanelAction::ShowWindow, QCoreApplication::translate("PanelMenus", "Launch Desktop")});
    entries.append({PanelAction::ShowPreferences, QCoreApplication::translate("PanelMenus", "Preferences")});
    entries.append({PanelAction::Quit, QCoreApplication::translate("PanelMenus", "Quit Velmora Desktop")});
    return entries;
}

QList<MenuEntry> rowMenu(const VLApp &app, const RowMenuContext &context)
{
    const bool installed = app.localPath != RecordText::unknown;
    QList<MenuEntry> entries;
    if (installed) {
        entries.append({PanelAction::ViewInMainWindow, QCoreApplication::translate("PanelMenus", "View in Desktop")});
    }
    if (app.isOutdated) {
        entries.append({PanelAction::Ignore, QCoreApplication::translate("PanelMenus", "Ignore")});
    }
    entries.append(separator());
    if (context.memberSignedIn || !installed) {
        if (!app.listname.isEmpty()) {
            entries.append({PanelAction::RemoveFromWatchList,
                            QCoreApplication::translate("PanelMenus", "Remove from Watch List")});
        } else {
            entries.append(
                {PanelAction::AddToWatchList, QCoreApplication::translate("PanelMenus", "Add to Watch List")});
        }
        entries.append(separator());
    }
    entries.append({PanelAction::ViewOnSite, QCoreApplication::translate("PanelMenus", "View on ") + siteName()});
    if (app.isAppStore) {
        entries.append(
            {PanelAction::ViewInMacAppStore, QCoreApplication::translate("PanelMenus", "View in Mac App Store")});
    }
    if (app.kind != QLatin1String("plugin") && installed) {
        entries.append({PanelAction::Open, QCoreApplication::translate("PanelMenus", "Open")});
    }
    if (installed && !context.updateFailed) {
        entries.append({PanelAction::Reveal, QCoreApplication::translate("PanelMenus", "Reveal in Finder")});
        if (context.vldVersionInstalled) {
            entries.append({PanelAction::OpenVLDV, QCoreApplication::translate("PanelMenus", "Open in VLDVersion")});
        }
        if (context.appDeleteInstalled) {
            entries.append(
                {PanelAction::OpenAppDelete, QCoreApplication::translate("PanelMenus", "Delete with AppDelete")});
        }
    }
    entries.append(separator());
    entries.append({PanelAction::ReportProblem, QCoreApplication::translate("PanelMenus", "Report a problem")});
    if (app.isSetLocalVersionToCurrent && app.localVersion == app.vlVersion) {
        entries.append({PanelAction::UnsetVersionToCurrent,
                        QCoreApplication::translate("PanelMenus", "Set version to installed")});
    } else if (!app.isSetLocalVersionToCurrent && app.localVersion != app.vlVersion) {
        entries.append(
            {PanelAction::SetVersionToCurrent, QCoreApplication::translate("PanelMenus", "Set version to current")});
    }
    return entries;
}

} // namespace PanelMenus
