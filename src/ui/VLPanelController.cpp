#include "ui/VLPanelController.h"

#include "install/UpdateJob.h"

#include "platform/Log.h"
#include "ui/PanelExpiry.h"
#include "ui/PanelListModel.h"
#include "ui/PanelPlacement.h"
#include "ui/PanelRowDelegate.h"

#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QScreen>
#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

constexpr int kFadeMs = 100;
constexpr int kSlowFadeMs = 1000;

// Newest catalogue date first, as the panel has always listed them.
AppList sortedBySortDate(AppList apps)
{
    std::stable_sort(apps.begin(), apps.end(),
                     [](const AppRef &a, const AppRef &b) { return a->sortDate.compare(b->sortDate) > 0; });
    return apps;
}

} // namespace

VLPanelController::VLPanelController(QWidget *parent)
    : QWidget(parent, Qt::Popup | Qt::FramelessWindowHint), m_numberUpdatesAvailable(new QLabel(this)),
      m_gearButton(new QToolButton(this)), m_stack(new QStackedWidget(this)), m_scanningInProgress(new QLabel(this)),
      m_model(new PanelListModel(this)), m_delegate(new PanelRowDelegate(this)), m_updatesTable(new QListView(this)),
      m_showWebsiteButton(new QPushButton(this)), m_fade(new QPropertyAnimation(this, "windowOpacity", this))
{
    setObjectName(QStringLiteral("VLPanel"));
    setFixedSize(PanelPlacement::kWidth, PanelPlacement::kHeight);
    setAccessibleName(tr("Velmora Desktop updates"));
    setAutoFillBackground(true);

    auto *title = new QLabel(tr("Velmora Desktop"), this);
    QFont titleFont = title->font();
    titleFont.setBold(true);
    title->setFont(titleFont);
    m_numberUpdatesAvailable->setObjectName(QStringLiteral("numberUpdatesAvailable"));
    m_numberUpdatesAvailable->setAccessibleName(tr("Number of updates available"));
    m_gearButton->setObjectName(QStringLiteral("gearButton"));
    m_gearButton->setText(QStringLiteral("⚙"));
    m_gearButton->setAutoRaise(true);
    m_gearButton->setToolTip(tr("Menu"));
    m_gearButton->setAccessibleName(tr("Menu"));
    m_gearButton->setAccessibleDescription(tr("Update all, open the window, preferences, quit"));
    auto *header = new QHBoxLayout;
    header->setContentsMargins(10, 6, 6, 2);
    header->addWidget(title);
    header->addStretch(1);
    header->addWidget(m_numberUpdatesAvailable);
    header->addWidget(m_gearButton);

    m_scanningInProgress->setObjectName(QStringLiteral("scanningInProgress"));
    m_scanningInProgress->setAlignment(Qt::AlignCenter);
    m_model->setJobLookup([this](const VLApp *app) { return jobFor(app); });
    m_updatesTable->setObjectName(QStringLiteral("updatesTable"));
    m_updatesTable->setAccessibleName(tr("Apps with updates"));
    m_updatesTable->setAccessibleDescription(tr("Newest first; Space updates the current app, the menu key opens its "
                                                "actions"));
    m_updatesTable->setModel(m_model);
    m_updatesTable->setItemDelegate(m_delegate);
    // Every row is as high as the first: the list lays out thousands of rows without asking each.
    m_updatesTable->setUniformItemSizes(true);
    m_updatesTable->setSelectionMode(QAbstractItemView::NoSelection);
    m_updatesTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_updatesTable->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_updatesTable->setFrameShape(QFrame::NoFrame);
    m_updatesTable->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_updatesTable->viewport()->setBackgroundRole(QPalette::Window);
    m_updatesTable->setMouseTracking(true);
    m_updatesTable->installEventFilter(this);
    m_updatesTable->viewport()->installEventFilter(this);
    m_stack->addWidget(m_scanningInProgress);
    m_stack->addWidget(m_updatesTable);

    m_showWebsiteButton->setObjectName(QStringLiteral("showWebsiteButton"));
    m_showWebsiteButton->setText(QStringLiteral("   ") + tr("Discover new apps on ") + PanelMenus::siteName());
    m_showWebsiteButton->setFlat(true);
    m_showWebsiteButton->setAccessibleDescription(tr("Opens the site's discover page in the browser"));

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(1, 1, 1, 1);
    layout->setSpacing(0);
    layout->addLayout(header);
    layout->addWidget(m_stack, 1);
    layout->addWidget(m_showWebsiteButton);

    connect(m_gearButton, &QToolButton::clicked, this, &VLPanelController::showGearMenu);
    connect(m_showWebsiteButton, &QPushButton::clicked, this, &VLPanelController::showWebsite);
    connect(m_delegate, &PanelRowDelegate::updateRequested, this, &VLPanelController::updateRequested);
    connect(m_delegate, &PanelRowDelegate::cancelRequested, this, &VLPanelController::cancelRequested);
    connect(m_delegate, &PanelRowDelegate::menuRequested, this, &VLPanelController::showRowMenu);
    m_fade->setStartValue(0.0);
    m_fade->setEndValue(1.0);
    hideTableShowScanningInProgress();
}

