#include "services/BadPlistReports.h"

#include "platform/AppPaths.h"
#include "platform/FileBytes.h"
#include "platform/Log.h"
#include "platform/VLSettings.h"
#include "services/VLBadPlistSender.h"

#include <QCryptographicHash>
#include <QFile>
#include <QMutex>
#include <QSet>

namespace BadPlistReports {

namespace {

// A property list larger than this is no list a bundle ships.
constexpr qint64 kMaxPlistBytes = 1024 * 1024;

// Digests on their way: a scan that meets the same file while its upload runs does not send it again.
QMutex pendingMutex;
QSet<QByteArray> pending;

QSet<QByteArray> sentDigests()
{
    QFile file(sentListPath());
    QSet<QByteArray> digests;
    if (file.open(QIODevice::ReadOnly)) {
        for (const QByteArray &line : file.readAll().split('\n')) {
            if (!line.isEmpty()) {
                digests.insert(line);
            }
        }
    }
    return digests;
}

void rememberSent(const QByteArray &digest)
{
    QFile file(sentListPath());
    if (!file.open(QIODevice::Append) || file.write(digest + '\n') != digest.size() + 1) {
        vlLog(QStringLiteral("cannot remember a sent plist report in %1").arg(file.fileName()));
    }
}

} // namespace

QString sentListPath()
{
    return AppPaths::dataFolder() + QStringLiteral("/sent-plist-reports");
}

void send(const QStringList &paths, int memberID, QObject *parent)
{
    if (!VLSettings().boolValue(SettingKey::sendAnalytics)) {
        return;
    }
    const QSet<QByteArray> sent = sentDigests();
    for (const QString &path : paths) {
        const FileBytes::Result file = FileBytes::read(path, kMaxPlistBytes);
        if (!file.bytes) {
            continue;
        }
        const QByteArray digest = QCryptographicHash::hash(*file.bytes, QCryptographicHash::Sha256).toHex();
        {
            const QMutexLocker lock(&pendingMutex);
            if (sent.contains(digest) || pending.contains(digest)) {
                continue;
            }
            pending.insert(digest);
        }
        auto *sender = new VLBadPlistSender(parent);
        QObject::connect(sender, &VLServiceConnection::done, sender, [sender, digest] {
            if (sender->serverResonse >= 200 && sender->serverResonse < 300) {
                rememberSent(digest);
            }
            const QMutexLocker lock(&pendingMutex);
            pending.remove(digest);
        });
        sender->releaseWhenDone();
        sender->uploadlist(*file.bytes, memberID);
    }
}

} // namespace BadPlistReports
