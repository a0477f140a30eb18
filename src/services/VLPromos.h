#pragma once

// The promotions (deals) list from the deals host; posts "VLULoadPromosDoneFlag" when it ends, success or not.

#include "services/VLServerList.h"

class VLPromos : public VLServerList
{
    Q_OBJECT

public:
    explicit VLPromos(QObject *parent = nullptr);
    // what: the list's name ("promos"); the host has one list.
    void getPromos(const QString &what);
};
