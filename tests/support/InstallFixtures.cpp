#include "support/InstallFixtures.h"

#include "support/PlistFiles.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QtEndian>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace InstallFixtures {

namespace {

// value's last size bytes, most significant first.
QByteArray bigEndian(quint64 value, int size = 8)
{
    QByteArray bytes(8, 0);
    qToBigEndian(value, bytes.data());
    return bytes.right(size);
}

} // namespace

bool run(const QString &program, const QStringList &args, const QString &folder, const QString &outFile,
         const QString &inFile)
{
    QProcess process;
    process.setWorkingDirectory(folder);
    process.setStandardOutputFile(outFile.isEmpty() ? QProcess::nullDevice() : outFile);
    process.setStandardInputFile(inFile.isEmpty() ? QProcess::nullDevice() : inFile);
    process.start(program, args);
    const bool ok =
        process.waitForFinished(120000) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    if (!ok) {
        qWarning() << program << args << "failed:" << process.errorString() << process.readAllStandardError();
    }
    return ok;
}

void makeAppTree(const QString &root)
{
    PlistFiles::makeBundle(root + QStringLiteral("/Foo.app"),
                           PlistFiles::info(QStringLiteral("com.example.foo"), QStringLiteral("2.0")));
    const QString tool = root + QStringLiteral("/Foo.app/Contents/MacOS/foo");
    PlistFiles::writeFile(tool, "#!/bin/sh\n");
    QFile::setPermissions(tool, QFile::permissions(tool) | QFile::ExeOwner | QFile::ExeGroup | QFile::ExeOther);
    // A ".." step that stays inside the bundle, as bundles have them.
    QFile::link(QStringLiteral("../Contents/MacOS"), root + QStringLiteral("/Foo.app/Contents/Current"));
    QFile::link(QStringLiteral("/Applications"), root + QStringLiteral("/Applications"));
    PlistFiles::writeFile(root + QStringLiteral("/__MACOSX/._Foo.app"), "resource fork");
}

QStringList describe(const QString &folder)
{
    QStringList entries;
    QDirIterator it(folder, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QFileInfo info(it.next());
        const QString path = info.filePath().mid(folder.size() + 1);
        if (info.isSymLink()) {
            char target[4096] = {};
            const ssize_t size = readlink(QFile::encodeName(info.filePath()).constData(), target, sizeof target - 1);
            const QString text = QString::fromUtf8(target, size > 0 ? size : 0);
            entries.append(path + QStringLiteral(" -> ") + text);
        } else if (info.isDir()) {
            entries.append(path + QLatin1Char('/'));
        } else {
            entries.append(path + (info.isExecutable() ? QStringLiteral("*") : QString()));
        }
    }
    entries.sort();
    return entries;
}

bool makeFlatPackage(const QString &root, const QString &package, const QString &installLocation, bool pbzx)
{
    const QString flat = package + u".flat";
    const QString cpio = package + u".cpio";
    const QString payload = flat + u"/Foo.pkg/Payload";
    const QString location = installLocation.isEmpty() ? QString() : u" install-location=\"%1\""_s.arg(installLocation);
    if (!PlistFiles::writeFile(flat + u"/Distribution",
                               "<installer-gui-script><title>Foo Tools</title></installer-gui-script>") ||
        !PlistFiles::writeFile(flat + u"/Foo.pkg/PackageInfo",
                               u"<pkg-info identifier=\"com.example.foo\"%1/>"_s.arg(location).toUtf8()) ||
        !run(u"find"_s, {u"."_s}, root, package + u".list") ||
        !run(u"cpio"_s, {u"-o"_s, u"--format"_s, u"odc"_s}, root, cpio, package + u".list") ||
        (!pbzx && !run(u"gzip"_s, {u"-9nc"_s, cpio}, root, payload))) {
        return false;
    }
    if (pbzx) {
        const QByteArray archive = PlistFiles::readFile(cpio);
        const QByteArray rest = archive.mid(archive.size() / 2);
        if (!PlistFiles::writeFile(cpio + u".1", archive.left(archive.size() / 2)) ||
            !run(u"xz"_s, {u"-kf"_s, cpio + u".1"}, root)) {
            return false;
        }
        const QByteArray xz = PlistFiles::readFile(cpio + u".1.xz");
        const quint64 more = 1 << 24;
        PlistFiles::writeFile(payload, "pbzx" + bigEndian(more) + bigEndian(more) + bigEndian(xz.size()) + xz +
                                           bigEndian(0) + bigEndian(rest.size()) + rest);
    }
    return run(u"bsdtar"_s, {u"--format"_s, u"xar"_s, u"-cf"_s, package, u"."_s}, flat);
}

bool makeUdif(const QString &volume, const QString &image, bool zlib)
{
    QByteArray data = PlistFiles::readFile(volume);
    data.append(QByteArray((512 - data.size() % 512) % 512, 0));
    const quint64 sectors = quint64(data.size()) / 512;
    // qCompress puts the length in front of the zlib stream.
    const QByteArray fork = zlib ? qCompress(data, 9).mid(4) : data;
    const auto chunk = [](quint32 type, quint64 first, quint64 count, quint64 length) -> QByteArray {
        return bigEndian(type, 4) + bigEndian(0, 4) + bigEndian(first) + bigEndian(count) + bigEndian(0) +
               bigEndian(length);
    };
    const QByteArray table = "mish" + bigEndian(1, 4) + bigEndian(0) + bigEndian(sectors) + bigEndian(0) +
                             bigEndian(0, 4) + bigEndian(0, 4) + QByteArray(24 + 136, 0) + bigEndian(2, 4) +
                             chunk(zlib ? 0x80000005 : 1, 0, sectors, fork.size()) + chunk(0xFFFFFFFF, sectors, 0, 0);
    const QByteArray plist = "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>resource-fork</key><dict>"
                             "<key>blkx</key><array><dict><key>Data</key><data>" +
                             table.toBase64() +
                             "</data><key>Name</key><string>disk image (Apple_HFS : 1)</string></dict></array>"
                             "</dict></dict></plist>";
    const QByteArray trailer = "koly" + bigEndian(4, 4) + bigEndian(512, 4) + bigEndian(1, 4) + bigEndian(0) +
                               bigEndian(0) + bigEndian(fork.size()) + bigEndian(0) + bigEndian(0) + bigEndian(1, 4) +
                               bigEndian(1, 4) + QByteArray(16 + 136, 0) + bigEndian(fork.size()) +
                               bigEndian(plist.size()) + QByteArray(120 + 136, 0) + bigEndian(1, 4) +
                               bigEndian(sectors) + QByteArray(12, 0);
    return PlistFiles::writeFile(image, fork + plist + trailer);
}

} // namespace InstallFixtures
