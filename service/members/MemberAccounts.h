#pragma once

// Member rules shared by the HTTP side and the operator's commands: creating accounts, checking the
// legacy log-in's password digest, cookie tokens, and the log-in reply.

#include "members/SecretBox.h"
#include "storage/Storage.h"

namespace MemberAccounts {

bool isValidEmail(const QString &email);

struct NewMember
{
    QString email, password, first, last, utmz;
};
std::optional<Member> create(MemberStore &store, const SecretBox &secrets, const NewMember &fields, QString *error);

std::optional<QString> password(const SecretBox &secrets, const Member &member);
// The program sends the lower-case hex MD5 of the password; compared in constant time.
bool passwordDigestMatches(const SecretBox &secrets, const Member &member, const QString &md5Hex);

// A fresh cookie token (hex) and the digest the store keeps of it.
QString newToken();
QString tokenDigest(const QString &token);
bool tokenMatches(MemberStore &store, qint64 memberId, const QString &token);

// The log-in reply: profile fields, and the e-mail and password base64-encoded (as the program expects).
QJsonObject loginReply(const Member &member, const QString &password);

} // namespace MemberAccounts
