#include "install/KeptDownload.h"

#include "install/AuthHelper.h"
#include "platform/Log.h"
#include "platform/VLSettings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace KeptDownload {

QString copyFolder(const VLSettings &settings, const QDate &today)
{
    QString base = settings.stringValue(SettingKey::downloads);
    if (base.isEmpty()) {
        base = QDir::homePath() + QStringLiteral("/Downloads/Velmora Desktop/");
    }
    // A base ending in "/" gets one more: the doubled separator is harmless and the folder's name has always had it.
    if (base.endsWith(QLatin1Char('/'))) {
        base += QLatin1Char('/');
    }
    const QString separator = base.endsWith(QLatin1Char('/')) ? QString() : QStringLiteral("/");
    return base + separator + QStringLiteral("Velmora Desktop ") + today.toString(QStringLiteral("yyyy-MM-dd")) +
           QLatin1Char('/');
}

void keep(const QString &file, const VLSettings &settings)
{
    QString folder = copyFolder(settings, QDate::currentDate());
    if (!QDir().mkpath(folder)) {
        folder = QDir::homePath() + QStringLiteral("/Downloads/");
    }
    const QString target = folder + QFileInfo(file).fileName();
    if (QFileInfo::exists(target) || QFileInfo(target).isSymLink()) {
        return;
    }
    if (QFileInfo(folder).isWritable()) {
        if (QFile::copy(file, target)) {
            vlLog(QStringLiteral("saved copy of download to Downloads folder"));
        }
    } else if (AuthHelper().copyPathWithForcedAuthentication(file, target)) {
        vlLog(QStringLiteral("saved auth  copy of download to Downloads folder"));
    }
}

} // namespace KeptDownload