void VLPanelController::openPanel(const QRect &anchor, bool slow)
{
    QScreen *screen = QGuiApplication::screenAt(anchor.center());
    if (!screen) {
        screen = QGuiApplication::primaryScreen();
    }
    const QRect frame = PanelPlacement::panelFrame(anchor, screen->availableGeometry());
    if (slow) {
        vlLog(
            QStringLiteral("Icon is at %1\n\tMenu is on screen %2\n\tWill be animated to %3")
                .arg(QDebug::toString(anchor), QDebug::toString(screen->availableGeometry()), QDebug::toString(frame)));
    }
    setGeometry(frame);
    m_fade->stop();
    m_fade->setDuration(slow ? kSlowFadeMs : kFadeMs);
    setWindowOpacity(0.0);
    show();
    raise();
    activateWindow();
    m_fade->start();
    // The rows read their update's state as they are painted.
    m_updatesTable->viewport()->update();
}

void VLPanelController::closePanel()
{
    hide();
}

void VLPanelController::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    emit panelClosed();
}

void VLPanelController::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape) {
        closePanel();
        return;
    }
    QWidget::keyPressEvent(event);
}

bool VLPanelController::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::ContextMenu) {
        const auto *menuEvent = static_cast<QContextMenuEvent *>(event);
        const bool byKey = menuEvent->reason() == QContextMenuEvent::Keyboard;
        const QModelIndex index =
            byKey ? m_updatesTable->currentIndex()
                  : m_updatesTable->indexAt(m_updatesTable->viewport()->mapFromGlobal(menuEvent->globalPos()));
        if (index.isValid()) {
            const QPoint at = byKey
                                  ? m_updatesTable->viewport()->mapToGlobal(m_updatesTable->visualRect(index).center())
                                  : menuEvent->globalPos();
            showRowMenu(m_model->appAt(index.row()), at);
            return true;
        }
    }
    // The painted buttons light up under the pointer: the few rows in view are drawn again as it moves.
    if (watched == m_updatesTable->viewport() &&
        (event->type() == QEvent::MouseMove || event->type() == QEvent::Leave)) {
        m_updatesTable->viewport()->update();
    }
    if (event->type() == QEvent::KeyPress && watched == m_updatesTable) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if ((key == Qt::Key_Return || key == Qt::Key_Enter) && m_updatesTable->currentIndex().isValid()) {
            m_delegate->pressButton(m_updatesTable->currentIndex());
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void VLPanelController::showStatus(const QString &text)
{
    m_scanningInProgress->setText(text);
    m_stack->setCurrentWidget(m_scanningInProgress);
}

void VLPanelController::hideTableShowNoUpdates()
{
    showStatus(tr("No updates available"));
}

void VLPanelController::hideTableShowScanningInProgress()
{
    showStatus(tr("Checking for updates"));
}

QString VLPanelController::statusText() const
{
    return tableShown() ? QString() : m_scanningInProgress->text();
}

bool VLPanelController::tableShown() const
{
    return m_stack->currentWidget() == m_updatesTable;
}

void VLPanelController::showTableHideScanningInProgress(bool doneScanning, const AppList &outdatedApps)
{
    if (!doneScanning) {
        vlLog(QStringLiteral("showTableHideScanningInProgress - scanning still in progress"));
        hideTableShowScanningInProgress();
        return;
    }
    AppList apps = outdatedApps;
    // Rows whose update finished stay with their done mark until they expire.
    for (const AppRef &app : std::as_const(m_outdatedApps)) {
        if (!apps.contains(app) &&
            (isUpdating(app.get()) || !PanelExpiry::isExpired(*app, QDateTime::currentDateTimeUtc()))) {
            apps.append(app);
        }
    }
    m_outdatedApps = sortedBySortDate(apps);
    m_numberUpdatesAvailable->setText(QString::number(outdatedApps.size()));
    showRows();
}

void VLPanelController::removeOlderLaunchAppsFromPanel(const QDateTime &now)
{
    AppList kept;
    for (const AppRef &app : std::as_const(m_outdatedApps)) {
        if (isUpdating(app.get()) || !PanelExpiry::isExpired(*app, now)) {
            kept.append(app);
        }
    }
    m_outdatedApps = kept;
    showRows();
}

void VLPanelController::showRows()
{
    m_model->setApps(m_outdatedApps);
    if (m_outdatedApps.isEmpty()) {
        hideTableShowNoUpdates();
    } else {
        m_stack->setCurrentWidget(m_updatesTable);
    }
}

void VLPanelController::refreshRow(const AppRef &app)
{
    // A finished update's bar starts empty when the app is updated again.
    if (!isUpdating(app.get())) {
        m_model->setProgress(app.get(), -1);
    }
    m_model->refreshApp(app.get());
}

void VLPanelController::setRowProgress(const AppRef &app, double fraction)
{
    m_model->setProgress(app.get(), fraction);
}

QMenu *VLPanelController::buildGearMenu(QWidget *parent)
{
    auto *menu = new QMenu(parent);
    const GearMenuState state = m_gearMenuState ? m_gearMenuState() : GearMenuState{};
    for (const MenuEntry &entry : PanelMenus::gearMenu(state)) {
        const PanelAction action = entry.action;
        QAction *item = menu->addAction(entry.title);
        connect(item, &QAction::triggered, this, [this, action] { emit gearAction(action); });
    }
    return menu;
}

void VLPanelController::showGearMenu()
{
    QMenu *menu = buildGearMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->popup(m_gearButton->mapToGlobal(QPoint(0, m_gearButton->height())));
}

void VLPanelController::showRowMenu(const AppRef &app, const QPoint &globalPos)
{
    auto *menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    RowMenuContext context = m_rowMenuContext ? m_rowMenuContext() : RowMenuContext{};
    const UpdateJob *job = jobFor(app.get());
    context.updateFailed = job && job->status() == UpdateStatus::Failed;
    for (const MenuEntry &entry : PanelMenus::rowMenu(*app, context)) {
        if (entry.action == PanelAction::Separator) {
            menu->addSeparator();
            continue;
        }
        const PanelAction action = entry.action;
        connect(menu->addAction(entry.title), &QAction::triggered, this,
                [this, action, app] { emit rowAction(action, app); });
    }
    menu->popup(globalPos);
}

bool VLPanelController::isUpdating(const VLApp *app) const
{
    const UpdateJob *job = jobFor(app);
    return job && job->isActive();
}
