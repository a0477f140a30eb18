#pragma once

// The main window: the views on the left (Updates, Installed, and for a member Watch List and Purchases; Deals), the
// searchable list in the middle, one app's details on the right, and Check for Updates, Update All and the
// preferences above. It shows what the driver and the update controller report; it owns no record.

#include "scan/AppList.h"
#include "ui/AppViews.h"

#include <QMainWindow>

#include <optional>

class AppActions;
class AppListModel;
class DetailsPane;
class QLabel;
class QLineEdit;
class QListWidget;
class QProgressBar;
class QPushButton;
class QTimer;
class QTreeView;
class UpdateController;
class VLMainWindowController;

class VLMainWindow : public QMainWindow
{
    Q_OBJECT

public:
    VLMainWindow(VLMainWindowController &driver, UpdateController &updates, AppActions &actions,
                 QWidget *parent = nullptr);

    void showView(AppView view);
    AppView currentView() const { return m_view; }
    // Opens the window on one app's details ("VLViewAppDetails"), in the view that lists it.
    void viewAppDetails(const AppRef &app);
    // The records or a display setting changed: list again, keeping the selection.
    void reloadLists();
    void setDeals(const AppList &deals);
    const AppList &deals() const { return m_deals; }
    void setSearchText(const QString &text);
    // The cart for one deal, or the account's forms for someone not signed in.
    void openCart(const AppRef &deal);
    AppListModel &listModel() const { return *m_model; }

signals:
    void preferencesRequested();
    void accountRequested();
    // Buy Now for someone signed out: the log-in comes first, then this deal's cart.
    void signInForCartRequested(const AppRef &deal);
    void reportRequested(const AppRef &app);
    void closeRequested(bool shiftHeld);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void buildToolBar();
    void showSelectedDetails();
    void refreshUpdateAllButton();
    // The records of the view; none when a worker holds the store: the list is read again shortly.
    std::optional<AppList> sourceFor(AppView view);
    AppViewOptions viewOptions() const;

    VLMainWindowController &m_driver;
    UpdateController &m_updates;
    AppActions &m_actions;
    AppView m_view = AppView::Updates;
    AppList m_deals;
    QListWidget *m_navigation;
    QLineEdit *m_search;
    QTreeView *m_list;
    AppListModel *m_model;
    DetailsPane *m_details;
    QPushButton *m_updateAll;
    QPushButton *m_check;
    QLabel *m_status;
    QProgressBar *m_progress;
    QTimer *m_storeRetry;
    bool m_anyOutdated = false;
};
