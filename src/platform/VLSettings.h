#pragma once

// The program's settings, typed like the user defaults they stand for, with their defaults from one table.
// Stored with QSettings (INI) at $XDG_CONFIG_HOME/Velmora/Velmora Desktop.ini; safe to use from any thread.

#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <optional>
#include <vector>

class QSettings;

namespace SettingKey {
// Registered at start with defaults.
inline constexpr char showStatusItem[] = "showStatusItem";
inline constexpr char listSort[] = "listSort";
inline constexpr char startupItem[] = "startupItem";
inline constexpr char keepDownload[] = "keepDownload";
inline constexpr char showMAS[] = "showMAS";
inline constexpr char showBeta[] = "showBeta";
inline constexpr char sendEmail[] = "sendEmail";
inline constexpr char addDownloadWL[] = "addDownloadWL";
inline constexpr char showNoMatch[] = "showNoMatch";
inline constexpr char showNewerOS[] = "showNewerOS";
inline constexpr char showPaidUpgrades[] = "showPaidUpgrades";
inline constexpr char showUpdatesNotification[] = "showUpdatesNotification";
inline constexpr char showAdvanced[] = "showAdvanced";
inline constexpr char serial[] = "serial";
inline constexpr char penguin[] = "penguin";
// Where the program finds the things a Mac has in fixed places.
inline constexpr char serviceHost[] = "serviceHost";
inline constexpr char siteHost[] = "siteHost";
inline constexpr char dealsHost[] = "dealsHost";
inline constexpr char analyticsHost[] = "analyticsHost";
inline constexpr char shortenerHost[] = "shortenerHost";
inline constexpr char volumeRoot[] = "volumeRoot";
inline constexpr char osVersion[] = "osVersion";
inline constexpr char escalationCommand[] = "escalationCommand";
// Usage analytics may be turned off.
inline constexpr char sendAnalytics[] = "sendAnalytics";
// The most a download may bring, in megabytes, when the catalogue does not give its size.
inline constexpr char downloadLimitMB[] = "downloadLimitMB";
// Used without a registered default.
inline constexpr char lastNotified[] = "lastNotified";
inline constexpr char searchpaths[] = "searchpaths";
inline constexpr char lastlogin[] = "lastlogin";
inline constexpr char firstName[] = "firstName";
inline constexpr char quitBackGroundWhenStatusItemHidden[] = "quitBackGroundWhenStatusItemHidden";
// Crash reporting: on unless "QuincyActivated" is stored NO; reports go out by themselves only with
// "QuincyAutomaticallySendCrashReports" YES.
inline constexpr char QuincyActivated[] = "QuincyActivated";
inline constexpr char QuincyAutomaticallySendCrashReports[] = "QuincyAutomaticallySendCrashReports";
inline constexpr char downloads[] = "downloads";
} // namespace SettingKey

enum class SettingType { Bool, Int, Float, String, Array };

struct SettingDefinition
{
    const char *key;
    SettingType type;
    QVariant defaultValue; // invalid: no registered default
};

class VLSettings
{
public:
    VLSettings();
    ~VLSettings();

    // Every known key with its type and registered default, in table order.
    static const std::vector<SettingDefinition> &definitions();
    static const SettingDefinition *definition(const QString &key);

    // The stored value, else the registered default, else an invalid QVariant.
    QVariant value(const QString &key) const;
    bool boolValue(const char *key) const;
    QString stringValue(const char *key) const;
    QStringList arrayValue(const char *key) const;
    bool contains(const QString &key) const;
    QStringList storedKeys() const;

    // Both write the settings file at once and tell VLSettingsNotifier; false when it could not be written in full:
    // the file then stays as it was, the change is dropped, and writeError() says why.
    bool setValue(const QString &key, const QVariant &value);
    bool remove(const QString &key);
    QString writeError() const { return m_writeError; }
    void sync();
    QString fileName() const;

    // A host setting as a base URL: "host:port" takes the given scheme, "http(s)://host:port" keeps its own.
    QString hostURL(const char *hostKey, const QString &scheme = QStringLiteral("http")) const;
    // The local-domain root ("/" by default) as a clean absolute path with a trailing "/", so that a path under it
    // is spelled the same whichever way the setting was written.
    QString volumeRoot() const;

private:
    // value nullopt: remove the key.
    bool commitChange(const QString &key, const std::optional<QVariant> &value);
    void put(const QString &key, const std::optional<QVariant> &value);

    std::unique_ptr<QSettings> m_settings;
    QString m_writeError;
};
