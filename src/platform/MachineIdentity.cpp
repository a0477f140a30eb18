#include "platform/MachineIdentity.h"

#include <QCryptographicHash>
#include <QFile>
#include <QMessageAuthenticationCode>

namespace {

QByteArray readTrimmed(const char *path)
{
    QFile file(QString::fromLatin1(path));
    return file.open(QIODevice::ReadOnly) ? file.read(4096).trimmed() : QByteArray();
}

// Placeholders that firmware writes where no serial was set say nothing about the machine.
bool isPlaceholder(const QByteArray &serial)
{
    const QByteArray lower = serial.toLower();
    return lower.isEmpty() || lower.contains("to be filled") || lower.contains("default string") ||
           lower.contains("not specified") || lower.contains("system serial") || lower == "0" || lower == "none";
}

} // namespace

QString newStringWithMachineSerialNumber()
{
    const QByteArray serial = readTrimmed("/sys/class/dmi/id/product_serial");
    if (!isPlaceholder(serial)) {
        return QString::fromLatin1(serial);
    }
    const QByteArray machineId = readTrimmed("/etc/machine-id");
    if (machineId.isEmpty()) {
        return {};
    }
    // machine-id(5): an application-specific id is a keyed hash of the machine id, so the id itself never leaves.
    const QByteArray key = QByteArrayLiteral("velmora-desktop-serial-6");
    return QString::fromLatin1(
        QMessageAuthenticationCode::hash(machineId, key, QCryptographicHash::Sha256).toHex().left(32));
}
