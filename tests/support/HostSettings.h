#pragma once

// Sends the requests of each host setting named to base ("http://127.0.0.1:PORT"); false when one was not stored.

#include "platform/VLSettings.h"

#include <initializer_list>

inline bool pointHostsAt(const QString &base,
                         std::initializer_list<const char *> keys = {SettingKey::serviceHost, SettingKey::siteHost,
                                                                     SettingKey::analyticsHost})
{
    VLSettings settings;
    bool stored = true;
    for (const char *key : keys) {
        stored = settings.setValue(QString::fromLatin1(key), base) && stored;
    }
    settings.sync();
    return stored;
}
