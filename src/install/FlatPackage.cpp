#include "install/FlatPackage.h"

#include "install/PbzxPayload.h"
#include "install/VLSynchronousTask.h"
#include "install/WorkFolder.h"
#include "platform/FolderReader.h"
#include "platform/NativePath.h"

#include <QFile>
#include <QXmlStreamReader>

namespace {

QString installLocationIn(const QString &packageInfo)
{
    QFile file(packageInfo);
    if (file.open(QIODevice::ReadOnly)) {
        QXmlStreamReader xml(&file);
        while (xml.readNextStartElement()) {
            if (xml.name() == QLatin1String("pkg-info")) {
                const QString location = xml.attributes().value(QLatin1String("install-location")).toString();
                return location.startsWith(QLatin1Char('/')) ? location : QLatin1Char('/') + location;
            }
            xml.skipCurrentElement();
        }
    }
    return QStringLiteral("/");
}

PackagePayload payloadIn(const QString &folder)
{
    return {folder + QStringLiteral("/Payload"), installLocationIn(folder + QStringLiteral("/PackageInfo"))};
}

} // namespace

namespace FlatPackage {

std::optional<QList<PackagePayload>> open(const QString &package, const QString &into)
{
    if (!VLSynchronousTask::task(WorkFolder::tool(QStringLiteral("7zz")), into,
                                 {QStringLiteral("x"), QStringLiteral("-txar"), QStringLiteral("-y"),
                                  QStringLiteral("-bd"), QStringLiteral("-o") + into, package}) ||
        !WorkFolder::holdsOnlyPlainEntries(into)) {
        return std::nullopt;
    }
    // A component package has its payload at the top; a distribution one a folder per component.
    QList<PackagePayload> payloads;
    if (QFile::exists(into + QStringLiteral("/Payload"))) {
        payloads.append(payloadIn(into));
    }
    FolderReader reader(NativePath::encode(into));
    for (const FolderReader::Entry &entry : reader.entries()) {
        const QString component = into + QLatin1Char('/') + NativePath::decode(entry.name);
        if (entry.kind == FolderReader::Kind::Folder && !entry.isLink &&
            QFile::exists(component + QStringLiteral("/Payload"))) {
            payloads.append(payloadIn(component));
        }
    }
    if (payloads.isEmpty()) {
        return std::nullopt;
    }
    return payloads;
}

bool unpackPayload(const QString &payload, const QString &into)
{
    QString archive = payload;
    if (PbzxPayload::isPbzx(payload)) {
        archive = payload + QStringLiteral(".cpio");
        if (!PbzxPayload::decode(payload, archive)) {
            return false;
        }
    }
    // bsdtar strips a leading "/" silently, so the names are read first: an absolute one fails the payload.
    const QString bsdtar = WorkFolder::tool(QStringLiteral("bsdtar"));
    const std::optional<QByteArray> names = VLSynchronousTask::task(bsdtar, into, {QStringLiteral("-tf"), archive});
    return names && WorkFolder::listsContainedNames(*names) &&
           VLSynchronousTask::task(
               bsdtar, into,
               {QStringLiteral("-xpf"), archive, QStringLiteral("--no-same-owner"), QStringLiteral("-C"), into}) &&
           WorkFolder::holdsOnlyPlainEntries(into);
}

} // namespace FlatPackage
