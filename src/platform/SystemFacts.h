#pragma once

// What the log-in request tells the service about the machine.

#include <QString>

namespace SystemFacts {
// The operating system's name and version, as the system describes itself.
QString operatingSystemVersionString();
// Physical memory in MiB.
qint64 physicalMemoryMiB();
int processorCount();
} // namespace SystemFacts
