#pragma once

// Tells the rest of the process that a setting was changed through VLSettings, so that the preferences, the tray
// and the timers can follow it. One per process; the signal comes on the thread that changed the setting.

#include <QObject>
#include <QString>

class VLSettingsNotifier : public QObject
{
    Q_OBJECT

public:
    static VLSettingsNotifier &instance();

signals:
    // key was written or removed, and the settings file holds the change.
    void changed(const QString &key);

private:
    VLSettingsNotifier() = default;
};
