#include "platform/DesktopOpener.h"

#include <QProcess>
#include <QStandardPaths>

namespace DesktopOpener {

bool hasDisplay()
{
    return !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

bool open(const QString &path)
{
    const QString opener = QStandardPaths::findExecutable(QStringLiteral("xdg-open"));
    return !opener.isEmpty() && QProcess::startDetached(opener, {path});
}

} // namespace DesktopOpener
