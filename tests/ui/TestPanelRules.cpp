#include "support/DataTable.h"
#include "support/TestMain.h"

#include "model/VLApp.h"
#include "ui/PanelExpiry.h"
#include "ui/PanelMenus.h"
#include "ui/PanelPlacement.h"
#include "ui/QuitDecision.h"

#include <QTimeZone>

namespace {

// A menu as one line: titles joined by "|", a separator as "-".
QString menuText(const QList<MenuEntry> &entries)
{
    QStringList titles;
    for (const MenuEntry &entry : entries) {
        titles << (entry.action == PanelAction::Separator ? QStringLiteral("-") : entry.title);
    }
    return titles.join(QLatin1Char('|'));
}

} // namespace

class TestPanelRules : public QObject
{
    Q_OBJECT

private slots:
    void placement_data()
    {
        columns<QRect, QPoint, QRect, QRect>("icon", "cursor", "screen", "frame");
        const QRect hd(0, 0, 1920, 1080);
        row("centred under the icon", QRect(1000, 0, 30, 24), QPoint(), hd, QRect(835, 24, 361, 268));
        row("near the right edge ends 14 before it", QRect(1890, 0, 30, 24), QPoint(), hd, QRect(1545, 24, 361, 268));
        row("exactly 14 before the edge stays", QRect(1710, 0, 31, 24), QPoint(), hd, QRect(1545, 24, 361, 268));
        row("near the left edge stays on the screen", QRect(10, 0, 24, 24), QPoint(), hd, QRect(0, 24, 361, 268));
        row("tray at the bottom opens upwards", QRect(1000, 1052, 24, 24), QPoint(), QRect(0, 0, 1920, 1050),
            QRect(832, 782, 361, 268));
        row("second screen's right edge", QRect(3150, 0, 24, 24), QPoint(), QRect(1920, 0, 1280, 1024),
            QRect(2825, 24, 361, 268));
        row("no icon geometry: the cursor", QRect(), QPoint(1500, 12), hd, QRect(1320, 13, 361, 268));
        row("no icon geometry near the edge", QRect(), QPoint(1915, 3), hd, QRect(1545, 4, 361, 268));
        row("small screen keeps it on the screen", QRect(), QPoint(100, 200), QRect(0, 0, 400, 300),
            QRect(0, 0, 361, 268));
    }

    void placement()
    {
        auto [icon, cursor, screen, frame] = fetch<QRect, QPoint, QRect, QRect>("icon", "cursor", "screen", "frame");
        QCOMPARE(PanelPlacement::panelFrame(PanelPlacement::anchorRect(icon, cursor), screen), frame);
    }

    void gearMenu_data()
    {
        columns<bool, int, int, int, QString>("doneScanning", "outdated", "inProgress", "waiting", "menu");
        const QString tail = QStringLiteral("Launch Desktop|Preferences|Quit Velmora Desktop");
        row("checking", false, 3, 0, 3, tail);
        row("nothing outdated", true, 0, 0, 0, tail);
        row("updates waiting", true, 3, 0, 3, QStringLiteral("Update All|") + tail);
        row("an update running", true, 3, 1, 2, QStringLiteral("Cancel|") + tail);
        row("all running", true, 3, 3, 0, QStringLiteral("Cancel|") + tail);
        row("queue empty", true, 3, 0, 0, QStringLiteral("Cancel|") + tail);
    }

    void gearMenu()
    {
        auto [done, outdated, inProgress, waiting, menu] =
            fetch<bool, int, int, int, QString>("doneScanning", "outdated", "inProgress", "waiting", "menu");
        QCOMPARE(menuText(PanelMenus::gearMenu({done, outdated, inProgress, waiting})), menu);
    }

