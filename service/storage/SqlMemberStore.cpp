#include "storage/SqlStores.h"

#include <QCryptographicHash>

namespace {

QString md5Hex(const QString &text)
{
    return QString::fromLatin1(QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Md5).toHex());
}

constexpr const char *memberColumns = "id, email, sealed_password, first_name, last_name, address, city, state, zip,"
                                      " country, created_on, utmz";

Member memberFromRow(const SqlStatement &row)
{
    Member member;
    member.id = row.integer(0);
    member.email = row.text(1);
    member.sealedPassword = row.blob(2);
    member.first = row.text(3);
    member.last = row.text(4);
    member.address = row.text(5);
    member.city = row.text(6);
    member.state = row.text(7);
    member.zip = row.text(8);
    member.country = row.text(9);
    member.createdOn = row.text(10);
    member.utmz = row.text(11);
    return member;
}

bool emailTaken(SqlDatabase &db, const QString &email, qint64 exceptId)
{
    SqlStatement select(db, "SELECT id FROM members WHERE email_folded = ? AND id <> ?");
    return select.bind(1, email.toLower()).bind(2, exceptId).next();
}

} // namespace

std::optional<Member> SqlMemberStore::addMember(const Member &member, QString *error)
{
    SqlTransaction transaction(*m_db);
    if (!transaction.isOpen() || emailTaken(*m_db, member.email, 0)) {
        *error = transaction.isOpen() ? QStringLiteral("An account with this email address already exists")
                                      : m_db->lastError();
        return std::nullopt;
    }
    SqlStatement insert(*m_db,
                        "INSERT INTO members (email, email_folded, email_digest, email_folded_digest, id_digest,"
                        " sealed_password, first_name, last_name, address, city, state, zip, country,"
                        " created_on, utmz, token_digest) VALUES (?, ?, ?, ?, '', ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, '')"
                        " RETURNING id");
    insert.bind(1, member.email).bind(2, member.email.toLower()).bind(3, md5Hex(member.email));
    insert.bind(4, md5Hex(member.email.toLower())).bind(5, member.sealedPassword).bind(6, member.first);
    insert.bind(7, member.last).bind(8, member.address).bind(9, member.city).bind(10, member.state);
    insert.bind(11, member.zip).bind(12, member.country).bind(13, member.createdOn).bind(14, member.utmz);
    const std::optional<qint64> id = insert.insertedId();
    if (!id) {
        *error = m_db->lastError();
        return std::nullopt;
    }
    Member added = member;
    added.id = *id;
    // The watch-list paths name a member by the MD5 of the decimal id, known only once the row exists.
    SqlStatement digest(*m_db, "UPDATE members SET id_digest = ? WHERE id = ?");
    if (!digest.bind(1, md5Hex(QString::number(added.id))).bind(2, added.id).exec() || !transaction.commit()) {
        *error = m_db->lastError();
        return std::nullopt;
    }
    return added;
}

template <typename... Values>
std::optional<Member> SqlMemberStore::memberWhere(const char *condition, const Values &...values)
{
    const QByteArray sql = QByteArray("SELECT ") + memberColumns + " FROM members WHERE " + condition;
    SqlStatement select(*m_db, sql.constData());
    int index = 0;
    (select.bind(++index, values), ...);
    if (!select.next())
        return std::nullopt;
    return memberFromRow(select);
}

std::optional<Member> SqlMemberStore::memberById(qint64 id)
{
    return memberWhere("id = ?", id);
}

std::optional<Member> SqlMemberStore::memberByEmailDigest(const QString &md5Hex)
{
    return memberWhere("email_digest = ? OR email_folded_digest = ?", md5Hex.toLower(), md5Hex.toLower());
}

std::optional<Member> SqlMemberStore::memberByIdDigest(const QString &md5Hex)
{
    return memberWhere("id_digest = ?", md5Hex.toLower());
}

bool SqlMemberStore::updateProfile(const Member &member, QString *error)
{
    SqlTransaction transaction(*m_db);
    if (!transaction.isOpen() || emailTaken(*m_db, member.email, member.id)) {
        *error = transaction.isOpen() ? QStringLiteral("An account with this email address already exists")
                                      : m_db->lastError();
        return false;
    }
    SqlStatement update(*m_db, "UPDATE members SET email = ?, email_folded = ?, email_digest = ?,"
                               " email_folded_digest = ?, first_name = ?, last_name = ?, address = ?, city = ?,"
                               " state = ?, zip = ?, country = ? WHERE id = ?");
    update.bind(1, member.email).bind(2, member.email.toLower()).bind(3, md5Hex(member.email));
    update.bind(4, md5Hex(member.email.toLower())).bind(5, member.first).bind(6, member.last);
    update.bind(7, member.address).bind(8, member.city).bind(9, member.state).bind(10, member.zip);
    update.bind(11, member.country).bind(12, member.id);
    if (!update.exec() || update.changes() != 1 || !transaction.commit()) {
        *error = QStringLiteral("unknown member");
        return false;
    }
    return true;
}

bool SqlMemberStore::setTokenDigest(qint64 memberId, const QString &tokenDigest)
{
    SqlStatement update(*m_db, "UPDATE members SET token_digest = ? WHERE id = ?");
    return update.bind(1, tokenDigest).bind(2, memberId).exec() && update.changes() == 1;
}

QString SqlMemberStore::tokenDigest(qint64 memberId)
{
    SqlStatement select(*m_db, "SELECT token_digest FROM members WHERE id = ?");
    return select.bind(1, memberId).next() ? select.text(0) : QString();
}
