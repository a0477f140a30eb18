#include "scan/UpdateNotices.h"

#include "model/DateDescription.h"
#include "platform/Log.h"
#include "platform/VLSettings.h"

#include <QCoreApplication>
#include <QLocale>

namespace UpdateNotices {

std::optional<QDate> catalogueDate(const QString &vlDate)
{
    static const QLocale usEnglish(QLocale::English, QLocale::UnitedStates);
    const QString text = vlDate.trimmed();
    QDate date = usEnglish.toDate(text, QStringLiteral("MMM d, yyyy"));
    if (!date.isValid()) {
        date = QDate::fromString(text, Qt::ISODate);
    }
    return date.isValid() ? std::optional<QDate>(date) : std::nullopt;
}

int countNumberOfUpdatesFoundSinceLastScan(const AppList &outdated)
{
    const QString lastNotified = VLSettings().stringValue(SettingKey::lastNotified);
    const std::optional<QDateTime> since = dateFromDescription(lastNotified);
    if (lastNotified.isEmpty() || !since) {
        return int(outdated.size());
    }
    int count = 0;
    for (const AppRef &app : outdated) {
        const std::optional<QDate> date = catalogueDate(app->vlDate);
        if (date && date->startOfDay(Qt::UTC) > *since) {
            vlLog(QStringLiteral("found update since last notification %1 - %2 - %3")
                      .arg(app->displayName, app->vlDate, lastNotified));
            ++count;
        }
    }
    return count;
}

void rememberNotified()
{
    VLSettings().setValue(QString::fromLatin1(SettingKey::lastNotified), currentDateDescription());
}

Notice backgroundNotice(int count)
{
    if (count == 1) {
        return {QCoreApplication::translate("UpdateNotices", "%1 new update is available").arg(count),
                QCoreApplication::translate("UpdateNotices", "Update your app now"),
                QCoreApplication::translate("UpdateNotices", "View")};
    }
    return {QCoreApplication::translate("UpdateNotices", "%1 new updates are available").arg(count),
            QCoreApplication::translate("UpdateNotices", "Update your apps now"),
            QCoreApplication::translate("UpdateNotices", "View")};
}

} // namespace UpdateNotices
