// The desktop program's views against the real service: the sample apps' old versions on a volume of the test's
// own, a real check, an update run from a panel row to its done mark, an install link handed over during a check,
// the window's views and search over the scanned store, the preferences writing their settings, the account's forms
// with their failure texts and the forgotten-password page, the deals cart for a member and for someone signed out,
// and every view's controls named for a screen reader and reached by Tab.

#include "GuiTestMain.h"
#include "support/HostSettings.h"
#include "support/ServiceProcess.h"

#include "app/DesktopApp.h"
#include "scan/VLMainWindowController.h"
#include "scan/VLScanData.h"
#include "services/VLMemberAccount.h"
#include "ui/AccountDialog.h"
#include "ui/AppListModel.h"
#include "ui/CartDialog.h"
#include "ui/PanelRowDelegate.h"
#include "ui/PreferencesDialog.h"
#include "ui/VLMainWindow.h"
#include "ui/VLPanelController.h"

#include <QAbstractItemModelTester>
#include <QAccessible>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QPointer>
#include <QProcess>
#include <QPushButton>
#include <QScopeGuard>
#include <QSignalSpy>

class TestDesktopWithService : public QObject
{
    Q_OBJECT

    ServiceProcess m_service;
    std::unique_ptr<DesktopApp> m_desktop;

    QListView *panelTable() const { return m_desktop->panel().findChild<QListView *>(QStringLiteral("updatesTable")); }

    QModelIndex panelRow(const QString &name) const
    {
        const QAbstractItemModel *rows = panelTable()->model();
        const QModelIndexList found = rows->match(rows->index(0, 0), Qt::DisplayRole, name, 1, Qt::MatchExactly);
        return found.value(0);
    }

