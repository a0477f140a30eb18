#include "install/UpdateLock.h"

#include "platform/AppPaths.h"
#include "platform/FileLock.h"

#include <QDir>

#include <algorithm>

namespace UpdateLock {

QString path(const QString &digest)
{
    const QString temporary = AppPaths::privateTempFolder();
    if (temporary.isEmpty() || digest.isEmpty() || digest.contains(QLatin1Char('/'))) {
        return {};
    }
    return temporary + QLatin1Char('/') + digest + QStringLiteral(".lock");
}

bool anyHeld()
{
    const QString temporary = AppPaths::privateTempFolder();
    if (temporary.isEmpty()) {
        return true;
    }
    const QStringList names = QDir(temporary).entryList({QStringLiteral("*.lock")}, QDir::Files | QDir::Hidden);
    return std::any_of(names.cbegin(), names.cend(), [&temporary](const QString &name) {
        FileLock lock(temporary + QLatin1Char('/') + name);
        return !lock.lock(0);
    });
}

} // namespace UpdateLock
