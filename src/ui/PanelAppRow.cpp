#include "ui/PanelAppRow.h"

#include "install/UpdateJob.h"

#include "model/VLApp.h"

#include <QContextMenuEvent>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

constexpr int kIconSize = 32;

} // namespace

PanelAppRow::PanelAppRow(AppRef app, QWidget *parent)
    : QWidget(parent), m_app(std::move(app)), m_name(new QLabel(this)), m_versions(new QLabel(this)),
      m_action(new QStackedWidget(this)), m_update(new QPushButton(tr("Update"), this)),
      m_progress(new QProgressBar(this)), m_cancel(new QToolButton(this)), m_done(new QLabel(this)),
      m_failure(new QLabel(this)), m_menu(new QToolButton(this))
{
    setObjectName(QStringLiteral("panelRow"));
    auto *icon = new QLabel(this);
    icon->setPixmap(iconFor(*m_app).pixmap(kIconSize, kIconSize));
    icon->setFixedSize(kIconSize, kIconSize);

    QFont bold = m_name->font();
    bold.setBold(true);
    m_name->setFont(bold);
    m_name->setText(m_app->displayName);
    m_versions->setText(tr("%1 → %2").arg(m_app->localVersion, m_app->vlVersion));
    m_versions->setForegroundRole(QPalette::PlaceholderText);
    auto *texts = new QVBoxLayout;
    texts->setSpacing(0);
    texts->addWidget(m_name);
    texts->addWidget(m_versions);

    m_update->setObjectName(QStringLiteral("rowUpdate"));
    m_update->setAccessibleName(tr("Update %1").arg(m_app->displayName));
    m_update->setAccessibleDescription(tr("Downloads and installs the new version"));
    m_progress->setRange(0, 1000);
    m_progress->setTextVisible(false);
    m_progress->setFixedWidth(64);
    m_progress->setAccessibleName(tr("Progress of %1").arg(m_app->displayName));
    m_cancel->setObjectName(QStringLiteral("rowCancel"));
    m_cancel->setText(QStringLiteral("✕"));
    m_cancel->setToolTip(tr("Cancel"));
    m_cancel->setAccessibleName(tr("Cancel the update of %1").arg(m_app->displayName));
    m_cancel->setAutoRaise(true);
    auto *progressPage = new QWidget(m_action);
    auto *progressLayout = new QHBoxLayout(progressPage);
    progressLayout->setContentsMargins(0, 0, 0, 0);
    progressLayout->addWidget(m_progress);
    progressLayout->addWidget(m_cancel);
    m_done->setText(QStringLiteral("✓ ") + tr("Updated"));
    m_done->setObjectName(QStringLiteral("rowDone"));
    m_failure->setObjectName(QStringLiteral("rowFailure"));
    m_failure->setWordWrap(true);
    m_failure->setMaximumWidth(96);
    QPalette failurePalette = m_failure->palette();
    failurePalette.setColor(QPalette::WindowText, QColor(0xd9, 0x2d, 0x20));
    m_failure->setPalette(failurePalette);
    m_action->addWidget(m_update);
    m_action->addWidget(progressPage);
    m_action->addWidget(m_done);
    m_action->addWidget(m_failure);
    m_action->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    m_action->setFixedWidth(96);

    m_menu->setObjectName(QStringLiteral("rowMenu"));
    m_menu->setText(QStringLiteral("⋯"));
    m_menu->setAutoRaise(true);
    m_menu->setToolTip(tr("Actions"));
    m_menu->setAccessibleName(tr("Actions for %1").arg(m_app->displayName));

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(8, 4, 4, 4);
    layout->addWidget(icon);
    layout->addLayout(texts, 1);
    layout->addWidget(m_action);
    layout->addWidget(m_menu);

    connect(m_update, &QPushButton::clicked, this, [this] { emit updateRequested(m_app); });
    connect(m_cancel, &QToolButton::clicked, this, [this] { emit cancelRequested(m_app); });
    connect(m_menu, &QToolButton::clicked, this,
            [this] { emit menuRequested(m_app, m_menu->mapToGlobal(QPoint(0, m_menu->height()))); });
    refresh(nullptr);
}

PanelAppRow::State PanelAppRow::stateOf(const VLApp &app, const UpdateJob *job)
{
    switch (job ? job->status() : UpdateStatus::Done) {
    case UpdateStatus::Installing:
        return State::Installing;
    case UpdateStatus::Queued:
    case UpdateStatus::Downloading:
        return State::Updating;
    case UpdateStatus::Failed:
        return State::Failed;
    case UpdateStatus::Done:
    case UpdateStatus::Cancelled:
        break;
    }
    if (!app.isOutdated && app.lastupdated.isValid()) {
        return State::Done;
    }
    return State::Idle;
}

QIcon PanelAppRow::iconFor(const VLApp &app)
{
    for (const QString &path : {app.appIcon, VLApp::catalogueIconPath(app.digestString)}) {
        if (!path.isEmpty() && QFileInfo(path).isFile()) {
            const QIcon icon(path);
            if (!icon.availableSizes().isEmpty() || !icon.pixmap(kIconSize).isNull()) {
                return icon;
            }
        }
    }
    return QIcon(QStringLiteral(":/icons/velmora.svg"));
}

void PanelAppRow::refresh(const UpdateJob *job)
{
    m_state = stateOf(*m_app, job);
    switch (m_state) {
    case State::Idle:
        m_action->setCurrentWidget(m_update);
        break;
    case State::Updating:
    case State::Installing:
        m_action->setCurrentIndex(1);
        m_cancel->setEnabled(m_state == State::Updating);
        break;
    case State::Done:
        m_action->setCurrentWidget(m_done);
        m_versions->setText(m_app->localVersion);
        break;
    case State::Failed:
        m_failure->setText(job->failMessage());
        m_failure->setToolTip(job->failMessage());
        m_action->setCurrentWidget(m_failure);
        break;
    }
}

void PanelAppRow::setProgress(double fraction)
{
    // A host that did not say the size gives fractions past 1: the bar then shows it is busy.
    if (fraction > 1.0) {
        m_progress->setRange(0, 0);
        return;
    }
    m_progress->setRange(0, 1000);
    m_progress->setValue(static_cast<int>(fraction * 1000));
}

void PanelAppRow::contextMenuEvent(QContextMenuEvent *event)
{
    emit menuRequested(m_app, event->globalPos());
}
