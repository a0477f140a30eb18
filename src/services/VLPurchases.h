#pragma once

// The member's purchase history from the service; posts "VLULoadPurchasesDoneFlag" when it ends.

#include "services/VLServerList.h"

class VLPurchases : public VLServerList
{
    Q_OBJECT

public:
    explicit VLPurchases(QObject *parent = nullptr);
    // body: "id=" and the member id.
    void getPurchases(const QString &body);
};
