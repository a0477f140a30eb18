#include "platform/DesktopOpener.h"

#include "platform/Log.h"

#include <QProcess>

namespace DesktopOpener {

bool open(const QString &path)
{
    if (QProcess::startDetached(QStringLiteral("xdg-open"), {path})) {
        return true;
    }
    vlLog(QStringLiteral("cannot open %1 with the desktop's opener").arg(path));
    return false;
}

} // namespace DesktopOpener
