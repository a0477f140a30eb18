// Times a full scan of N synthetic bundles against simply reading (and parsing) their Info.plist files, and a
// merge of N new records into N stored ones. Usage: bench_scan [N...] (default 1000 10000).

#include "model/PropertyList.h"
#include "scan/ScanMerge.h"
#include "scan/VLAppScanner.h"
#include "scan/VLScanData.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <random>
#include <vector>

#include <sys/resource.h>

namespace {

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly)) {
        file.write(bytes);
    }
}

// A bundle shaped like a small real one: an information dictionary of typical size, an executable, resources.
QByteArray infoPlist(int i)
{
    QByteArray keys;
    const auto add = [&keys](const QByteArray &key, const QByteArray &value) {
        keys += "\t<key>" + key + "</key>\n\t<string>" + value + "</string>\n";
    };
    const QByteArray n = QByteArray::number(i);
    add("CFBundleIdentifier", "com.example.app" + n);
    add("CFBundleExecutable", "App" + n);
    add("CFBundleName", "App " + n);
    add("CFBundleShortVersionString", QByteArray::number(i % 7 + 1) + "." + QByteArray::number(i % 13) + ".2");
    add("CFBundleVersion", QByteArray::number(1000 + i));
    add("CFBundlePackageType", "APPL");
    add("CFBundleIconFile", "AppIcon");
    add("LSMinimumSystemVersion", "10.13");
    add("NSHumanReadableCopyright", "Copyright 2026 Example Software. All rights reserved.");
    add("NSPrincipalClass", "NSApplication");
    add("NSMainNibFile", "MainMenu");
    for (int k = 0; k < 12; ++k) {
        add("ExampleSetting" + QByteArray::number(k), "value " + QByteArray::number(k * i));
    }
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\">\n<dict>\n" +
           keys + "</dict>\n</plist>\n";
}

QStringList makeBundles(const QString &applications, int count)
{
    QStringList paths;
    for (int i = 0; i < count; ++i) {
        // A few folders of suites, as in a real Applications folder; one name in fifty is on the blacklist.
        const QString folder = i % 10 == 0 ? applications + QStringLiteral("/Suite %1").arg(i / 100) : applications;
        const QString name =
            i % 50 == 7 ? QStringLiteral("App %1 Uninstaller.app").arg(i) : QStringLiteral("App %1.app").arg(i);
        const QString bundle = folder + QLatin1Char('/') + name;
        QDir().mkpath(bundle + QStringLiteral("/Contents/MacOS"));
        QDir().mkpath(bundle + QStringLiteral("/Contents/Resources/en.lproj"));
        writeFile(bundle + QStringLiteral("/Contents/Info.plist"), infoPlist(i));
        writeFile(bundle + QStringLiteral("/Contents/MacOS/App%1").arg(i), "#!/bin/sh\n");
        writeFile(bundle + QStringLiteral("/Contents/Resources/AppIcon.icns"), QByteArray(64, 'i'));
        writeFile(bundle + QStringLiteral("/Contents/Resources/en.lproj/InfoPlist.strings"),
                  "\"CFBundleName\" = \"App\";\n");
        paths.append(bundle);
    }
    return paths;
}

