#include "services/VLWatchLists.h"

#include "platform/VLSettings.h"

#include <QCoreApplication>

VLWatchLists::VLWatchLists(QObject *parent)
    : VLServerList(
          {QStringLiteral("Getting Watch List..."), QStringLiteral("error 2 initializing watch list app data - %1"),
           QStringLiteral("error initializing watch list data from server"),
           QCoreApplication::translate("VLWatchLists", "There was an error receiving watch lists."),
           QStringLiteral("Watch Lists Connection failed! Error - %1"), QStringLiteral("VLULoadWatchListsDoneFlag")},
          parent)
{
}

void VLWatchLists::getWatchlists(const QString &body)
{
    const QUrl url(VLSettings().hostURL(SettingKey::serviceHost, QStringLiteral("https")) +
                   QStringLiteral("/vld6watchlists/getwatchlists"));
    WebRequest request = WebRequest::postForm(url, body.toLatin1(), QString(), WebRequest::Kind::List);
    request.timeoutMs = 100 * 1000;
    fetch(request);
}
