#pragma once

// Posts the member's profile ("a=" and the profile as JSON) to the service. The reply is not read.

#include "services/VLFormSender.h"

class VLMemberProfileSaver : public VLFormSender
{
    Q_OBJECT

public:
    explicit VLMemberProfileSaver(QObject *parent = nullptr);
    void saveProfile(const QString &body);
};
