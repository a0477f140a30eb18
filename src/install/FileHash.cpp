#include "install/FileHash.h"

#include "platform/Log.h"

#include <QFile>

#include <openssl/evp.h>

#include <memory>

namespace {

// libcrypto rather than QCryptographicHash: it uses the processor's SHA instructions, and a large download is
// checked several times faster.
const EVP_MD *algorithmForHexLength(qsizetype length)
{
    switch (length) {
    case 32:
        return EVP_md5();
    case 40:
        return EVP_sha1();
    case 64:
        return EVP_sha256();
    default:
        return nullptr;
    }
}

} // namespace

namespace FileHash {

bool matches(const QString &filePath, const QString &hash)
{
    const QString expected = hash.trimmed().toLower();
    const EVP_MD *algorithm = algorithmForHexLength(expected.size());
    if (!algorithm) {
        vlLog(QStringLiteral("unknown file hash %1").arg(hash));
        return false;
    }
    QFile file(filePath);
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    bool read = file.open(QIODevice::ReadOnly) && context && EVP_DigestInit_ex(context.get(), algorithm, nullptr);
    QByteArray chunk(1 << 20, Qt::Uninitialized);
    while (read && !file.atEnd()) {
        const qint64 length = file.read(chunk.data(), chunk.size());
        read = length >= 0 && EVP_DigestUpdate(context.get(), chunk.constData(), size_t(length));
    }
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int digestLength = 0;
    if (!read || !EVP_DigestFinal_ex(context.get(), digest, &digestLength)) {
        vlLog(QStringLiteral("cannot read %1 to check its hash").arg(filePath));
        return false;
    }
    const QByteArray actual(reinterpret_cast<const char *>(digest), qsizetype(digestLength));
    return QString::fromLatin1(actual.toHex()) == expected;
}

} // namespace FileHash
