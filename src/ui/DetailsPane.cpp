#include "ui/DetailsPane.h"

#include "model/VLApp.h"
#include "ui/AppIcon.h"
#include "ui/IconView.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTextBrowser>
#include <QVBoxLayout>

DetailsPane::DetailsPane(QWidget *parent)
    : QWidget(parent), m_icon(new IconView(64, this)), m_name(new QLabel(this)), m_versions(new QLabel(this)),
      m_notes(new QTextBrowser(this)), m_update(new QPushButton(this)), m_report(new QPushButton(this)),
      m_share(new QPushButton(this)), m_buy(new QPushButton(tr("Buy Now…"), this)), m_choices(new QWidget(this))
{
    setObjectName(QStringLiteral("detailsPane"));
    QFont big = m_name->font();
    big.setPointSizeF(big.pointSizeF() * 1.4);
    big.setBold(true);
    m_name->setFont(big);
    m_name->setWordWrap(true);
    m_versions->setWordWrap(true);
    m_notes->setOpenExternalLinks(true);
    m_notes->setAccessibleName(tr("Release notes"));
    m_update->setObjectName(QStringLiteral("detailsUpdate"));
    m_update->setAccessibleDescription(tr("Downloads and installs the new version, or cancels it"));

    auto *choices = new QVBoxLayout(m_choices);
    choices->setContentsMargins(0, 0, 0, 0);
    m_ignore = addChoice(tr("Ignore this version"), tr("Skips this version; a newer one is offered again"));
    m_current = addChoice(tr("Installed version is current"), tr("Counts the installed copy as the newest version"));
    m_dontCheck = addChoice(tr("Don't check for updates"), tr("Never lists this app as outdated"));
    m_watchList = addChoice(tr("On my watch list"), tr("Keeps the app on your watch list"));
    m_ignore->setObjectName(QStringLiteral("ignoreChoice"));
    m_current->setObjectName(QStringLiteral("currentChoice"));
    m_dontCheck->setObjectName(QStringLiteral("dontCheckChoice"));
    m_watchList->setObjectName(QStringLiteral("watchListChoice"));
    m_report->setText(tr("Report a problem…"));
    m_report->setAccessibleDescription(tr("Tells the service about a problem with this app"));
    m_share->setText(tr("Share…"));
    m_share->setAccessibleDescription(tr("Makes a short link to this app's page"));
    m_share->setObjectName(QStringLiteral("shareButton"));
    m_buy->setObjectName(QStringLiteral("buyDealButton"));
    m_buy->setAccessibleName(tr("Buy Now"));
    m_buy->setAccessibleDescription(tr("Opens the cart for this deal"));
    auto *links = new QHBoxLayout;
    links->addWidget(m_report);
    links->addWidget(m_share);

    auto *heading = new QHBoxLayout;
    heading->addWidget(m_icon);
    auto *names = new QVBoxLayout;
    names->addWidget(m_name);
    names->addWidget(m_versions);
    heading->addLayout(names, 1);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(heading);
    layout->addWidget(m_update);
    layout->addWidget(m_buy);
    layout->addWidget(m_notes, 1);
    layout->addWidget(m_choices);
    layout->addLayout(links);

    connect(m_update, &QPushButton::clicked, this, [this] {
        if (!m_app) {
            return;
        }
        if (m_update->property("cancels").toBool()) {
            emit cancelRequested(m_app);
        } else {
            emit updateRequested(m_app);
        }
    });
    const auto forward = [this](QCheckBox *box, void (DetailsPane::*signal)(const AppRef &, bool)) {
        connect(box, &QCheckBox::clicked, this, [this, signal](bool on) {
            if (m_app) {
                emit(this->*signal)(m_app, on);
            }
        });
    };
    forward(m_ignore, &DetailsPane::ignoreToggled);
    forward(m_current, &DetailsPane::currentToggled);
    forward(m_dontCheck, &DetailsPane::dontCheckToggled);
    forward(m_watchList, &DetailsPane::watchListToggled);
    connect(m_report, &QPushButton::clicked, this, [this] {
        if (m_app) {
            emit reportRequested(m_app);
        }
    });
    connect(m_share, &QPushButton::clicked, this, [this] {
        if (m_app) {
            emit shareRequested(m_app);
        }
    });
    connect(m_buy, &QPushButton::clicked, this, [this] {
        if (m_app) {
            emit buyRequested(m_app);
        }
    });
    showApp(nullptr, false, false);
}

QCheckBox *DetailsPane::addChoice(const QString &title, const QString &description)
{
    auto *box = new QCheckBox(title, m_choices);
    box->setAccessibleDescription(description);
    box->setToolTip(description);
    m_choices->layout()->addWidget(box);
    return box;
}

void DetailsPane::showApp(const AppRef &app, bool memberSignedIn, bool updating)
{
    m_app = app;
    const bool shown = app != nullptr;
    for (QWidget *part : std::initializer_list<QWidget *>{m_icon, m_update, m_notes, m_choices, m_report, m_share}) {
        part->setVisible(shown);
    }
    m_buy->setVisible(shown && !app->deal_id.isEmpty());
    if (!shown) {
        m_name->setText(tr("No app selected"));
        m_versions->clear();
        return;
    }
    m_icon->setIcon(AppIcon::iconFor(*app));
    m_name->setText(app->displayName.isEmpty() ? app->name : app->displayName);
    QStringList versions;
    if (app->isInstalled()) {
        versions << tr("Installed: %1").arg(app->localVersion);
    }
    if (!app->vlVersion.isEmpty() && app->vlVersion != QLatin1String("-")) {
        versions << tr("Newest: %1 (%2)").arg(app->vlVersion, app->vlDate);
    }
    if (!app->deal_price.isEmpty()) {
        versions << tr("Deal price: %1").arg(app->deal_price);
    }
    if (!app->developer.isEmpty() && app->developer != QLatin1String("-")) {
        versions << app->developer;
    }
    m_versions->setText(versions.join(QLatin1Char('\n')));
    const QString notes = app->releaseNotes.isEmpty() || app->releaseNotes == QLatin1String("-") ? app->longDescription
                                                                                                 : app->releaseNotes;
    m_notes->setHtml(notes);

    m_update->setProperty("cancels", updating);
    m_update->setText(updating ? tr("Cancel") : tr("Update"));
    m_update->setEnabled(updating || (app->isOutdated && app->isInstalled()));
    m_update->setAccessibleName(m_update->text());
    m_ignore->setChecked(!app->skippedVersion.isEmpty() && app->skippedVersion != QLatin1String("-") &&
                         app->skippedVersion == app->vlVersion);
    m_ignore->setEnabled(app->isOutdated || m_ignore->isChecked());
    m_current->setChecked(app->isSetLocalVersionToCurrent);
    m_dontCheck->setChecked(app->dontCheckForUpdates);
    m_watchList->setChecked(!app->listname.isEmpty());
    m_watchList->setEnabled(memberSignedIn || !app->isInstalled());
}
