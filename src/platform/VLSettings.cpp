#include "platform/VLSettings.h"

#include "platform/SettingsFile.h"
#include "platform/VLSettingsNotifier.h"

#include <QDir>
#include <QSettings>

namespace {
const QString kDefaultHost = QStringLiteral("http://127.0.0.1:8642");

std::unique_ptr<QSettings> openSettings()
{
    return std::make_unique<QSettings>(SettingsFile::format(), QSettings::UserScope, QStringLiteral("Velmora"),
                                       QStringLiteral("Velmora Desktop"));
}
} // namespace

const std::vector<SettingDefinition> &VLSettings::definitions()
{
    using namespace SettingKey;
    static const std::vector<SettingDefinition> table = {
        {showStatusItem, SettingType::Bool, true},
        {listSort, SettingType::String, QStringLiteral("sortDate")},
        {startupItem, SettingType::Bool, true},
        {keepDownload, SettingType::Bool, false},
        {showMAS, SettingType::Bool, false},
        {showBeta, SettingType::Bool, false},
        {sendEmail, SettingType::Bool, false},
        {addDownloadWL, SettingType::Bool, false},
        {showNoMatch, SettingType::Bool, false},
        {showNewerOS, SettingType::Bool, false},
        {showPaidUpgrades, SettingType::Bool, true},
        {showUpdatesNotification, SettingType::Bool, false},
        {showAdvanced, SettingType::Bool, true},
        {serial, SettingType::String, {}},
        {penguin, SettingType::String, {}},
        {serviceHost, SettingType::String, kDefaultHost},
        {siteHost, SettingType::String, kDefaultHost},
        {dealsHost, SettingType::String, kDefaultHost},
        {analyticsHost, SettingType::String, kDefaultHost},
        {shortenerHost, SettingType::String, kDefaultHost},
        {SettingKey::volumeRoot, SettingType::String, QStringLiteral("/")},
        {osVersion, SettingType::String, {}},
        {escalationCommand, SettingType::String, QStringLiteral("pkexec")},
        {sendAnalytics, SettingType::Bool, true},
        {downloadLimitMB, SettingType::Int, 4096},
        {lastNotified, SettingType::String, {}},
        {searchpaths, SettingType::Array, {}},
        {lastlogin, SettingType::String, {}},
        {firstName, SettingType::String, {}},
        {quitBackGroundWhenStatusItemHidden, SettingType::Bool, {}},
        {QuincyActivated, SettingType::Bool, {}},
        {QuincyAutomaticallySendCrashReports, SettingType::Bool, {}},
        {downloads, SettingType::String, {}},
    };
    return table;
}

const SettingDefinition *VLSettings::definition(const QString &key)
{
    for (const SettingDefinition &d : definitions()) {
        if (key == QLatin1String(d.key)) {
            return &d;
        }
    }
    return nullptr;
}

VLSettings::VLSettings() : m_settings(openSettings()) {}

VLSettings::~VLSettings() = default;

QVariant VLSettings::value(const QString &key) const
{
    if (m_settings->contains(key)) {
        const QVariant stored = m_settings->value(key);
        const SettingDefinition *d = definition(key);
        // INI files keep no types: give a known key back in its own type.
        if (d) {
            switch (d->type) {
            case SettingType::Bool:
                return stored.toBool();
            case SettingType::Int:
                return stored.toLongLong();
            case SettingType::Float:
                return stored.toDouble();
            case SettingType::String:
                return stored.toString();
            case SettingType::Array:
                return stored.toStringList();
            }
        }
        return stored;
    }
    const SettingDefinition *d = definition(key);
    return d ? d->defaultValue : QVariant();
}

bool VLSettings::boolValue(const char *key) const
{
    return value(QLatin1String(key)).toBool();
}

QString VLSettings::stringValue(const char *key) const
{
    return value(QLatin1String(key)).toString();
}

QStringList VLSettings::arrayValue(const char *key) const
{
    return value(QLatin1String(key)).toStringList();
}

bool VLSettings::contains(const QString &key) const
{
    return m_settings->contains(key);
}

QStringList VLSettings::storedKeys() const
{
    return m_settings->allKeys();
}

bool VLSettings::setValue(const QString &key, const QVariant &value)
{
    return commitChange(key, value);
}

bool VLSettings::remove(const QString &key)
{
    return commitChange(key, std::nullopt);
}

void VLSettings::put(const QString &key, const std::optional<QVariant> &value)
{
    if (value) {
        m_settings->setValue(key, *value);
    } else {
        m_settings->remove(key);
    }
}

bool VLSettings::commitChange(const QString &key, const std::optional<QVariant> &value)
{
    // A QSettings keeps its first error for good: after one, a fresh one judges this change.
    if (m_settings->status() != QSettings::NoError) {
        m_settings = openSettings();
    }
    const std::optional<QVariant> before =
        m_settings->contains(key) ? std::optional(m_settings->value(key)) : std::nullopt;
    put(key, value);
    SettingsFile::takeWriteFailure();
    m_settings->sync();
    if (m_settings->status() == QSettings::NoError) {
        emit VLSettingsNotifier::instance().changed(key);
        return true;
    }
    m_writeError = SettingsFile::takeWriteFailure();
    if (m_writeError.isEmpty()) {
        m_writeError = QStringLiteral("the file or its folder cannot be written");
    }
    // The file keeps the old value, and so does every QSettings of this process (they share what is not yet
    // written): the change is neither shown as made nor written by some later sync after all.
    put(key, before);
    return false;
}

QString VLSettings::fileName() const
{
    return m_settings->fileName();
}

void VLSettings::sync()
{
    m_settings->sync();
}

QString VLSettings::hostURL(const char *hostKey, const QString &scheme) const
{
    QString host = stringValue(hostKey).trimmed();
    while (host.endsWith(QLatin1Char('/'))) {
        host.chop(1);
    }
    if (host.startsWith(QLatin1String("http://"), Qt::CaseInsensitive) ||
        host.startsWith(QLatin1String("https://"), Qt::CaseInsensitive)) {
        return host;
    }
    return scheme + QStringLiteral("://") + host;
}

QString VLSettings::volumeRoot() const
{
    QString root = stringValue(SettingKey::volumeRoot);
    if (root.isEmpty()) {
        root = QStringLiteral("/");
    }
    root = QDir::cleanPath(QDir::current().absoluteFilePath(root));
    return root.endsWith(QLatin1Char('/')) ? root : root + QLatin1Char('/');
}
