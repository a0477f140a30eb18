#include "members/SecretBox.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <openssl/evp.h>
#include <openssl/rand.h>

namespace {

constexpr int keySize = 32;
constexpr int nonceSize = 12;
constexpr int tagSize = 16;
constexpr char formatVersion = 1;

struct CipherContext
{
    EVP_CIPHER_CTX *ctx = EVP_CIPHER_CTX_new();
    ~CipherContext() { EVP_CIPHER_CTX_free(ctx); }
};

const unsigned char *bytes(const QByteArray &data)
{
    return reinterpret_cast<const unsigned char *>(data.constData());
}

unsigned char *bytes(QByteArray &data)
{
    return reinterpret_cast<unsigned char *>(data.data());
}

} // namespace

QByteArray SecretBox::randomBytes(int count)
{
    QByteArray out(count, Qt::Uninitialized);
    if (RAND_bytes(bytes(out), count) != 1)
        qFatal("no random bytes from the system");
    return out;
}

std::optional<SecretBox> SecretBox::open(const QString &keyFile, QString *error)
{
    QFile file(keyFile);
    if (file.exists()) {
        if (!file.open(QIODevice::ReadOnly)) {
            *error = QStringLiteral("cannot read key file %1: %2").arg(keyFile, file.errorString());
            return std::nullopt;
        }
        const QByteArray key = QByteArray::fromHex(file.readAll().trimmed());
        if (key.size() != keySize) {
            *error =
                QStringLiteral("key file %1 does not hold a %2-byte hex key").arg(keyFile, QString::number(keySize));
            return std::nullopt;
        }
        return SecretBox(key);
    }
    QDir().mkpath(QFileInfo(keyFile).absolutePath());
    const QByteArray key = randomBytes(keySize);
    QSaveFile out(keyFile);
    if (!out.open(QIODevice::WriteOnly) || !out.setPermissions(QFile::ReadOwner | QFile::WriteOwner) ||
        out.write(key.toHex() + '\n') < 0 || !out.commit()) {
        *error = QStringLiteral("cannot write key file %1: %2").arg(keyFile, out.errorString());
        return std::nullopt;
    }
    return SecretBox(key);
}

QByteArray SecretBox::seal(const QByteArray &plain) const
{
    const QByteArray nonce = randomBytes(nonceSize);
    QByteArray cipher(plain.size() + tagSize, Qt::Uninitialized);
    CipherContext c;
    int length = 0;
    int tail = 0;
    if (!c.ctx || EVP_EncryptInit_ex(c.ctx, EVP_aes_256_gcm(), nullptr, bytes(m_key), bytes(nonce)) != 1 ||
        EVP_EncryptUpdate(c.ctx, bytes(cipher), &length, bytes(plain), int(plain.size())) != 1 ||
        EVP_EncryptFinal_ex(c.ctx, bytes(cipher) + length, &tail) != 1 ||
        EVP_CIPHER_CTX_ctrl(c.ctx, EVP_CTRL_GCM_GET_TAG, tagSize, bytes(cipher) + plain.size()) != 1)
        qFatal("AES-GCM encryption failed");
    return QByteArray(1, formatVersion) + nonce + cipher;
}

std::optional<QByteArray> SecretBox::unseal(const QByteArray &sealed) const
{
    if (sealed.size() < 1 + nonceSize + tagSize || sealed.at(0) != formatVersion)
        return std::nullopt;
    const QByteArray nonce = sealed.mid(1, nonceSize);
    const QByteArray cipher = sealed.mid(1 + nonceSize, sealed.size() - 1 - nonceSize - tagSize);
    QByteArray tag = sealed.right(tagSize);
    QByteArray plain(cipher.size(), Qt::Uninitialized);
    CipherContext c;
    int length = 0;
    int tail = 0;
    if (!c.ctx || EVP_DecryptInit_ex(c.ctx, EVP_aes_256_gcm(), nullptr, bytes(m_key), bytes(nonce)) != 1 ||
        EVP_DecryptUpdate(c.ctx, bytes(plain), &length, bytes(cipher), int(cipher.size())) != 1 ||
        EVP_CIPHER_CTX_ctrl(c.ctx, EVP_CTRL_GCM_SET_TAG, tagSize, bytes(tag)) != 1 ||
        EVP_DecryptFinal_ex(c.ctx, bytes(plain) + length, &tail) != 1)
        return std::nullopt;
    return plain;
}
