#include "platform/VLSettingsNotifier.h"

VLSettingsNotifier &VLSettingsNotifier::instance()
{
    static VLSettingsNotifier notifier;
    return notifier;
}
