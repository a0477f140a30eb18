#pragma once

// The tray's pop-up panel: a frameless 361 x 268 window placed at the tray icon, fading in, closed when it loses
// focus. It shows "Checking for updates", "No updates available", or the outdated apps newest first with their
// update's state, and offers the gear menu, each row's menu and the discover button.

#include "scan/AppList.h"
#include "ui/PanelMenus.h"

#include <QDateTime>
#include <QWidget>

#include <functional>

class PanelListModel;
class PanelRowDelegate;
class QLabel;
class QListView;
class QPropertyAnimation;
class QPushButton;
class QStackedWidget;
class QToolButton;

class UpdateJob;

class VLPanelController : public QWidget
{
    Q_OBJECT

public:
    explicit VLPanelController(QWidget *parent = nullptr);

    // What the menus are built from when they open.
    void setGearMenuState(std::function<GearMenuState()> state) { m_gearMenuState = std::move(state); }
    void setRowMenuContext(std::function<RowMenuContext()> context) { m_rowMenuContext = std::move(context); }
    // The record's running or last update, or null: what its row shows.
    void setJobLookup(std::function<const UpdateJob *(const VLApp *)> lookup) { m_jobFor = std::move(lookup); }

    // Opens the panel against anchor (the tray icon's rectangle); slow: the one-second fade of a Shift-click.
    void openPanel(const QRect &anchor, bool slow);
    void closePanel();
    bool hasActivePanel() const { return isVisible(); }

    void hideTableShowNoUpdates();
    void hideTableShowScanningInProgress();
    // Refills the table from the outdated list, newest first; rows finished a short while ago stay.
    void showTableHideScanningInProgress(bool doneScanning, const AppList &outdatedApps);
    void removeOlderLaunchAppsFromPanel(const QDateTime &now);

    void refreshRow(const AppRef &app);
    void setRowProgress(const AppRef &app, double fraction);

    const AppList &outdatedApps() const { return m_outdatedApps; }
    QString statusText() const;
    bool tableShown() const;
    QMenu *buildGearMenu(QWidget *parent);

signals:
    void gearAction(PanelAction action);
    void rowAction(PanelAction action, const AppRef &app);
    void updateRequested(const AppRef &app);
    void cancelRequested(const AppRef &app);
    void showWebsite();
    void panelClosed();

protected:
    void hideEvent(QHideEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    // The table's row menu (a right click, the menu key), Enter on its current row, and the pointer over its rows.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void showStatus(const QString &text);
    void showRows();
    void showRowMenu(const AppRef &app, const QPoint &globalPos);
    void showGearMenu();
    const UpdateJob *jobFor(const VLApp *app) const { return m_jobFor ? m_jobFor(app) : nullptr; }
    bool isUpdating(const VLApp *app) const;

    std::function<GearMenuState()> m_gearMenuState;
    std::function<RowMenuContext()> m_rowMenuContext;
    std::function<const UpdateJob *(const VLApp *)> m_jobFor;
    AppList m_outdatedApps;
    QLabel *m_numberUpdatesAvailable;
    QToolButton *m_gearButton;
    QStackedWidget *m_stack;
    QLabel *m_scanningInProgress;
    PanelListModel *m_model;
    PanelRowDelegate *m_delegate;
    QListView *m_updatesTable;
    QPushButton *m_showWebsiteButton;
    QPropertyAnimation *m_fade;
};
