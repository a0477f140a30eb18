// Times each unpacking path of the installer (zip, tar.gz, tar.bz2, bz2, disk image) on an app bundle of many small
// files and a few large ones, against its bare tool on the same file in the same run, and prints the ratio.
// Usage: bench_unpacking [MB] [runs] (default 40 MB, 3 runs; 200 for the full-size bundle).

#include "install/VLInstaller.h"
#include "install/WorkFolder.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <functional>

#include <unistd.h>

namespace {

bool run(const QString &program, const QStringList &args, const QString &folder, const QString &outFile = {})
{
    QProcess process;
    process.setWorkingDirectory(folder);
    process.setStandardOutputFile(outFile.isEmpty() ? QProcess::nullDevice() : outFile);
    process.start(program, args);
    return process.waitForFinished(-1) && process.exitCode() == 0;
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (file.open(QIODevice::WriteOnly)) {
        file.write(bytes);
    }
}

// Two thirds in four large files (half noise, half text, as binaries and resources are), a third in 4 KB files of
// text spread over folders of 100, as headers, strings and nibs are.
void makeBundle(const QString &app, qint64 bytes)
{
    QRandomGenerator random(42);
    const qint64 large = bytes * 2 / 3 / 4;
    for (int i = 0; i < 4; ++i) {
        QByteArray data(large, 0);
        random.fillRange(reinterpret_cast<quint32 *>(data.data()), large / 8);
        for (qint64 k = large / 2; k < large; ++k) {
            data[k] = char('a' + k % 23 + (k / 4096) % 3);
        }
        writeFile(app + QStringLiteral("/Contents/Resources/large%1.bin").arg(i), data);
    }
    const qint64 smallCount = bytes / 3 / 4096;
    for (qint64 i = 0; i < smallCount; ++i) {
        QByteArray text;
        while (text.size() < 4096) {
            text +=
                "key" + QByteArray::number(i) + " = \"value " + QByteArray::number(random.generate() % 1000) + "\";\n";
        }
        writeFile(app + QStringLiteral("/Contents/Resources/f%1/s%2.strings").arg(i / 100).arg(i), text.left(4096));
    }
}

struct Path
{
    const char *name;
    QString archive;
    std::function<QString(VLInstaller &, const QString &)> ours;
    std::function<bool(const QString &file, const QString &out)> bare;
};

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const qint64 megabytes = argc > 1 ? QByteArray(argv[1]).toLongLong() : 40;
    const int runs = argc > 2 ? QByteArray(argv[2]).toInt() : 3;
    QTemporaryDir dir;
    const QString source = dir.filePath(QStringLiteral("src"));
    const QString archives = dir.filePath(QStringLiteral("archives"));
    QDir().mkpath(archives);
    makeBundle(source + QStringLiteral("/Foo.app"), megabytes << 20);
    const auto archive = [&](const QString &name) -> QString { return archives + u'/' + name; };
    const bool made =
        run(QStringLiteral("bsdtar"),
            {QStringLiteral("--format"), QStringLiteral("zip"), QStringLiteral("-cf"),
             archive(QStringLiteral("Foo.zip")), QStringLiteral("Foo.app")},
            source) &&
        run(QStringLiteral("bsdtar"),
            {QStringLiteral("-czf"), archive(QStringLiteral("Foo.tar.gz")), QStringLiteral("Foo.app")}, source) &&
        run(QStringLiteral("bsdtar"),
            {QStringLiteral("-cjf"), archive(QStringLiteral("Foo.tar.bz2")), QStringLiteral("Foo.app")}, source) &&
        run(QStringLiteral("xorriso"),
            {QStringLiteral("-as"), QStringLiteral("mkisofs"), QStringLiteral("-hfsplus"), QStringLiteral("-R"),
             QStringLiteral("-V"), QStringLiteral("Foo"), QStringLiteral("-quiet"), QStringLiteral("-o"),
             archive(QStringLiteral("Foo.dmg")), QStringLiteral(".")},
            source);
    if (!made) {
        std::fprintf(stderr, "could not make the archives\n");
        return 1;
    }

    const QString tool = WorkFolder::tool(QStringLiteral("tar"));
    const QList<Path> paths = {
        {"zip", QStringLiteral("Foo.zip"), [](VLInstaller &i, const QString &f) { return i.extractZIP(f); },
         [](const QString &f, const QString &out) {
             return run(QStringLiteral("unzip"),
                        {QStringLiteral("-o"), f, QStringLiteral("-x"), QStringLiteral("__MACOSX/*"),
                         QStringLiteral("-d"), out},
                        out);
         }},
        {"tar.gz", QStringLiteral("Foo.tar.gz"), [](VLInstaller &i, const QString &f) { return i.extractTGZ(f); },
         [&](const QString &f, const QString &out) {
             return run(tool, {QStringLiteral("-xf"), f}, out);
         }},
        {"tar.bz2", QStringLiteral("Foo.tar.bz2"), [](VLInstaller &i, const QString &f) { return i.extractTBZ(f); },
         [&](const QString &f, const QString &out) {
             return run(QStringLiteral("bunzip2"), {QStringLiteral("-d"), f}, out) &&
                    run(tool, {QStringLiteral("-xf"), f.chopped(4)}, out);
         }},
        {"bz2", QStringLiteral("Foo.tar.bz2"), [](VLInstaller &i, const QString &f) { return i.extractBZ2(f); },
         [](const QString &f, const QString &out) {
             return run(QStringLiteral("bunzip2"), {QStringLiteral("-d"), f}, out);
         }},
        {"disk image", QStringLiteral("Foo.dmg"), [](VLInstaller &i, const QString &f) { return i.mountDMG(f); },
         [](const QString &f, const QString &out) {
             return run(
                 QStringLiteral("7zz"),
                 {QStringLiteral("x"), QStringLiteral("-tHFS"), QStringLiteral("-y"), QStringLiteral("-o") + out, f},
                 out);
         }},
    };

    std::printf("bundle %lld MB, best of %d alternating runs\n", static_cast<long long>(megabytes), runs);
    std::printf("%-12s %10s %10s %8s\n", "path", "bare tool", "installer", "ratio");
    for (const Path &path : paths) {
        double bare = 1e18;
        double ours = 1e18;
        for (int r = 0; r < runs; ++r) {
            for (const bool installer : {false, true}) {
                // A fresh copy each time: bunzip2 replaces its input.
                const QString work = dir.filePath(QStringLiteral("run"));
                QDir().mkpath(work);
                const QString file = work + u'/' + path.archive;
                QFile::copy(archive(path.archive), file);
                VLInstaller unpacker;
                QElapsedTimer timer;
                timer.start();
                const bool ok = installer ? !path.ours(unpacker, file).isEmpty() : path.bare(file, work);
                const double ms = double(timer.nsecsElapsed()) / 1e6;
                if (!ok) {
                    std::fprintf(stderr, "%s failed (%s)\n", path.name, installer ? "installer" : "bare tool");
                    return 1;
                }
                (installer ? ours : bare) = std::min(installer ? ours : bare, ms);
                unpacker.cleanUp(file);
                WorkFolder::remove(dir.filePath(QStringLiteral("run")));
                WorkFolder::remove(QDir::tempPath() + QStringLiteral("/velmora-") + QString::number(getuid()) +
                                   QStringLiteral("/Volumes"));
            }
        }
        std::printf("%-12s %8.0f ms %8.0f ms %8.3f\n", path.name, bare, ours, ours / bare);
        std::fflush(stdout);
    }
    return 0;
}
