// Times each unpacking path of the installer (zip, tar.gz, tar.bz2, bz2, disk image) on an app bundle of many small
// files and a few large ones, against its bare tool on the same file in the same run, and prints the ratio; then the
// other Debian tools that could unpack zip and tar.gz, each against the same bare tool.
// Usage: bench_unpacking [MB] [runs] [paths] (default 40 MB, 3 runs, every path; 200 for the full-size bundle; paths:
// the rows whose name contains this text).

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

#include <sys/resource.h>
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

// This process's and its ended children's processor time.
double processorMs()
{
    double total = 0;
    for (const int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        struct rusage usage = {};
        getrusage(who, &usage);
        for (const timeval &time : {usage.ru_utime, usage.ru_stime}) {
            total += double(time.tv_sec) * 1e3 + double(time.tv_usec) / 1e3;
        }
    }
    return total;
}

using Unpack = std::function<bool(const QString &file, const QString &out)>;

struct Path
{
    const char *name;
    QString archive;
    Unpack ours;
    Unpack bare;
};

Unpack installer(QString (VLInstaller::*extract)(const QString &))
{
    return [extract](const QString &file, const QString &) {
        VLInstaller unpacker;
        const bool ok = !(unpacker.*extract)(file).isEmpty();
        unpacker.cleanUp(file);
        return ok;
    };
}

Unpack bareTool(const QString &tool, const QStringList &args)
{
    return [tool, args](const QString &file, const QString &out) {
        return run(tool, QStringList(args).replaceInStrings(QStringLiteral("%F"), file), out);
    };
}

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
    const Unpack unzip = bareTool(QStringLiteral("unzip"), {QStringLiteral("-o"), QStringLiteral("%F"),
                                                            QStringLiteral("-x"), QStringLiteral("__MACOSX/*")});
    const Unpack tar = bareTool(tool, {QStringLiteral("-xf"), QStringLiteral("%F")});
    const QList<Path> paths = {
        {"zip", QStringLiteral("Foo.zip"), installer(&VLInstaller::extractZIP), unzip},
        {"tar.gz", QStringLiteral("Foo.tar.gz"), installer(&VLInstaller::extractTGZ), tar},
        {"tar.bz2", QStringLiteral("Foo.tar.bz2"), installer(&VLInstaller::extractTBZ),
         [&](const QString &f, const QString &out) {
             return run(QStringLiteral("bunzip2"), {QStringLiteral("-d"), f}, out) &&
                    run(tool, {QStringLiteral("-xf"), f.chopped(4)}, out);
         }},
        {"bz2", QStringLiteral("Foo.tar.bz2"), installer(&VLInstaller::extractBZ2),
         bareTool(QStringLiteral("bunzip2"), {QStringLiteral("-d"), QStringLiteral("%F")})},
        {"disk image", QStringLiteral("Foo.dmg"), installer(&VLInstaller::mountDMG),
         bareTool(QStringLiteral("7zz"), {QStringLiteral("x"), QStringLiteral("-tHFS"), QStringLiteral("-y"),
                                          QStringLiteral("-o."), QStringLiteral("%F")})},
        // The other tools, bare, against the same bare tool.
        {"zip: bsdtar", QStringLiteral("Foo.zip"),
         bareTool(QStringLiteral("bsdtar"), {QStringLiteral("-xf"), QStringLiteral("%F"), QStringLiteral("--exclude"),
                                             QStringLiteral("__MACOSX")}),
         unzip},
        {"zip: 7zz", QStringLiteral("Foo.zip"),
         bareTool(QStringLiteral("7zz"), {QStringLiteral("x"), QStringLiteral("-snl"), QStringLiteral("-y"),
                                          QStringLiteral("-xr!__MACOSX"), QStringLiteral("%F")}),
         unzip},
        {"tar.gz: tar -v", QStringLiteral("Foo.tar.gz"), bareTool(tool, {QStringLiteral("-xvf"), QStringLiteral("%F")}),
         tar},
        {"tar.gz: bsdtar", QStringLiteral("Foo.tar.gz"),
         bareTool(QStringLiteral("bsdtar"), {QStringLiteral("-xf"), QStringLiteral("%F")}), tar},
        // Listing before unpacking: the compressed archive twice, or decompressed once to a file listed and unpacked.
        {"tar.gz: -tzv, -xzv", QStringLiteral("Foo.tar.gz"),
         [&](const QString &f, const QString &out) {
             return run(tool, {QStringLiteral("-tzvf"), f}, out) && run(tool, {QStringLiteral("-xzvf"), f}, out);
         },
         tar},
        {"tar.gz: gzip -d", QStringLiteral("Foo.tar.gz"),
         [&](const QString &f, const QString &out) {
             const QString plain = out + QStringLiteral("/plain.tar");
             return run(QStringLiteral("gzip"), {QStringLiteral("-dc"), f}, out, plain) &&
                    run(tool, {QStringLiteral("-tf"), plain}, out) && run(tool, {QStringLiteral("-tvf"), plain}, out) &&
                    run(tool, {QStringLiteral("-xf"), plain}, out);
         },
         tar},
    };
    const QString only = argc > 3 ? QString::fromLocal8Bit(argv[3]) : QString();

    // Processor time (ours and the tools', user and system) is less disturbed than wall time by other work on a
    // shared machine; a tool's threads count in full.
    std::printf("bundle %lld MB, best of %d alternating runs; wall time, then processor time\n",
                static_cast<long long>(megabytes), runs);
    std::printf("%-16s %10s %10s %7s %10s %10s %7s\n", "path", "bare tool", "candidate", "ratio", "bare cpu",
                "cand. cpu", "ratio");
    for (const Path &path : paths) {
        if (!QString::fromLatin1(path.name).contains(only)) {
            continue;
        }
        double bare = 1e18;
        double ours = 1e18;
        double bareCpu = 1e18;
        double oursCpu = 1e18;
        for (int r = 0; r < runs; ++r) {
            for (const bool candidate : {false, true}) {
                // A fresh copy each time: bunzip2 replaces its input.
                const QString work = dir.filePath(QStringLiteral("run"));
                QDir().mkpath(work);
                const QString file = work + u'/' + path.archive;
                QFile::copy(archive(path.archive), file);
                const double cpuBefore = processorMs();
                QElapsedTimer timer;
                timer.start();
                const bool ok = candidate ? path.ours(file, work) : path.bare(file, work);
                const double ms = double(timer.nsecsElapsed()) / 1e6;
                const double cpu = processorMs() - cpuBefore;
                if (!ok) {
                    std::fprintf(stderr, "%s failed (%s)\n", path.name, candidate ? "candidate" : "bare tool");
                    return 1;
                }
                (candidate ? ours : bare) = std::min(candidate ? ours : bare, ms);
                (candidate ? oursCpu : bareCpu) = std::min(candidate ? oursCpu : bareCpu, cpu);
                WorkFolder::remove(dir.filePath(QStringLiteral("run")));
                WorkFolder::remove(QDir::tempPath() + QStringLiteral("/velmora-") + QString::number(getuid()) +
                                   QStringLiteral("/Volumes"));
            }
        }
        std::printf("%-16s %7.0f ms %7.0f ms %7.3f %7.0f ms %7.0f ms %7.3f\n", path.name, bare, ours, ours / bare,
                    bareCpu, oursCpu, oursCpu / bareCpu);
        std::fflush(stdout);
    }
    return 0;
}
