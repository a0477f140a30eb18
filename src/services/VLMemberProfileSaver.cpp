#include "services/VLMemberProfileSaver.h"

#include "platform/VLSettings.h"

VLMemberProfileSaver::VLMemberProfileSaver(QObject *parent)
    : VLFormSender(QStringLiteral("Save Profile Connection failed! Error - %1"), parent)
{
}

void VLMemberProfileSaver::saveProfile(const QString &body)
{
    postForm(SettingKey::serviceHost, QStringLiteral("https"), QStringLiteral("/vld6member/save-profile"), body, 60);
}
