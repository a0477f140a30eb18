#pragma once

// Keeps member passwords encrypted at rest (AES-256-GCM). The key lives in its own file, apart from the
// database, so a copy of the database alone reveals no password.

#include <QByteArray>
#include <QString>

#include <optional>

class SecretBox
{
public:
    // Reads the key file, creating it (mode 0600) with a fresh random key when it does not exist yet.
    static std::optional<SecretBox> open(const QString &keyFile, QString *error);

    QByteArray seal(const QByteArray &plain) const;
    // Nullopt when the text was not sealed with this key or was changed.
    std::optional<QByteArray> unseal(const QByteArray &sealed) const;

    // Random bytes from the system's generator, for tokens.
    static QByteArray randomBytes(int count);

private:
    explicit SecretBox(QByteArray key) : m_key(std::move(key)) {}
    QByteArray m_key;
};