    static AppListModel::RowState rowState(const QModelIndex &row)
    {
        return row.data(AppListModel::RowStateRole).value<AppListModel::RowState>();
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_service.start());
        const QString volume = QDir::homePath() + QStringLiteral("/volume");
        QVERIFY(QDir().mkpath(volume));
        QProcess copy;
        copy.start(QStringLiteral("cp"),
                   {QStringLiteral("-a"), QStringLiteral(VELMORA_BINARY_DIR "/service/installed/Applications"),
                    volume + QStringLiteral("/")});
        QVERIFY(copy.waitForFinished() && copy.exitCode() == 0);
        QVERIFY(pointHostsAt(m_service.baseUrl(), {SettingKey::serviceHost, SettingKey::siteHost,
                                                   SettingKey::analyticsHost, SettingKey::dealsHost}));
        VLSettings settings;
        settings.setValue(QLatin1String(SettingKey::sendAnalytics), false);
        settings.setValue(QLatin1String(SettingKey::startupItem), false);
        settings.setValue(QLatin1String(SettingKey::volumeRoot), volume);
        m_desktop = std::make_unique<DesktopApp>();
    }

    void cleanupTestCase() { m_desktop.reset(); }

    void panelChecksThenListsNewestFirst()
    {
        VLPanelController &panel = m_desktop->panel();
        QSignalSpy finished(&m_desktop->driver(), &VLMainWindowController::checkFinished);
        m_desktop->driver().checkForUpdates();
        QCOMPARE(panel.statusText(), QStringLiteral("Checking for updates"));
        QVERIFY(finished.wait(60000));
        QVERIFY(finished.first().first().toBool());

        QTRY_VERIFY(panel.tableShown());
        QCOMPARE(panel.findChild<QLabel *>(QStringLiteral("numberUpdatesAvailable"))->text(), QStringLiteral("6"));
        const AppList listed = panel.outdatedApps();
        QCOMPARE(listed.size(), 6);
        for (int i = 1; i < listed.size(); ++i) {
            QVERIFY(listed.at(i - 1)->sortDate >= listed.at(i)->sortDate);
        }
    }

    // The row's Update button is painted: a click at it must reach the update of that row's app.
    void rowUpdateEndsWithItsDoneMark()
    {
        m_desktop->panel().openPanel(QRect(800, 0, 30, 24), false);
        QListView *table = panelTable();
        const QModelIndex row = panelRow(QStringLiteral("Velmora Notes"));
        QVERIFY(row.isValid());
        table->scrollTo(row);
        const QRect button = PanelRowDelegate::partRect(table->visualRect(row), PanelRowDelegate::Part::Update);
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, button.center());
        QVERIFY(rowState(row) == AppListModel::RowState::Updating ||
                rowState(row) == AppListModel::RowState::Installing);
        // The list is refilled as the update ends: the row is looked up again.
        QTRY_COMPARE_WITH_TIMEOUT(rowState(panelRow(QStringLiteral("Velmora Notes"))), AppListModel::RowState::Done,
                                  60000);
        QCOMPARE(panelRow(QStringLiteral("Velmora Notes")).data(AppListModel::AppRole).value<AppRef>()->localVersion,
                 QStringLiteral("2.0"));
        QCOMPARE(m_desktop->panel().findChild<QLabel *>(QStringLiteral("numberUpdatesAvailable"))->text(),
                 QStringLiteral("5"));
        // The done row stays until the finished rows expire; then only the outdated remain.
        QVERIFY(panelRow(QStringLiteral("Velmora Notes")).isValid());
        m_desktop->panel().removeOlderLaunchAppsFromPanel(QDateTime::currentDateTimeUtc().addSecs(1801));
        QVERIFY(!panelRow(QStringLiteral("Velmora Notes")).isValid());
        QCOMPARE(m_desktop->panel().outdatedApps().size(), 5);
        m_desktop->panel().closePanel();
    }

    // A link that arrives while a check runs is read once that check has ended, not a check later.
    void linkDuringACheckUpdatesAfterIt()
    {
        VLMainWindowController &driver = m_desktop->driver();
        const AppRef paint = driver.scanData().appWithVLID(
            panelRow(QStringLiteral("Velmora Paint")).data(AppListModel::AppRole).value<AppRef>()->vlID);
        QSignalSpy finished(&driver, &VLMainWindowController::checkFinished);
        driver.checkForUpdates();
        m_desktop->handleArguments({QStringLiteral("velmora://app/%1/Velmora-Paint/2.0").arg(paint->vlID)});
        QVERIFY(finished.wait(60000));
        QTRY_COMPARE_WITH_TIMEOUT(driver.scanData().appWithVLID(paint->vlID)->localVersion, QStringLiteral("2.0"),
                                  60000);
    }

    void windowViewsAndSearch_data()
    {
        QTest::addColumn<AppView>("view");
        QTest::addColumn<QString>("search");
        QTest::addColumn<int>("rows");
        QTest::newRow("updates") << AppView::Updates << QString() << 4;
        QTest::newRow("installed") << AppView::Installed << QString() << 6;
        QTest::newRow("search any case") << AppView::Installed << QStringLiteral("pAINT") << 1;
        QTest::newRow("search the updated app among updates") << AppView::Updates << QStringLiteral("Notes") << 0;
        QTest::newRow("no watch list yet") << AppView::WatchList << QString() << 0;
    }

    void windowViewsAndSearch()
    {
        QFETCH(AppView, view);
        QFETCH(QString, search);
        QFETCH(int, rows);
        VLMainWindow &window = m_desktop->window();
        QAbstractItemModelTester tester(&window.listModel(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        window.setSearchText(search);
        window.showView(view);
        QCOMPARE(window.listModel().rowCount(), rows);
        window.setSearchText(QString());
    }

    void preferencesWriteAtOnce_data()
    {
        QTest::addColumn<QString>("key");
        for (const QString &key : PreferencesDialog::shownKeys()) {
            QTest::newRow(qPrintable(key)) << key;
        }
    }

    void preferencesWriteAtOnce()
    {
        QFETCH(QString, key);
        PreferencesDialog preferences;
        auto *box = preferences.findChild<QCheckBox *>(key);
        QVERIFY(box);
        const bool before = VLSettings().boolValue(qPrintable(key));
        QCOMPARE(box->isChecked(), before);
        box->click();
        QCOMPARE(VLSettings().boolValue(qPrintable(key)), !before);
        box->click();
        QCOMPARE(VLSettings().boolValue(qPrintable(key)), before);
    }

    // Rows run in order on one dialog: a member is signed up, then signs in again. An empty text is a sign-in,
    // after which the member's views are listed and the check made as the member has ended.
    void accountForms_data()
    {
        QTest::addColumn<AccountDialog::Page>("page");
        QTest::addColumn<QStringList>("fields");
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("statusLine");
        QTest::addColumn<QString>("text");
        const auto signup = [](const QString &email, const QString &last) {
            return QStringList{QStringLiteral("signupEmail=") + email, QStringLiteral("signupPassword=Pw 9!x"),
                               QStringLiteral("signupFirstName=New"), QStringLiteral("signupLastName=") + last};
        };
        const QString email = QStringLiteral("newcomer@example.com");
        const auto row = [](const char *name, AccountDialog::Page page, const QStringList &fields, const char *button,
                            const char *statusLine, const char *text) {
            QTest::newRow(name) << page << fields << QString::fromLatin1(button) << QString::fromLatin1(statusLine)
                                << QString::fromLatin1(text);
        };
        using Page = AccountDialog::Page;
        row("sign-up without a last name", Page::Signup, signup(email, QString()), "signupButton", "createErrorfield",
            "Please enter required account info");
        row("sign-up, five-letter domain", Page::Signup,
            signup(QStringLiteral("new@example.coffee"), QStringLiteral("Comer")), "signupButton", "createErrorfield",
            "Invalid Email address");
        row("sign-up", Page::Signup, signup(email, QStringLiteral("Comer")), "signupButton", "createErrorfield", "");
        row("sign-up, address taken", Page::Signup, signup(email, QStringLiteral("Comer")), "signupButton",
            "createErrorfield", "An account with this email address already exists");
        row("log-in without a password", Page::Login, {QStringLiteral("email=") + email, QStringLiteral("password=")},
            "loginButton", "errorfield", "Please enter email and password");
        row("log-in, wrong password", Page::Login, {QStringLiteral("email=") + email, QStringLiteral("password=Pw 9")},
            "loginButton", "errorfield", "Incorrect email or password");
        row("log-in", Page::Login, {QStringLiteral("email=") + email, QStringLiteral("password=Pw 9!x")}, "loginButton",
            "errorfield", "");
        row("profile without a first name", Page::Profile, {QStringLiteral("firstname=")}, "saveProfileButton",
            "profileStatus", "Name and Email address are required");
        row("profile saved", Page::Profile, {QStringLiteral("firstname=Newer")}, "saveProfileButton", "profileStatus",
            "Account information saved");
    }

    void accountForms()
    {
        QFETCH(AccountDialog::Page, page);
        QFETCH(QStringList, fields);
        QFETCH(QString, button);
        QFETCH(QString, statusLine);
        QFETCH(QString, text);
        VLMainWindowController &driver = m_desktop->driver();
        AccountDialog &dialog = m_desktop->account();
        if (page != AccountDialog::Page::Profile && driver.memberAccount().isLoggedIn) {
            dialog.findChild<QPushButton *>(QStringLiteral("logoutButton"))->click();
            QTRY_VERIFY(!driver.memberAccount().isLoggedIn);
        }
        dialog.showPage(page);
        for (const QString &field : fields) {
            dialog.findChild<QLineEdit *>(field.section(QLatin1Char('='), 0, 0))
                ->setText(field.section(QLatin1Char('='), 1));
        }
        QSignalSpy checked(&driver, &VLMainWindowController::checkFinished);
        dialog.findChild<QPushButton *>(button)->click();
        if (!text.isEmpty()) {
            QTRY_COMPARE_WITH_TIMEOUT(dialog.findChild<QLabel *>(statusLine)->text(), text, 30000);
            return;
        }
        QTRY_COMPARE_WITH_TIMEOUT(dialog.currentPage(), AccountDialog::Page::Profile, 30000);
        QVERIFY(driver.memberAccount().isLoggedIn);
        const QListWidget *navigation = m_desktop->window().findChild<QListWidget *>(QStringLiteral("navigation"));
        QVERIFY(!navigation->item(static_cast<int>(AppView::WatchList))->isHidden());
        QVERIFY(!navigation->item(static_cast<int>(AppView::Purchases))->isHidden());
        QTRY_VERIFY_WITH_TIMEOUT(!checked.isEmpty(), 60000);
    }

    void dealOrderedFromTheCart()
    {
        QSignalSpy promos(&m_desktop->driver(), &VLMainWindowController::promosLoaded);
        m_desktop->driver().loadPromos();
        QVERIFY(promos.wait(30000));
        const AppList deals = m_desktop->window().deals();
        QVERIFY(!deals.isEmpty());
        CartDialog cart(m_desktop->driver(), deals.first());
        cart.findChild<QPushButton *>(QStringLiteral("buyNowButton"))->click();
        QTRY_COMPARE_WITH_TIMEOUT(
            cart.findChild<QLabel *>(QStringLiteral("cartStatus"))->text(),
            QStringLiteral("Ordered. The purchase shows under Purchases once the service has it."), 30000);
        QVERIFY(m_service.waitForLog("POST /cart/vld6 200"));
    }

    // Signed out, the Account button and a deal's Buy Now both bring the log-in form, with no cart yet, which would
    // order for nobody. A sign-in from that form goes on to the deal's cart; closing the form first drops it.
    void signedOutReachesTheLogInForm_data()
    {
        QTest::addColumn<bool>("closedFirst");
        QTest::newRow("signed in from the form") << false;
        QTest::newRow("form closed, then signed in") << true;
    }

    void signedOutReachesTheLogInForm()
    {
        QFETCH(bool, closedFirst);
        VLMainWindowController &driver = m_desktop->driver();
        if (driver.memberAccount().isLoggedIn) {
            m_desktop->account().findChild<QPushButton *>(QStringLiteral("logoutButton"))->click();
            QTRY_VERIFY(!driver.memberAccount().isLoggedIn);
        }
        VLMainWindow &window = m_desktop->window();
        window.showView(AppView::Deals);
        for (const char *name : {"accountButton", "buyDealButton"}) {
            m_desktop->account().hide();
            auto *button = window.findChild<QPushButton *>(QLatin1String(name));
            QVERIFY(button->isVisibleTo(&window));
            button->click();
            QVERIFY(m_desktop->account().isVisible());
            QCOMPARE(m_desktop->account().currentPage(), AccountDialog::Page::Login);
        }
        QVERIFY(window.findChildren<CartDialog *>().isEmpty());
        if (closedFirst) {
            m_desktop->account().reject();
            window.findChild<QPushButton *>(QStringLiteral("accountButton"))->click();
        }
        QPointer<AccountDialog> form = &m_desktop->account();
        form->findChild<QLineEdit *>(QStringLiteral("email"))->setText(QStringLiteral("newcomer@example.com"));
        form->findChild<QLineEdit *>(QStringLiteral("password"))->setText(QStringLiteral("Pw 9!x"));
        QSignalSpy signedIn(&driver, &VLMainWindowController::loginEnded);
        form->findChild<QPushButton *>(QStringLiteral("loginButton"))->click();
        QVERIFY(signedIn.wait(30000));
        QVERIFY(driver.memberAccount().isLoggedIn);
        const QList<CartDialog *> carts = window.findChildren<CartDialog *>();
        QCOMPARE(carts.size(), closedFirst ? 0 : 1);
        QCOMPARE(!form.isNull() && form->isVisible(), closedFirst);
        qDeleteAll(carts);
    }

    // "Forgot Password?" opens the site's page for a new password in the browser, and clears the status line.
    void forgotPasswordOpensTheSitePage()
    {
        const QString bin = QDir::homePath() + QStringLiteral("/bin");
        const QString opened = QDir::homePath() + QStringLiteral("/opened");
        QVERIFY(QDir().mkpath(bin));
        QFile opener(bin + QStringLiteral("/xdg-open"));
        QVERIFY(opener.open(QIODevice::WriteOnly));
        opener.write("#!/bin/sh\necho \"$1\" >\"" + QFile::encodeName(opened) + "\"\n");
        opener.close();
        opener.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        const QByteArray path = qgetenv("PATH");
        const QByteArray display = qgetenv("DISPLAY");
        const auto restore = qScopeGuard([&] {
            qputenv("PATH", path);
            qputenv("DISPLAY", display);
            pointHostsAt(m_service.baseUrl(), {SettingKey::siteHost});
        });
        qputenv("PATH", QFile::encodeName(bin) + ':' + path);
        qputenv("DISPLAY", ":0");
        // The site host apart from the service's, so a page asked of the wrong host shows.
        const QString site =
            QString(m_service.baseUrl()).replace(QStringLiteral("127.0.0.1"), QStringLiteral("localhost"));
        QVERIFY(pointHostsAt(site, {SettingKey::siteHost}));
        const auto openedPage = [&opened] {
            QFile file(opened);
            return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed() : QByteArray();
        };

        AccountDialog &dialog = m_desktop->account();
        auto *status = dialog.findChild<QLabel *>(QStringLiteral("errorfield"));
        status->setText(QStringLiteral("Incorrect email or password"));
        dialog.findChild<QPushButton *>(QStringLiteral("forgotPasswordButton"))->click();
        QVERIFY(status->text().isEmpty());
        QTRY_COMPARE(openedPage(), (site + QStringLiteral("/member/forgot-password")).toUtf8());
    }

    // Every control the keyboard can reach has a name a screen reader says, a button or field also what it does, and
    // Tab from the first control comes to each of them.
    void everyControlIsNamedAndReachedByTab_data()
    {
        QTest::addColumn<QString>("surface");
        for (const char *surface : {"window, updates", "window, deals", "panel", "preferences", "account, log-in",
                                    "account, sign-up", "account, profile", "cart"}) {
            QTest::newRow(surface) << QString::fromLatin1(surface);
        }
    }

    void everyControlIsNamedAndReachedByTab()
    {
        QFETCH(QString, surface);
        VLMainWindow &window = m_desktop->window();
        std::unique_ptr<CartDialog> cart;
        QWidget *top = &m_desktop->account();
        if (surface.startsWith(QLatin1String("window"))) {
            window.showView(surface.endsWith(QLatin1String("deals")) ? AppView::Deals : AppView::Updates);
            top = &window;
        } else if (surface == QLatin1String("panel")) {
            m_desktop->panel().openPanel(QRect(800, 0, 30, 24), false);
            top = &m_desktop->panel();
        } else if (surface == QLatin1String("preferences")) {
            top = &m_desktop->preferences();
        } else if (surface == QLatin1String("cart")) {
            cart = std::make_unique<CartDialog>(m_desktop->driver(), window.deals().value(0), &window);
            top = cart.get();
        } else {
            const QStringList pages{QStringLiteral("account, log-in"), QStringLiteral("account, sign-up"),
                                    QStringLiteral("account, profile")};
            m_desktop->account().showPage(static_cast<AccountDialog::Page>(pages.indexOf(surface)));
        }
        top->show();
        top->activateWindow();
        QTRY_VERIFY(top->isActiveWindow());
        QList<QWidget *> controls;
        for (QWidget *control : top->findChildren<QWidget *>()) {
            if (control->window() == top && control->isVisibleTo(top) && control->isEnabled() &&
                (control->focusPolicy() & Qt::TabFocus) && !control->focusProxy()) {
                controls.append(control);
            }
        }
        QVERIFY(!controls.isEmpty());
        QSet<QWidget *> reached;
        controls.first()->setFocus(Qt::TabFocusReason);
        for (qsizetype i = 0; i <= controls.size() && QApplication::focusWidget(); ++i) {
            reached.insert(QApplication::focusWidget());
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        QStringList faults;
        for (QWidget *control : std::as_const(controls)) {
            const QString what = QString::fromLatin1(control->metaObject()->className()) + QLatin1Char(' ') +
                                 control->objectName() + QLatin1Char(' ') + control->property("text").toString();
            QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(control);
            if (accessible->text(QAccessible::Name).isEmpty()) {
                faults << what + QStringLiteral(": no name");
            }
            if ((qobject_cast<QAbstractButton *>(control) || qobject_cast<QLineEdit *>(control)) &&
                accessible->text(QAccessible::Description).isEmpty() && control->toolTip().isEmpty()) {
                faults << what + QStringLiteral(": no description");
            }
            if (!reached.contains(control)) {
                faults << what + QStringLiteral(": not reached by Tab");
            }
        }
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join(QStringLiteral("; "))));
    }
};

VELMORA_GUI_TEST_MAIN(TestDesktopWithService)
#include "TestDesktopWithService.moc"
