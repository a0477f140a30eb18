#include "ui/PreferencesDialog.h"

#include "platform/VLSettings.h"
#include "platform/VLSettingsNotifier.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

struct BoolSetting
{
    const char *key;
    const char *title;
    const char *description;
    const char *group;
};

// clang-format off
const BoolSetting kBoolSettings[] = {
    {SettingKey::showStatusItem, QT_TRANSLATE_NOOP("PreferencesDialog", "Show the icon in the tray"), QT_TRANSLATE_NOOP("PreferencesDialog", "Without it Velmora Desktop runs as a normal window"), QT_TRANSLATE_NOOP("PreferencesDialog", "General")},
    {SettingKey::startupItem, QT_TRANSLATE_NOOP("PreferencesDialog", "Start at login"), QT_TRANSLATE_NOOP("PreferencesDialog", "Checks for updates in the background from the moment you log in"), QT_TRANSLATE_NOOP("PreferencesDialog", "General")},
    {SettingKey::showUpdatesNotification, QT_TRANSLATE_NOOP("PreferencesDialog", "Notify when an update has completed"), QT_TRANSLATE_NOOP("PreferencesDialog", "Shows a desktop notification for each finished update"), QT_TRANSLATE_NOOP("PreferencesDialog", "General")},
    {SettingKey::keepDownload, QT_TRANSLATE_NOOP("PreferencesDialog", "Keep a copy of each download"), QT_TRANSLATE_NOOP("PreferencesDialog", "Keeps downloaded files in Downloads/Velmora Desktop"), QT_TRANSLATE_NOOP("PreferencesDialog", "General")},
    {SettingKey::sendAnalytics, QT_TRANSLATE_NOOP("PreferencesDialog", "Send anonymous usage statistics"), QT_TRANSLATE_NOOP("PreferencesDialog", "Helps us learn which features are used"), QT_TRANSLATE_NOOP("PreferencesDialog", "General")},
    {SettingKey::showMAS, QT_TRANSLATE_NOOP("PreferencesDialog", "List App Store copies"), QT_TRANSLATE_NOOP("PreferencesDialog", "Includes apps bought in the App Store among the updates"), QT_TRANSLATE_NOOP("PreferencesDialog", "Updates")},
    {SettingKey::showBeta, QT_TRANSLATE_NOOP("PreferencesDialog", "Offer beta versions"), QT_TRANSLATE_NOOP("PreferencesDialog", "Lists updates to beta versions"), QT_TRANSLATE_NOOP("PreferencesDialog", "Updates")},
    {SettingKey::showPaidUpgrades, QT_TRANSLATE_NOOP("PreferencesDialog", "List paid upgrades"), QT_TRANSLATE_NOOP("PreferencesDialog", "Lists new versions that must be bought"), QT_TRANSLATE_NOOP("PreferencesDialog", "Updates")},
    {SettingKey::showNewerOS, QT_TRANSLATE_NOOP("PreferencesDialog", "List updates that need a newer system"), QT_TRANSLATE_NOOP("PreferencesDialog", "Lists versions this system cannot run yet"), QT_TRANSLATE_NOOP("PreferencesDialog", "Updates")},
    {SettingKey::showNoMatch, QT_TRANSLATE_NOOP("PreferencesDialog", "List apps without a match"), QT_TRANSLATE_NOOP("PreferencesDialog", "Shows installed apps the catalogue does not know"), QT_TRANSLATE_NOOP("PreferencesDialog", "Updates")},
    {SettingKey::sendEmail, QT_TRANSLATE_NOOP("PreferencesDialog", "E-mail me about my watch list"), QT_TRANSLATE_NOOP("PreferencesDialog", "The service writes when a watched app has a new version"), QT_TRANSLATE_NOOP("PreferencesDialog", "Watch list")},
    {SettingKey::addDownloadWL, QT_TRANSLATE_NOOP("PreferencesDialog", "Add updated apps to my watch list"), QT_TRANSLATE_NOOP("PreferencesDialog", "Every app you update joins your watch list"), QT_TRANSLATE_NOOP("PreferencesDialog", "Watch list")},
};
// clang-format on

} // namespace

QStringList PreferencesDialog::shownKeys()
{
    QStringList keys;
    for (const BoolSetting &setting : kBoolSettings) {
        keys << QLatin1String(setting.key);
    }
    return keys;
}

PreferencesDialog::PreferencesDialog(QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("preferences"));
    setWindowTitle(tr("Preferences"));
    auto *layout = new QVBoxLayout(this);
    QHash<QString, QVBoxLayout *> groups;
    const VLSettings settings;
    for (const BoolSetting &setting : kBoolSettings) {
        const QString group = tr(setting.group);
        if (!groups.contains(group)) {
            auto *box = new QGroupBox(group, this);
            groups.insert(group, new QVBoxLayout(box));
            layout->addWidget(box);
        }
        auto *check = new QCheckBox(tr(setting.title), this);
        check->setObjectName(QLatin1String(setting.key));
        check->setToolTip(tr(setting.description));
        check->setAccessibleDescription(tr(setting.description));
        check->setChecked(settings.boolValue(setting.key));
        groups.value(group)->addWidget(check);
        const char *key = setting.key;
        connect(check, &QCheckBox::toggled, this, [this, check, key](bool on) {
            VLSettings writer;
            if (!writer.setValue(QLatin1String(key), on)) {
                QMessageBox::warning(this, tr("The setting could not be saved"), writer.writeError());
                const QSignalBlocker block(check);
                check->setChecked(!on);
            }
        });
    }

    auto *sort = new QComboBox(this);
    sort->setObjectName(QLatin1String(SettingKey::listSort));
    sort->setAccessibleName(tr("Sort the lists by"));
    sort->addItem(tr("Release date"), QStringLiteral("sortDate"));
    sort->addItem(tr("Name"), QStringLiteral("displayName"));
    sort->addItem(tr("Developer"), QStringLiteral("developer"));
    sort->setCurrentIndex(std::max(0, sort->findData(settings.stringValue(SettingKey::listSort))));
    connect(sort, &QComboBox::currentIndexChanged, this,
            [sort] { VLSettings().setValue(QLatin1String(SettingKey::listSort), sort->currentData()); });
    auto *form = new QFormLayout;
    form->addRow(tr("Sort the lists by"), sort);
    layout->addLayout(form);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    buttons->button(QDialogButtonBox::Close)
        ->setAccessibleDescription(tr("Closes the preferences; every change is already saved"));
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
}
