#pragma once

// The member's watch list from the service; posts "VLULoadWatchListsDoneFlag" when it ends.

#include "services/VLServerList.h"

class VLWatchLists : public VLServerList
{
    Q_OBJECT

public:
    explicit VLWatchLists(QObject *parent = nullptr);
    // body: "id=" and the member id.
    void getWatchlists(const QString &body);
};
