#pragma once

#include "scan/AppList.h"

// The stored records an APP argument names: a display name, a catalogue id, or the path of an installed app
// (relative to the current folder or absolute).
AppList appsNamed(const AppList &apps, const QString &wanted);