    void rowMenu_data()
    {
        // flags: O(utdated) M(ember signed in) S(App Store) P(lugin) F(ailed) C(set to current) V(LDVersion present)
        // D(AppDelete present).
        columns<QString, QString, QString, QString, QString, QString>("localPath", "flags", "listname", "localVersion",
                                                                      "vlVersion", "menu");
        row("outdated, signed out", "/A.app", "O", "", "1.0", "2.0",
            "View in Desktop|Ignore|-|View on Velmora|Open|Reveal in Finder|-|Report a problem|Set version to current");
        row("signed in, not on a list", "/A.app", "OM", "", "1.0", "2.0",
            "View in Desktop|Ignore|-|Add to Watch List|-|View on Velmora|Open|Reveal in Finder|-|Report a "
            "problem|Set version to current");
        row("signed in, on a list", "/A.app", "M", "Favourites", "2.0", "2.0",
            "View in Desktop|-|Remove from Watch List|-|View on Velmora|Open|Reveal in Finder|-|Report a problem");
        row("not installed, signed out", "-", "", "Favourites", "-", "2.0",
            "-|Remove from Watch List|-|View on Velmora|-|Report a problem|Set version to current");
        row("not installed, no list", "-", "", "", "-", "2.0",
            "-|Add to Watch List|-|View on Velmora|-|Report a problem|Set version to current");
        row("App Store plugin", "/A.app", "OSP", "", "1.0", "2.0",
            "View in Desktop|Ignore|-|View on Velmora|View in Mac App Store|Reveal in Finder|-|Report a problem|Set "
            "version to current");
        row("failed update hides the file items", "/A.app", "OFVD", "", "1.0", "2.0",
            "View in Desktop|Ignore|-|View on Velmora|Open|-|Report a problem|Set version to current");
        row("companions present", "/A.app", "OVD", "", "1.0", "2.0",
            "View in Desktop|Ignore|-|View on Velmora|Open|Reveal in Finder|Open in VLDVersion|Delete with "
            "AppDelete|-|Report a problem|Set version to current");
        row("set to current", "/A.app", "C", "", "2.0", "2.0",
            "View in Desktop|-|View on Velmora|Open|Reveal in Finder|-|Report a problem|Set version to installed");
        row("set to current, newer since", "/A.app", "OC", "", "2.0", "3.0",
            "View in Desktop|Ignore|-|View on Velmora|Open|Reveal in Finder|-|Report a problem");
        row("same version, not set", "/A.app", "", "", "2.0", "2.0",
            "View in Desktop|-|View on Velmora|Open|Reveal in Finder|-|Report a problem");
    }

    void rowMenu()
    {
        auto [localPath, flags, listname, localVersion, vlVersion, menu] =
            fetch<QString, QString, QString, QString, QString, QString>("localPath", "flags", "listname",
                                                                        "localVersion", "vlVersion", "menu");
        VLApp app;
        app.localPath = localPath;
        app.listname = listname;
        app.localVersion = localVersion;
        app.vlVersion = vlVersion;
        app.isOutdated = flags.contains(u'O');
        app.isAppStore = flags.contains(u'S');
        app.kind = flags.contains(u'P') ? QStringLiteral("plugin") : QStringLiteral("app");
        app.isSetLocalVersionToCurrent = flags.contains(u'C');
        const RowMenuContext context{flags.contains(u'M'), flags.contains(u'V'), flags.contains(u'D'),
                                     flags.contains(u'F')};
        QCOMPARE(menuText(PanelMenus::rowMenu(app, context)), menu);
    }

    void expiry_data()
    {
        columns<bool, bool, int, bool>("outdated", "updated", "secondsAgo", "expired");
        row("updated 1800 s ago stays", false, true, 1800, false);
        row("updated 1801 s ago goes", false, true, 1801, true);
        row("1800 s ahead stays", false, true, -1800, false);
        row("1801 s ahead goes", false, true, -1801, true);
        row("still outdated stays", true, true, 5000, false);
        row("left the list without an update", false, false, 0, true);
    }

    void expiry()
    {
        auto [outdated, updated, secondsAgo, expired] =
            fetch<bool, bool, int, bool>("outdated", "updated", "secondsAgo", "expired");
        const QDateTime now = QDateTime::fromSecsSinceEpoch(1'800'000'000, QTimeZone::utc());
        auto app = std::make_shared<VLApp>();
        app->isOutdated = outdated;
        if (updated) {
            app->lastupdated = now.addSecs(-secondsAgo);
        }
        QCOMPARE(PanelExpiry::isExpired(*app, now), expired);
        QCOMPARE(PanelExpiry::removeOlderLaunchApps({app}, now).isEmpty(), expired);
    }

    void quit_data()
    {
        using QuitDecision::Outcome;
        using QuitDecision::Source;
        columns<Source, bool, bool, bool, Outcome>("source", "shift", "statusItem", "keepInBackground", "outcome");
        row("gear menu quits", Source::GearMenu, false, true, true, Outcome::Quit);
        row("session end quits", Source::SessionEnding, false, true, true, Outcome::Quit);
        row("window with tray stays", Source::Window, false, true, false, Outcome::KeepInBackground);
        row("window with Shift quits", Source::Window, true, true, true, Outcome::Quit);
        row("window without tray quits", Source::Window, false, false, false, Outcome::Quit);
        row("window without tray, kept in background", Source::Window, false, false, true, Outcome::KeepInBackground);
    }

    void quit()
    {
        using QuitDecision::Outcome;
        using QuitDecision::Source;
        auto [source, shift, statusItem, keep, outcome] =
            fetch<Source, bool, bool, bool, Outcome>("source", "shift", "statusItem", "keepInBackground", "outcome");
        QCOMPARE(QuitDecision::decide({source, shift, statusItem, keep}), outcome);
    }
};

VELMORA_TEST_MAIN(TestPanelRules)
#include "TestPanelRules.moc"
