#pragma once

// Uploads an application's property list that could not be read, so the catalogue can learn to read it. The
// reply is not read.

#include "services/VLFormSender.h"

class VLBadPlistSender : public VLFormSender
{
    Q_OBJECT

public:
    explicit VLBadPlistSender(QObject *parent = nullptr);
    // The file's bytes as they are (a binary list too); memberID 0 (nobody signed in) is sent as -1.
    void uploadlist(const QByteArray &plist, int memberID);
};
