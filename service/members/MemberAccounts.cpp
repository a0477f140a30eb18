#include "members/MemberAccounts.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QRegularExpression>

#include <openssl/crypto.h>

namespace {

bool sameText(const QByteArray &a, const QByteArray &b)
{
    return a.size() == b.size() && CRYPTO_memcmp(a.constData(), b.constData(), size_t(a.size())) == 0;
}

} // namespace

namespace MemberAccounts {

bool isValidEmail(const QString &email)
{
    static const QRegularExpression pattern(QStringLiteral("^[A-Z0-9a-z._%+-]+@([A-Za-z0-9-]+\\.)+[A-Za-z]{2,}$"));
    return email.size() <= 254 && pattern.match(email).hasMatch();
}

std::optional<Member> create(MemberStore &store, const SecretBox &secrets, const NewMember &fields, QString *error)
{
    if (!isValidEmail(fields.email)) {
        *error = QStringLiteral("Invalid Email address");
        return std::nullopt;
    }
    if (fields.password.isEmpty() || fields.first.trimmed().isEmpty() || fields.last.trimmed().isEmpty()) {
        *error = QStringLiteral("Please enter required account info");
        return std::nullopt;
    }
    Member member;
    member.email = fields.email;
    member.sealedPassword = secrets.seal(fields.password.toUtf8());
    member.first = fields.first.trimmed();
    member.last = fields.last.trimmed();
    member.createdOn = QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    member.utmz = fields.utmz;
    return store.addMember(member, error);
}

std::optional<QString> password(const SecretBox &secrets, const Member &member)
{
    const auto plain = secrets.unseal(member.sealedPassword);
    return plain ? std::optional(QString::fromUtf8(*plain)) : std::nullopt;
}

bool passwordDigestMatches(const SecretBox &secrets, const Member &member, const QString &md5Hex)
{
    const auto plain = secrets.unseal(member.sealedPassword);
    return plain &&
           sameText(QCryptographicHash::hash(*plain, QCryptographicHash::Md5).toHex(), md5Hex.toLower().toLatin1());
}

QString newToken()
{
    return QString::fromLatin1(SecretBox::randomBytes(16).toHex());
}

QString tokenDigest(const QString &token)
{
    return QString::fromLatin1(QCryptographicHash::hash(token.toUtf8(), QCryptographicHash::Sha256).toHex());
}

bool tokenMatches(MemberStore &store, qint64 memberId, const QString &token)
{
    const QString stored = store.tokenDigest(memberId);
    return !stored.isEmpty() && !token.isEmpty() && sameText(stored.toLatin1(), tokenDigest(token).toLatin1());
}

QJsonObject loginReply(const Member &member, const QString &password)
{
    return {
        {QStringLiteral("id"), member.id},
        {QStringLiteral("first"), member.first},
        {QStringLiteral("last"), member.last},
        {QStringLiteral("address"), member.address},
        {QStringLiteral("city"), member.city},
        {QStringLiteral("state"), member.state},
        {QStringLiteral("zip"), member.zip},
        {QStringLiteral("country"), member.country},
        {QStringLiteral("created_on"), member.createdOn},
        {QStringLiteral("email"), QString::fromLatin1(member.email.toUtf8().toBase64())},
        {QStringLiteral("password"), QString::fromLatin1(password.toUtf8().toBase64())},
    };
}

} // namespace MemberAccounts
