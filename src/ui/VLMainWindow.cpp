#include "ui/VLMainWindow.h"

#include "platform/VLSettings.h"
#include "scan/VLMainWindowController.h"
#include "scan/VLScanData.h"
#include "services/VLMemberAccount.h"
#include "ui/AppActions.h"
#include "ui/AppIcon.h"
#include "ui/AppListModel.h"
#include "ui/AppRowDelegate.h"
#include "ui/CartDialog.h"
#include "ui/DetailsPane.h"
#include "ui/UpdateController.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QShortcut>
#include <QSplitter>
#include <QStatusBar>
#include <QTimer>
#include <QTreeView>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int kStoreRetryMs = 100;

} // namespace

VLMainWindow::VLMainWindow(VLMainWindowController &driver, UpdateController &updates, AppActions &actions,
                           QWidget *parent)
    : QMainWindow(parent), m_driver(driver), m_updates(updates), m_actions(actions),
      m_navigation(new QListWidget(this)), m_search(new QLineEdit(this)), m_list(new QTreeView(this)),
      m_model(new AppListModel(this)), m_details(new DetailsPane(this)), m_updateAll(new QPushButton(this)),
      m_check(new QPushButton(tr("Check for Updates"), this)), m_status(new QLabel(this)),
      m_progress(new QProgressBar(this)), m_storeRetry(new QTimer(this))
{
    setObjectName(QStringLiteral("VLMainWindow"));
    setWindowTitle(tr("Velmora Desktop"));
    setWindowIcon(AppIcon::programIcon());
    resize(980, 620);

    m_navigation->setObjectName(QStringLiteral("navigation"));
    m_navigation->setAccessibleName(tr("Views"));
    for (const QString &title : {tr("Updates"), tr("Installed"), tr("Watch List"), tr("Purchases"), tr("Deals")}) {
        m_navigation->addItem(title);
    }
    m_navigation->setFixedWidth(150);

    m_list->setObjectName(QStringLiteral("appList"));
    m_list->setAccessibleName(tr("Apps"));
    m_model->setJobLookup([this](const VLApp *app) { return m_updates.jobFor(app); });
    m_list->setModel(m_model);
    m_list->setItemDelegate(new AppRowDelegate(m_list));
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setAlternatingRowColors(true);
    m_list->setIconSize(QSize(24, 24));
    m_list->header()->setSectionResizeMode(AppListModel::Name, QHeaderView::Stretch);
    m_list->header()->setStretchLastSection(false);
    m_list->header()->resizeSection(AppListModel::Available, 130);

    m_details->setMinimumWidth(260);
    auto *splitter = new QSplitter(this);
    splitter->addWidget(m_list);
    splitter->addWidget(m_details);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 2);

    buildToolBar();
    auto *centre = new QWidget(this);
    auto *layout = new QHBoxLayout(centre);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_navigation);
    layout->addWidget(splitter, 1);
    setCentralWidget(centre);

    m_progress->setRange(0, 1000);
    m_progress->setMaximumWidth(160);
    m_progress->setVisible(false);
    statusBar()->addWidget(m_status, 1);
    statusBar()->addPermanentWidget(m_progress);

    connect(m_navigation, &QListWidget::currentRowChanged, this,
            [this](int row) { showView(static_cast<AppView>(std::max(row, 0))); });
    connect(m_search, &QLineEdit::textChanged, this, &VLMainWindow::reloadLists);
    connect(m_list->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            &VLMainWindow::showSelectedDetails);
    connect(m_model, &QAbstractItemModel::dataChanged, this, [this](const QModelIndex &from, const QModelIndex &to) {
        const int current = m_list->currentIndex().row();
        if (current >= from.row() && current <= to.row()) {
            showSelectedDetails();
        }
    });
    connect(&driver, &VLMainWindowController::statusChanged, m_status, &QLabel::setText);
    connect(&driver, &VLMainWindowController::progressChanged, this, [this](double fraction) {
        m_progress->setVisible(fraction > 0 && fraction < 1);
        m_progress->setValue(static_cast<int>(fraction * 1000));
    });
    connect(&driver, &VLMainWindowController::checkFinished, this, [this] {
        m_check->setEnabled(true);
        m_progress->setVisible(false);
    });
    connect(&driver, &VLMainWindowController::listChanged, this, &VLMainWindow::reloadLists);
    connect(&driver, &VLMainWindowController::memberChanged, this, [this](bool signedIn) {
        // A member's views leave with the member: the installed apps are shown instead.
        if (!signedIn && (m_view == AppView::WatchList || m_view == AppView::Purchases)) {
            showView(AppView::Installed);
        } else {
            reloadLists();
        }
    });

    connect(&updates, &UpdateController::progressChanged, this,
            [this](const AppRef &app, double fraction) { m_model->setProgress(app.get(), fraction); });
    connect(&updates, &UpdateController::stateChanged, this, [this](const AppRef &app) {
        if (!m_updates.isUpdating(app.get())) {
            m_model->setProgress(app.get(), -1);
        }
        m_model->refreshApp(app.get());
        refreshUpdateAllButton();
    });
    connect(&updates, &UpdateController::updateFinished, this, &VLMainWindow::reloadLists);
    connect(&updates, &UpdateController::buttonStateChanged, this, &VLMainWindow::refreshUpdateAllButton);
    connect(&actions, &AppActions::appChanged, this, &VLMainWindow::reloadLists);

    connect(m_details, &DetailsPane::updateRequested, &updates, &UpdateController::updateApp);
    connect(m_details, &DetailsPane::cancelRequested, &updates, &UpdateController::cancelUpdate);
    connect(m_details, &DetailsPane::ignoreToggled, &actions, &AppActions::setIgnored);
    connect(m_details, &DetailsPane::currentToggled, &actions, &AppActions::setVersionToCurrent);
    connect(m_details, &DetailsPane::dontCheckToggled, &actions, &AppActions::setDontCheck);
    connect(m_details, &DetailsPane::watchListToggled, &actions, &AppActions::setOnWatchList);
    connect(m_details, &DetailsPane::reportRequested, this, &VLMainWindow::reportRequested);
    connect(m_details, &DetailsPane::shareRequested, &actions, &AppActions::shareApp);
    connect(m_details, &DetailsPane::buyRequested, this, &VLMainWindow::openCart);

    auto *find = new QShortcut(QKeySequence::Find, this);
    connect(find, &QShortcut::activated, m_search, [this] { m_search->setFocus(Qt::ShortcutFocusReason); });
    auto *refresh = new QShortcut(QKeySequence::Refresh, this);
    connect(refresh, &QShortcut::activated, m_check, &QPushButton::click);
    auto *refreshCtrlR = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_R), this);
    connect(refreshCtrlR, &QShortcut::activated, m_check, &QPushButton::click);
    auto *quit = new QShortcut(QKeySequence::Quit, this);
    connect(quit, &QShortcut::activated, this,
            [this] { emit closeRequested(QGuiApplication::queryKeyboardModifiers().testFlag(Qt::ShiftModifier)); });
    setTabOrder(m_navigation, m_search);
    setTabOrder(m_search, m_list);
    setTabOrder(m_list, m_details);

    m_storeRetry->setSingleShot(true);
    m_storeRetry->setInterval(kStoreRetryMs);
    connect(m_storeRetry, &QTimer::timeout, this, &VLMainWindow::reloadLists);
    m_navigation->setCurrentRow(0);
    reloadLists();
}

