#include "ui/AppIcon.h"

#include "model/VLApp.h"

#include <QFileInfo>

namespace AppIcon {

QIcon iconFor(const VLApp &app)
{
    for (const QString &path : {app.appIcon, VLApp::catalogueIconPath(app.digestString)}) {
        if (!path.isEmpty() && QFileInfo(path).isFile()) {
            const QIcon icon(path);
            // A file the image readers cannot read gives an icon without sizes or pixmaps.
            if (!icon.availableSizes().isEmpty() || !icon.pixmap(32).isNull()) {
                return icon;
            }
        }
    }
    return programIcon();
}

QIcon programIcon()
{
    static const QIcon icon(QStringLiteral(":/icons/velmora.svg"));
    return icon;
}

} // namespace AppIcon
