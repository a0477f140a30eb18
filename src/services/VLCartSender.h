#pragma once

// Orders one deal: the purchase form ("a=" and its fields as JSON) posted to the deals host's cart. The reply is
// not read.

#include "services/VLFormSender.h"

class VLCartSender : public VLFormSender
{
    Q_OBJECT

public:
    explicit VLCartSender(QObject *parent = nullptr);
    void post(const QString &body);
};
