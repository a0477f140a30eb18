#include "platform/SystemFacts.h"

#include <QSysInfo>

#include <unistd.h>

namespace SystemFacts {

QString operatingSystemVersionString()
{
    return QSysInfo::prettyProductName();
}

qint64 physicalMemoryMiB()
{
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGESIZE);
    return pages > 0 && pageSize > 0 ? (qint64(pages) * pageSize) >> 20 : 0;
}

int processorCount()
{
    const long count = sysconf(_SC_NPROCESSORS_ONLN);
    return count > 0 ? int(count) : 1;
}

} // namespace SystemFacts
