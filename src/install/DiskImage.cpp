#include "install/DiskImage.h"

#include "install/WorkFolder.h"
#include "platform/FolderReader.h"
#include "platform/NativePath.h"

#include <QFile>

#include <cstdio>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

struct Volume
{
    const char *type;
    bool hasRootFolder; // 7zz names the volume's root folder first for these
};

constexpr Volume kVolumes[] = {{"HFS", true}, {"APFS", true}, {"Iso", false}};

bool isUDIF(const QString &image)
{
    QFile file(image);
    return file.open(QIODevice::ReadOnly) && file.size() >= 512 && file.seek(file.size() - 512) &&
           file.read(4) == "koly";
}

// What every step of one image may write: each is bounded by the size of the image that was downloaded.
struct ImageBounds
{
    qint64 imageBytes;
    const UnpackLimits &limits;
    UnpackRun last; // how the last step ended
};

// "yes" answers the licence agreement some images show before they open. -snld keeps links with ".." steps that
// stay inside the volume (bundles have them); 7zz still refuses one that leads out, and the image with it.
bool sevenZipExtract(ImageBounds &bounds, const QString &type, const QString &archive, const QString &into)
{
    bounds.last = UnpackBudget(into, bounds.imageBytes, bounds.limits)
                      .run(QStringLiteral("7zz"),
                           {QStringLiteral("x"), QStringLiteral("-t") + type, QStringLiteral("-y"),
                            QStringLiteral("-bd"), QStringLiteral("-snld"), QStringLiteral("-o") + into, archive},
                           into, nullptr, QByteArray("yes\n"));
    return bounds.last.failure.isEmpty();
}

// 7zz writes an absolute link's target as a path inside the folder it extracts into; on the volume it named the
// same path from the top of the system, so it is pointed there again.
bool restoreAbsoluteLinks(const QString &folder)
{
    const fs::path root = NativePath::encode(folder).toStdString();
    const std::string prefix = root.string() + '/';
    std::error_code error;
    for (auto it = fs::recursive_directory_iterator(root, error); !error && it != fs::recursive_directory_iterator();
         it.increment(error)) {
        if (!it->is_symlink(error)) {
            continue;
        }
        const std::string target = fs::read_symlink(it->path(), error).string();
        if (!error && target.starts_with(prefix)) {
            fs::remove(it->path(), error);
            fs::create_symlink(target.substr(prefix.size() - 1), it->path(), error);
        }
    }
    return !error;
}

// The largest partition of an unpacked UDIF wrapper: the volume.
QString largestFile(const QString &folder)
{
    FolderReader reader(NativePath::encode(folder));
    QString largest;
    qint64 largestSize = -1;
    for (const FolderReader::Entry &entry : reader.entries()) {
        const QString path = folder + QLatin1Char('/') + NativePath::decode(entry.name);
        const qint64 size = QFile(path).size();
        if (entry.kind == FolderReader::Kind::File && !entry.isLink && size > largestSize) {
            largest = path;
            largestSize = size;
        }
    }
    return largest;
}

// Moves what staging holds to mountPoint: the volume's root folder itself, when 7zz named one.
bool lift(const QString &staging, const QString &mountPoint, bool hasRootFolder)
{
    FolderReader reader(NativePath::encode(staging));
    const std::vector<FolderReader::Entry> entries = reader.entries();
    QString source = staging;
    if (hasRootFolder && entries.size() == 1 && entries.front().kind == FolderReader::Kind::Folder &&
        !entries.front().isLink) {
        source = staging + QLatin1Char('/') + NativePath::decode(entries.front().name);
    }
    return WorkFolder::remove(mountPoint) &&
           std::rename(NativePath::encode(source).constData(), NativePath::encode(mountPoint).constData()) == 0;
}

bool attachVolume(ImageBounds &bounds, const QString &volume, const QString &mountPoint)
{
    const QString staging = mountPoint + QStringLiteral(".volume");
    for (const Volume &kind : kVolumes) {
        if (!WorkFolder::prepare(staging)) {
            return false;
        }
        if (sevenZipExtract(bounds, QLatin1String(kind.type), volume, staging) &&
            WorkFolder::holdsOnlyPlainEntries(staging) && restoreAbsoluteLinks(staging)) {
            const bool lifted = lift(staging, mountPoint, kind.hasRootFolder);
            WorkFolder::remove(staging);
            return lifted;
        }
        WorkFolder::remove(staging);
        // A volume of another kind would be written under the same budget.
        if (bounds.last.overBudget) {
            return false;
        }
    }
    return false;
}

} // namespace

namespace DiskImage {

bool attach(const QString &image, const QString &mountPoint, const UnpackLimits &limits, QString *failure)
{
    ImageBounds bounds{QFile(image).size(), limits, {}};
    bool attached = false;
    if (!isUDIF(image)) {
        attached = attachVolume(bounds, image, mountPoint);
    } else {
        const QString partitions = mountPoint + QStringLiteral(".partitions");
        attached = WorkFolder::prepare(partitions) &&
                   sevenZipExtract(bounds, QStringLiteral("dmg"), image, partitions) &&
                   attachVolume(bounds, largestFile(partitions), mountPoint);
        WorkFolder::remove(partitions);
    }
    if (!attached && failure) {
        *failure = bounds.last.failure;
    }
    return attached;
}

} // namespace DiskImage