double processCpuMs()
{
    struct rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1e3 +
           (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e3;
}

struct Timing
{
    double wallMs = 1e300; // the best of the runs: the figure least disturbed by other work on the machine
    double cpuMs = 1e300;  // processor time of all threads, which load on a shared machine hardly changes
};

Timing bestOf(int runs, const std::function<void()> &work)
{
    Timing best;
    for (int r = 0; r < runs; ++r) {
        const double cpu = processCpuMs();
        QElapsedTimer timer;
        timer.start();
        work();
        best.wallMs = std::min(best.wallMs, timer.nsecsElapsed() / 1e6);
        best.cpuMs = std::min(best.cpuMs, processCpuMs() - cpu);
    }
    return best;
}

AppList syntheticRecords(int count, int offset)
{
    AppList apps;
    for (int i = 0; i < count; ++i) {
        auto app = std::make_shared<VLApp>();
        app->localPath = QStringLiteral("/Applications/App %1.app").arg(i + offset);
        app->vlID = QString::number(1000 + i);
        apps.append(app);
    }
    return apps;
}

void benchmark(int count)
{
    QTemporaryDir dir;
    const QString applications = dir.path() + QStringLiteral("/Applications");
    const QStringList bundles = makeBundles(applications, count);
    const int runs = count >= 10000 ? 3 : 5;

    qsizetype bytes = 0;
    const Timing readOnly = bestOf(runs, [&] {
        bytes = 0;
        for (const QString &bundle : bundles) {
            QFile file(bundle + QStringLiteral("/Contents/Info.plist"));
            if (file.open(QIODevice::ReadOnly)) {
                bytes += file.readAll().size();
            }
        }
    });
    const Timing readParse = bestOf(runs, [&] {
        for (const QString &bundle : bundles) {
            PropertyList::readDictionaryFile(bundle + QStringLiteral("/Contents/Info.plist"));
        }
    });
    qsizetype reported = 0;
    const VLBlacklist blacklist;
    const Timing scan = bestOf(runs, [&] { reported = VLAppScanner::collectApps({applications}, blacklist).size(); });
    const Timing scanOneThread =
        bestOf(runs, [&] { VLAppScanner::collectApps({applications}, blacklist, nullptr, 1); });

    // Half the scan is already stored, half is new; a tenth of the stored records are gone from the disk.
    const AppList stored = syntheticRecords(count, 0);
    const AppList fresh = syntheticRecords(count, count / 2);
    const Timing merge = bestOf(runs, [&] {
        AppList apps = stored;
        ScanMerge::updateAppsUsingNewScan(apps, fresh);
    });

    VLScanData store(dir.path() + QStringLiteral("/vldscan.vld6"));
    store.setApps(VLAppScanner::collectApps({applications}, blacklist));
    const Timing save = bestOf(runs, [&] { store.saveDataToDisk(); });
    const Timing load = bestOf(runs, [&] { VLScanData loaded(store.filePath()); });

    std::printf("N = %d bundles (%lld reported, Info.plist %.1f KB on average)\n", count, qlonglong(reported),
                bundles.isEmpty() ? 0.0 : double(bytes) / bundles.size() / 1024.0);
    std::printf("  %-40s %9.1f ms wall %9.1f ms cpu\n", "read every Info.plist", readOnly.wallMs, readOnly.cpuMs);
    std::printf("  %-40s %9.1f ms wall %9.1f ms cpu\n", "read and parse every Info.plist", readParse.wallMs,
                readParse.cpuMs);
    std::printf("  %-40s %9.1f ms wall %9.1f ms cpu\n", "full scan (walk, blacklist, records)", scan.wallMs,
                scan.cpuMs);
    std::printf("  %-40s %9.1f ms wall %9.1f ms cpu\n", "full scan on one thread", scanOneThread.wallMs,
                scanOneThread.cpuMs);
    std::printf("  scan / read:            %.2f wall, %.2f cpu\n", scan.wallMs / readOnly.wallMs,
                scan.cpuMs / readOnly.cpuMs);
    std::printf("  scan / read and parse:  %.2f wall, %.2f cpu\n", scan.wallMs / readParse.wallMs,
                scan.cpuMs / readParse.cpuMs);
    std::printf("  one-thread scan / read and parse:  %.2f wall, %.2f cpu\n", scanOneThread.wallMs / readParse.wallMs,
                scanOneThread.cpuMs / readParse.cpuMs);
    std::printf("  %-40s %9.2f ms wall\n", "merge of N new records into N stored", merge.wallMs);
    std::printf("  %-40s %9.1f ms wall\n", "store save (N records)", save.wallMs);
    std::printf("  %-40s %9.1f ms wall\n", "store load (N records)", load.wallMs);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    std::vector<int> counts;
    for (int i = 1; i < argc; ++i) {
        counts.push_back(std::atoi(argv[i]));
    }
    if (counts.empty()) {
        counts = {1000, 10000};
    }
    for (int count : counts) {
        benchmark(count);
    }
    return 0;
}
