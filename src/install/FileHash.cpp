#include "install/FileHash.h"

#include "platform/Log.h"

#include <QCryptographicHash>
#include <QFile>

#include <optional>

namespace {

std::optional<QCryptographicHash::Algorithm> algorithmForHexLength(qsizetype length)
{
    switch (length) {
    case 32:
        return QCryptographicHash::Md5;
    case 40:
        return QCryptographicHash::Sha1;
    case 64:
        return QCryptographicHash::Sha256;
    default:
        return std::nullopt;
    }
}

} // namespace

namespace FileHash {

bool matches(const QString &filePath, const QString &hash)
{
    const QString expected = hash.trimmed().toLower();
    const auto algorithm = algorithmForHexLength(expected.size());
    if (!algorithm) {
        vlLog(QStringLiteral("unknown file hash %1").arg(hash));
        return false;
    }
    QFile file(filePath);
    QCryptographicHash digest(*algorithm);
    if (!file.open(QIODevice::ReadOnly) || !digest.addData(&file)) {
        vlLog(QStringLiteral("cannot read %1 to check its hash").arg(filePath));
        return false;
    }
    return QString::fromLatin1(digest.result().toHex()) == expected;
}

} // namespace FileHash
