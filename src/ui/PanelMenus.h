#pragma once

// The panel's two menus as lists of entries, built fresh from the state and the record each time one opens: the
// gear menu (Update All or Cancel, the window, the preferences, quitting) and a row's menu of app actions.

#include <QList>
#include <QString>

class VLApp;

enum class PanelAction {
    Separator,
    // Gear menu.
    UpdateAll,
    CancelUpdateAll,
    ShowWindow,
    ShowPreferences,
    Quit,
    // Row menu.
    ViewInMainWindow,
    Ignore,
    RemoveFromWatchList,
    AddToWatchList,
    ViewOnSite,
    ViewInMacAppStore,
    Open,
    Reveal,
    OpenVLDV,
    OpenAppDelete,
    ReportProblem,
    UnsetVersionToCurrent,
    SetVersionToCurrent,
};

struct MenuEntry
{
    PanelAction action = PanelAction::Separator;
    QString title;

    bool operator==(const MenuEntry &) const = default;
};

struct GearMenuState
{
    bool doneScanning = true;
    int outdatedCount = 0;
    // The Update-All queue's counts.
    int inProgress = 0;
    int waiting = 0;
};

struct RowMenuContext
{
    bool memberSignedIn = false;
    // The two companion programs, when present under the volume root's Applications folder.
    bool vldVersionInstalled = false;
    bool appDeleteInstalled = false;
    // The app's last update in this run failed.
    bool updateFailed = false;
};

namespace PanelMenus {

// The site's display name, in "View on …" and the discover button.
QString siteName();

QList<MenuEntry> gearMenu(const GearMenuState &state);
QList<MenuEntry> rowMenu(const VLApp &app, const RowMenuContext &context);

} // namespace PanelMenus
