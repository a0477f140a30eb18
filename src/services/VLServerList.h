#pragma once

// A list the service sends as an XML property list {"entries": [...]}: the watch list, the purchases, the
// promotions. The reply's dictionary becomes entriesDictionary and its "entries" serverApps; a reply that cannot
// be read leaves serverApps empty, logs why and (for the member's lists) tells the user. Whatever happens, the
// list's done notification is posted when the exchange ends.

#include "services/VLServiceConnection.h"

#include <QVariantList>
#include <QVariantMap>

class VLServerList : public VLServiceConnection
{
    Q_OBJECT

public:
    QVariantMap entriesDictionary;
    QVariantList serverApps;

protected:
    struct Texts
    {
        QString startLine;      // logged when the request goes out; "" logs nothing
        QString unreadableLine; // "%1": the reader's reason
        QString exceptionLine;  // a property list without its entries
        QString alertMessage;   // "" tells the user nothing
        QString failureLine;    // "%1": the connection's error
        QString doneFlag;       // the notification posted at the end
    };

    VLServerList(const Texts &texts, QObject *parent);
    void fetch(WebRequest request);

    static const QByteArray &listUserAgent();

private:
    void connectionDidFinishLoading() override;
    void didFailWithError() override;
    void showAlert() const;

    Texts m_texts;
};