void VLMainWindow::buildToolBar()
{
    m_search->setObjectName(QStringLiteral("search"));
    m_search->setPlaceholderText(tr("Search"));
    m_search->setClearButtonEnabled(true);
    m_search->setAccessibleName(tr("Search apps"));
    m_check->setObjectName(QStringLiteral("checkButton"));
    m_check->setAccessibleDescription(tr("Scans this computer and asks the service for updates"));
    m_updateAll->setObjectName(QStringLiteral("updateAllButton"));
    auto *preferences = new QPushButton(tr("Preferences"), this);
    preferences->setObjectName(QStringLiteral("preferencesButton"));
    preferences->setAccessibleDescription(tr("Opens the preferences"));
    auto *account = new QPushButton(tr("Account"), this);
    account->setObjectName(QStringLiteral("accountButton"));
    account->setAccessibleDescription(tr("Opens the sign-in form, or your profile when you are signed in"));

    auto *bar = new QWidget(this);
    auto *layout = new QHBoxLayout(bar);
    layout->addWidget(m_check);
    layout->addWidget(m_updateAll);
    layout->addStretch(1);
    layout->addWidget(m_search, 2);
    layout->addWidget(account);
    layout->addWidget(preferences);
    setMenuWidget(bar);

    connect(m_check, &QPushButton::clicked, this, [this] {
        m_check->setEnabled(false);
        m_driver.checkForUpdates();
    });
    connect(m_updateAll, &QPushButton::clicked, this, [this] {
        if (m_updateAll->property("cancels").toBool()) {
            m_updates.cancelUpdateAll();
        } else {
            m_updates.updateAll();
        }
    });
    connect(preferences, &QPushButton::clicked, this, &VLMainWindow::preferencesRequested);
    connect(account, &QPushButton::clicked, this, &VLMainWindow::accountRequested);
    refreshUpdateAllButton();
}

