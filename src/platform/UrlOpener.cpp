#include "platform/UrlOpener.h"

#include <QProcess>

namespace UrlOpener {

bool openUrl(const QString &url)
{
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
        return false;
    }
    return QProcess::startDetached(QStringLiteral("xdg-open"), {url});
}

} // namespace UrlOpener
