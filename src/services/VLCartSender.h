#pragma once

// Orders one deal: the purchase form ("a=" and its fields as JSON) posted to the deals host's cart. The reply is
// not read.

#include "services/VLFormSender.h"

class VLMemberAccount;

class VLCartSender : public VLFormSender
{
    Q_OBJECT

public:
    explicit VLCartSender(QObject *parent = nullptr);
    void post(const QString &body);

    // The order of one deal: the form's postal address, its member id, and the deal.
    static QString orderBody(const VLMemberAccount &form, qint64 promoID);
};