void VLMainWindow::refreshUpdateAllButton()
{
    // An idle queue offers Update All; once queued, the queue's own button rule decides.
    const VLUpdateAllQueue &queue = m_updates.queue();
    const bool idle = queue.updateAllApps().isEmpty();
    const bool cancels = !idle && queue.buttonState() == UpdateAllButton::Cancel;
    m_updateAll->setProperty("cancels", cancels);
    m_updateAll->setText(cancels ? tr("Cancel") : tr("Update All"));
    m_updateAll->setAccessibleName(m_updateAll->text());
    m_updateAll->setAccessibleDescription(cancels ? tr("Stops the updates that are running or waiting")
                                                  : tr("Updates every outdated app in turn"));
    m_updateAll->setEnabled(cancels || m_anyOutdated);
}

AppViewOptions VLMainWindow::viewOptions() const
{
    const VLSettings settings;
    AppViewOptions options;
    options.outdated = OutdatedFilterOptions::fromSettings(settings);
    options.showNoMatch = settings.boolValue(SettingKey::showNoMatch);
    options.listSort = settings.stringValue(SettingKey::listSort);
    options.search = m_search->text();
    return options;
}

std::optional<AppList> VLMainWindow::sourceFor(AppView view)
{
    if (view == AppView::Deals) {
        return m_deals;
    }
    // A worker holds the store for as long as it reads or merges it (seconds for a large store at launch): the window
    // keeps what it shows rather than freezing, and reads again shortly.
    QRecursiveMutex &mutex = m_driver.scanData().mutex();
    if (!mutex.tryLock()) {
        m_storeRetry->start();
        return std::nullopt;
    }
    const AppList records = m_driver.scanData().apps().value_or(AppList());
    mutex.unlock();
    return records;
}

void VLMainWindow::showView(AppView view)
{
    m_view = view;
    if (m_navigation->currentRow() != static_cast<int>(view)) {
        m_navigation->setCurrentRow(static_cast<int>(view));
    }
    reloadLists();
}

void VLMainWindow::reloadLists()
{
    const bool member = m_driver.memberAccount().isLoggedIn;
    m_navigation->item(static_cast<int>(AppView::WatchList))->setHidden(!member);
    m_navigation->item(static_cast<int>(AppView::Purchases))->setHidden(!member);
    const std::optional<AppList> source = sourceFor(m_view);
    if (!source) {
        return;
    }
    const AppRef selected = m_details->app();
    const AppViewOptions options = viewOptions();
    m_model->setApps(AppViews::appsInView(m_view, *source, options));
    if (m_view != AppView::Deals) {
        m_anyOutdated = std::any_of(source->cbegin(), source->cend(), [&options](const AppRef &app) {
            return isListedAsOutdated(*app, options.outdated);
        });
    }
    const int row = selected ? m_model->rowOf(selected.get()) : -1;
    m_list->setCurrentIndex(m_model->index(std::max(row, 0), 0));
    showSelectedDetails();
    refreshUpdateAllButton();
}

void VLMainWindow::setDeals(const AppList &deals)
{
    m_deals = deals;
    if (m_view == AppView::Deals) {
        reloadLists();
    }
}

void VLMainWindow::openCart(const AppRef &deal)
{
    // A deal is ordered for a member: the account's forms come first.
    if (!m_driver.memberAccount().isLoggedIn) {
        emit signInForCartRequested(deal);
        return;
    }
    auto *cart = new CartDialog(m_driver, deal, this);
    cart->setAttribute(Qt::WA_DeleteOnClose);
    cart->open();
}

void VLMainWindow::setSearchText(const QString &text)
{
    m_search->setText(text);
}

void VLMainWindow::viewAppDetails(const AppRef &app)
{
    const AppViewOptions options = viewOptions();
    for (const AppView view : {AppView::Updates, AppView::Installed, AppView::WatchList, AppView::Purchases}) {
        if (AppViews::isInView(view, *app, options)) {
            m_search->clear();
            showView(view);
            break;
        }
    }
    const int row = m_model->rowOf(app.get());
    if (row >= 0) {
        m_list->setCurrentIndex(m_model->index(row, 0));
        m_list->scrollTo(m_model->index(row, 0));
    }
    showNormal();
    raise();
    activateWindow();
}

void VLMainWindow::showSelectedDetails()
{
    const AppRef app = m_model->appAt(m_list->currentIndex().row());
    m_details->showApp(app, m_driver.memberAccount().isLoggedIn, app && m_updates.isUpdating(app.get()));
}

void VLMainWindow::closeEvent(QCloseEvent *event)
{
    // Closing the window is a quit from the window: the application decides whether the program stays behind its
    // tray icon.
    event->ignore();
    emit closeRequested(QGuiApplication::queryKeyboardModifiers().testFlag(Qt::ShiftModifier));
}
