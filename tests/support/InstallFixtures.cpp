#include "support/InstallFixtures.h"

#include "support/PlistFiles.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QtEndian>

#include <unistd.h>

namespace InstallFixtures {

namespace {

QByteArray bigEndian(quint64 value)
{
    QByteArray bytes(8, 0);
    qToBigEndian(value, bytes.data());
    return bytes;
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
    QFile::link(QStringLiteral("MacOS"), root + QStringLiteral("/Foo.app/Contents/Current"));
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
            entries.append(path + QStringLiteral(" -> ") + (text.startsWith(u'/') ? QStringLiteral("/") : text));
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
    const QString flat = package + QStringLiteral(".flat");
    const QString list = package + QStringLiteral(".list");
    const QString cpio = package + QStringLiteral(".cpio");
    const QString payload = flat + QStringLiteral("/Foo.pkg/Payload");
    const QString location =
        installLocation.isEmpty() ? QString() : QStringLiteral(" install-location=\"%1\"").arg(installLocation);
    if (!PlistFiles::writeFile(flat + QStringLiteral("/Distribution"), "<installer-gui-script/>") ||
        !PlistFiles::writeFile(flat + QStringLiteral("/Foo.pkg/PackageInfo"),
                               QStringLiteral("<pkg-info identifier=\"com.example.foo\"%1/>").arg(location).toUtf8()) ||
        !run(QStringLiteral("find"), {QStringLiteral(".")}, root, list) ||
        !run(QStringLiteral("cpio"), {QStringLiteral("-o"), QStringLiteral("--format"), QStringLiteral("odc")}, root,
             cpio, list)) {
        return false;
    }
    if (!pbzx) {
        if (!run(QStringLiteral("gzip"), {QStringLiteral("-9nc"), cpio}, root, payload)) {
            return false;
        }
    } else {
        QFile cpioFile(cpio);
        const QByteArray archive = cpioFile.open(QIODevice::ReadOnly) ? cpioFile.readAll() : QByteArray();
        const QString firstHalf = cpio + QStringLiteral(".1");
        PlistFiles::writeFile(firstHalf, archive.left(archive.size() / 2));
        if (!run(QStringLiteral("xz"), {QStringLiteral("-kf"), firstHalf}, root)) {
            return false;
        }
        QFile xzFile(firstHalf + QStringLiteral(".xz"));
        const QByteArray xz = xzFile.open(QIODevice::ReadOnly) ? xzFile.readAll() : QByteArray();
        const QByteArray rest = archive.mid(archive.size() / 2);
        const quint64 more = 1 << 24;
        PlistFiles::writeFile(payload, "pbzx" + bigEndian(more) + bigEndian(more) + bigEndian(xz.size()) + xz +
                                           bigEndian(0) + bigEndian(rest.size()) + rest);
    }
    return run(QStringLiteral("bsdtar"),
               {QStringLiteral("--format"), QStringLiteral("xar"), QStringLiteral("-cf"), package, QStringLiteral(".")},
               flat);
}

} // namespace InstallFixtures
