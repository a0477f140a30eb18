#include "install/FlatPackage.h"

#include "install/PbzxPayload.h"
#include "install/VLSynchronousTask.h"
#include "install/WorkFolder.h"
#include "platform/FileStatus.h"
#include "platform/FolderReader.h"
#include "platform/Log.h"
#include "platform/NativePath.h"

#include <QDir>
#include <QFile>
#include <QXmlStreamReader>

#include <algorithm>

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

struct PackagePayload
{
    QString payload; // the file, inside the folder the package was opened in
    QString installLocation;
};

PackagePayload payloadIn(const QString &folder)
{
    return {folder + QStringLiteral("/Payload"), installLocationIn(folder + QStringLiteral("/PackageInfo"))};
}

// What every step of one package may write: each is bounded by the size of the package that was downloaded.
struct PackageBounds
{
    qint64 packageBytes;
    const UnpackLimits &limits;
    QString failure; // why the last step failed
};

bool runWithin(PackageBounds &bounds, const QString &tool, const QStringList &args, const QString &folder,
               QByteArray *output = nullptr)
{
    bounds.failure = UnpackBudget(folder, bounds.packageBytes, bounds.limits).run(tool, args, folder, output).failure;
    return bounds.failure.isEmpty();
}

// Unpacks package into the empty folder into; nullopt when it is no readable package or carries no payload.
std::optional<QList<PackagePayload>> open(PackageBounds &bounds, const QString &package, const QString &into)
{
    if (!runWithin(bounds, QStringLiteral("7zz"),
                   {QStringLiteral("x"), QStringLiteral("-txar"), QStringLiteral("-y"), QStringLiteral("-bd"),
                    QStringLiteral("-o") + into, package},
                   into) ||
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

// Unpacks a payload's files into the empty folder into; false on a damaged payload or one that names a file
// outside into.
bool unpackPayload(PackageBounds &bounds, const QString &payload, const QString &into)
{
    QString archive = payload;
    if (PbzxPayload::isPbzx(payload)) {
        archive = payload + QStringLiteral(".cpio");
        const UnpackBudget budget(into, bounds.packageBytes, bounds.limits);
        const PbzxPayload::Decoded decoded = PbzxPayload::decode(payload, archive, budget.maxBytes());
        if (decoded != PbzxPayload::Decoded::Done) {
            bounds.failure = decoded == PbzxPayload::Decoded::TooLarge ? budget.tooLarge() : QString();
            return false;
        }
    }
    // bsdtar strips a leading "/" silently, so the names are read first: an absolute one fails the payload.
    const QString bsdtar = QStringLiteral("bsdtar");
    QByteArray names;
    return runWithin(bounds, bsdtar, {QStringLiteral("-tf"), archive}, into, &names) &&
           WorkFolder::listsContainedNames(names) &&
           runWithin(bounds, bsdtar,
                     {QStringLiteral("-xpf"), archive, QStringLiteral("--no-same-owner"), QStringLiteral("-C"), into},
                     into) &&
           WorkFolder::holdsOnlyPlainEntries(into);
}

// The folders of a volume that packages may install into, as velmora-place's default names them.
const QStringList kApplicationFolders = {QStringLiteral("Applications"), QStringLiteral("Developer/Applications")};

bool isWithin(const QString &path, const QString &folder)
{
    return path == folder || path.startsWith(folder + QLatin1Char('/'));
}

// Splits the files a payload installs at location (relative to the volume) into folders that each go into an
// application folder; false when any of them would land elsewhere. A folder above an application folder ("/" for a
// package without a location) may only hold real folders on the way to one.
bool intoApplicationFolders(const QString &files, const QString &location, const QString &root,
                            QList<UnpackedPayload> &merges)
{
    if (std::any_of(kApplicationFolders.begin(), kApplicationFolders.end(),
                    [&location](const QString &folder) { return isWithin(location, folder); })) {
        merges.append({files, QDir::cleanPath(root + QLatin1Char('/') + location)});
        return true;
    }
    const bool above =
        std::any_of(kApplicationFolders.begin(), kApplicationFolders.end(), [&location](const QString &f) {
            return location.isEmpty() || f.startsWith(location + QLatin1Char('/'));
        });
    if (!above) {
        vlLog(QStringLiteral("package installs outside the applications folders: /%1").arg(location));
        return false;
    }
    FolderReader reader(NativePath::encode(files));
    for (const FolderReader::Entry &entry : reader.entries()) {
        const QString name = NativePath::decode(entry.name);
        const QString path = location.isEmpty() ? name : location + QLatin1Char('/') + name;
        if (entry.kind != FolderReader::Kind::Folder || entry.isLink ||
            !intoApplicationFolders(files + QLatin1Char('/') + name, path, root, merges)) {
            vlLog(QStringLiteral("package installs outside the applications folders: /%1").arg(path));
            return false;
        }
    }
    return true;
}

} // namespace

namespace FlatPackage {

std::optional<QList<UnpackedPayload>> unpack(const QString &package, const QString &workFolder, const QString &root,
                                             const UnpackLimits &limits, QString *failure)
{
    PackageBounds bounds{QFile(package).size(), limits, {}};
    const auto failed = [&bounds, failure] {
        if (failure) {
            *failure = bounds.failure;
        }
        return std::nullopt;
    };
    const QString opened = workFolder + QStringLiteral("/package");
    const auto payloads = WorkFolder::prepare(opened) ? open(bounds, package, opened) : std::nullopt;
    if (!payloads) {
        vlLog(QStringLiteral("error opening package %1").arg(package));
        return failed();
    }
    QList<UnpackedPayload> unpacked;
    for (qsizetype index = 0; index < payloads->size(); ++index) {
        const PackagePayload &payload = payloads->at(index);
        const QString files = workFolder + QStringLiteral("/payload-") + QString::number(index);
        // A location with ".." steps would lead out of the volume it installs on.
        if (!WorkFolder::isContainedName(payload.installLocation.mid(1)) || !WorkFolder::prepare(files) ||
            !unpackPayload(bounds, payload.payload, files)) {
            vlLog(QStringLiteral("error extracting to %1").arg(files));
            return failed();
        }
        if (!intoApplicationFolders(files, QDir::cleanPath(payload.installLocation).mid(1), root, unpacked)) {
            return std::nullopt;
        }
    }
    return unpacked;
}

QString title(const QString &package)
{
    // Given a folder, 7zz would try every file in it.
    const FileStatus status = FileStatus::of(package);
    if (!status.reached() || status.isFolder) {
        return {};
    }
    const std::optional<QByteArray> distribution =
        VLSynchronousTask::task(WorkFolder::tool(QStringLiteral("7zz")), {},
                                {QStringLiteral("e"), QStringLiteral("-txar"), QStringLiteral("-so"),
                                 QStringLiteral("--"), package, QStringLiteral("Distribution")});
    QXmlStreamReader xml(distribution.value_or(QByteArray()));
    while (!xml.atEnd()) {
        if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == QLatin1String("title")) {
            return xml.readElementText().trimmed();
        }
    }
    return {};
}

} // namespace FlatPackage
