#pragma once

// What the panel's row menu and the window's details pane do with one app: open it, show it in the file manager,
// open its pages, and the user's choices, each kept in the stored scan and told to the lists at once.

#include "scan/AppList.h"
#include "ui/PanelMenus.h"

#include <QObject>

class VLMainWindowController;

class AppActions : public QObject
{
    Q_OBJECT

public:
    explicit AppActions(VLMainWindowController &driver, QObject *parent = nullptr);

    // The row menu's context now: the member, and the companion programs present.
    RowMenuContext rowMenuContext();
    // Row-menu actions; the update, the window and the report form are the caller's.
    void perform(PanelAction action, const AppRef &app);

    void launchApp(const VLApp &app);
    void revealInFinder(const VLApp &app);
    void viewOnVelmora(const VLApp &app);
    void viewInMacAppStore(const VLApp &app);
    void setIgnored(const AppRef &app, bool ignored);
    void setVersionToCurrent(const AppRef &app, bool current);
    void setDontCheck(const AppRef &app, bool dontCheck);
    void setOnWatchList(const AppRef &app, bool onList);
    // The app's page on the site, as a short link when the shortener answers.
    void shareApp(const AppRef &app);

    static QString appPageURL(const VLApp &app);
    // The file the file manager is asked to select: the path, else "NAME Folder" beside it, else its folder.
    static QString revealPath(const QString &localPath);
    static QString urlTitle(const QString &name);

signals:
    // A choice changed a record: refilter the lists and the panel.
    void appChanged(const AppRef &app);
    void shortLinkReady(const AppRef &app, const QString &link);

private:
    void saveStore();

    VLMainWindowController &m_driver;
};
