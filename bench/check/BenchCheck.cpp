// Times a foreground check of N installed bundles against a velmora-service that holds the real-world catalogue:
// first the stages one by one, in the order the check driver runs them (on an empty store, then again on the
// store the first check left), then `velmora-cli check` as a user runs it, with its peak resident memory.
//
//   bench_check [N...]          (default: 500 5000)
//
// VELMORA_BENCH_WRAP="perf record -g -o /tmp/check.data" puts a profiler in front of velmora-cli (its figures then
// include the profiler's).
//
// The bundles are apps of the catalogue (most of them installed in an older version) and a tenth of local tools it
// does not know, under a volumeRoot of their own; HOME and the XDG folders point into a temporary folder.

#include "model/VLApp.h"
#include "platform/VLSettings.h"
#include "scan/AutomatchPost.h"
#include "scan/VLAppScanner.h"
#include "scan/VLScanData.h"
#include "scan/VLSendAllatOnceHelper.h"
#include "support/PlistFiles.h"
#include "support/ServiceProcess.h"
#include "support/TestMain.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QSet>
#include <QTemporaryDir>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <vector>

extern char **environ;

namespace {

// Installs n bundles under volume/Applications: apps of the catalogue, one in ten a local tool it does not know.
void makeBundles(const QString &volume, const QJsonArray &catalogue, int n)
{
    const QString folder = volume + QStringLiteral("/Applications/");
    QSet<QString> used;
    for (int i = 0, record = 0; i < n; ++i) {
        QString bundleID = QStringLiteral("org.example.tool%1").arg(i);
        QString name = QStringLiteral("Local Tool %1").arg(i);
        if (i % 10 != 9) {
            const QJsonObject app = catalogue.at(record++ % catalogue.size()).toObject();
            const QJsonArray ids = app.value(QStringLiteral("bundle_ids")).toArray();
            bundleID = ids.isEmpty() ? bundleID : ids.at(0).toString();
            name = app.value(QStringLiteral("name")).toString().remove(u'/');
        }
        QString file = name + QStringLiteral(".app");
        for (int copy = 2; used.contains(file.toLower()); ++copy) {
            file = QStringLiteral("%1 %2.app").arg(name).arg(copy);
        }
        used.insert(file.toLower());
        PlistFiles::makeBundle(folder + file, PlistFiles::info(bundleID, QStringLiteral("0.1")));
    }
}

struct Stages
{
    qint64 scan = 0, merge = 0, request = 0, exchange = 0, apply = 0, save = 0;
    qsizetype apps = 0, matched = 0;

    qint64 total() const { return scan + merge + request + exchange + apply + save; }
};

// One foreground check, stage by stage, as the driver runs it.
Stages timeOneCheck()
{
    Stages stages;
    QElapsedTimer timer;
    const auto lap = [&timer](qint64 &stage) {
        stage = timer.nsecsElapsed() / 1000;
        timer.restart();
    };
    timer.start();

    VLAppScanner scanner;
    const AppList scanned =
        VLAppScanner::collectApps(VLAppScanner::searchScopes(), VLBlacklist(scanner.blackListApps()));
    lap(stages.scan);

    // As the driver: the store read under the merge's Change, with the scan's readings of the bundles, and saved once.
    VLScanData store(VLScanData::pathForDataFile(), VLScanData::Unread{});
    {
        VLScanData::Change change(store, -1, scanned);
        if (store.apps() && !store.apps()->isEmpty()) {
            store.doQuickSanityCheck();
            store.updateAppsUsingNewScan(scanned);
        } else {
            store.setApps(scanned);
        }
    }
    lap(stages.merge);

    AppList working = store.apps().value_or(AppList());
    std::stable_sort(working.begin(), working.end(),
                     [](const AppRef &a, const AppRef &b) { return a->localPath < b->localPath; });
    QString post = AutomatchPost::createPost();
    for (qsizetype index = 0; index < working.size(); ++index) {
        AutomatchPost::appendAppFields(post, int(index), *working.at(index));
    }
    lap(stages.request);

    VLSendAllatOnceHelper exchange;
    exchange.getMatches(post);
    lap(stages.exchange);

    VLScanData::Change change(store, -1, scanned);
    AppList apps = store.apps().value_or(AppList());
    QHash<QString, AppRef> byDigest;
    for (const AppRef &app : apps) {
        byDigest.insert(app->digestString, app);
    }
    QHash<QString, const VLApp *> scannedByPath;
    for (const AppRef &app : scanned) {
        scannedByPath.insert(app->localPath, app.get());
    }
    for (const QVariant &entry : exchange.serverApps) {
        const QVariantMap item = entry.toMap();
        if (const AppRef app = byDigest.value(item.value(QStringLiteral("h")).toString())) {
            app->updateWithServerItemJSON(item, scannedByPath.value(app->localPath));
        } else {
            apps.append(std::make_shared<VLApp>(VLApp::initWithServerItemJSON(item)));
        }
    }
    store.setApps(apps);
    lap(stages.apply);

    store.saveDataToDisk();
    lap(stages.save);
    stages.apps = working.size();
    stages.matched = exchange.serverApps.size();
    return stages;
}

void printStages(const char *label, const Stages &stages)
{
    const double total = double(stages.total());
    std::printf("  %-10s %6lld apps, %5lld matched: %8.1f ms |", label, qint64(stages.apps), qint64(stages.matched),
                total / 1000.0);
    const std::pair<const char *, qint64> parts[] = {{"scan", stages.scan},       {"read+merge", stages.merge},
                                                     {"request", stages.request}, {"exchange", stages.exchange},
                                                     {"apply", stages.apply},     {"save", stages.save}};
    for (const auto &[name, micros] : parts) {
        std::printf(" %s %.1f ms (%.0f%%)", name, double(micros) / 1000.0, 100.0 * double(micros) / total);
    }
    std::printf("\n");
}

// Runs command as a child of this small, freshly started process and writes its wall and processor time, its
// peak resident size and its exit status to figuresPath. A process spawned by the bench itself would not do: the
// kernel keeps the peak of the memory a process replaced by exec, so such a child would report the bench's own
// peak whenever that is larger.
int measure(const char *figuresPath, char **command)
{
    timespec start{};
    clock_gettime(CLOCK_MONOTONIC, &start);
    const pid_t pid = fork();
    if (pid == 0) {
        execvp(command[0], command);
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    if (pid < 0 || wait4(pid, &status, 0, &usage) != pid) {
        return 1;
    }
    timespec end{};
    clock_gettime(CLOCK_MONOTONIC, &end);
    const auto seconds = [](const timeval &time) { return double(time.tv_sec) + double(time.tv_usec) / 1e6; };
    FILE *figures = std::fopen(figuresPath, "w");
    if (!figures) {
        return 1;
    }
    std::fprintf(figures, "%f %f %ld %d\n",
                 double(end.tv_sec - start.tv_sec) + double(end.tv_nsec - start.tv_nsec) / 1e9,
                 seconds(usage.ru_utime) + seconds(usage.ru_stime), usage.ru_maxrss,
                 WIFEXITED(status) ? WEXITSTATUS(status) : 128);
    return std::fclose(figures) == 0 ? 0 : 1;
}

// velmora-cli check, with its wall and processor time and peak resident size; false when it did not exit 0.
bool timeCli(const QString &figuresPath, double *seconds, double *cpuSeconds, long *peakKb)
{
    QList<QByteArray> words{QCoreApplication::applicationFilePath().toLocal8Bit(), "--measure",
                            QFile::encodeName(figuresPath)};
    for (const QByteArray &word : qgetenv("VELMORA_BENCH_WRAP").split(' ')) {
        if (!word.isEmpty()) {
            words << word;
        }
    }
    words << VELMORA_CLI_PATH << "check";
    std::vector<char *> argv;
    for (QByteArray &word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    pid_t pid = 0;
    const int spawned = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    if (spawned != 0 || waitpid(pid, &status, 0) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        return false;
    }
    QFile figures(figuresPath);
    if (!figures.open(QIODevice::ReadOnly)) {
        return false;
    }
    int exitCode = -1;
    const bool read =
        std::sscanf(figures.readAll().constData(), "%lf %lf %ld %d", seconds, cpuSeconds, peakKb, &exitCode) == 4;
    return read && exitCode == 0;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc > 3 && std::strcmp(argv[1], "--measure") == 0) {
        return measure(argv[2], argv + 3);
    }
    QTemporaryDir sandbox;
    TestSupport::isolateEnvironment(sandbox.path());
    QCoreApplication app(argc, argv);
    // A line per record would drown the figures.
    QLoggingCategory::setFilterRules(QStringLiteral("velmora.info=false"));
    QList<int> sizes;
    for (const QString &argument : app.arguments().mid(1)) {
        sizes.append(argument.toInt());
    }
    if (sizes.isEmpty()) {
        sizes = {500, 5000};
    }

    QFile file(QStringLiteral(VELMORA_REAL_CATALOGUE));
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot read the real-world catalogue %s\n", VELMORA_REAL_CATALOGUE);
        return 1;
    }
    const QJsonArray catalogue = QJsonDocument::fromJson(file.readAll()).array();
    ServiceProcess service;
    if (catalogue.isEmpty() || !service.start({file.fileName()})) {
        std::fprintf(stderr, "cannot start velmora-service with the real-world catalogue\n");
        return 1;
    }
    VLSettings settings;
    settings.setValue(QString::fromLatin1(SettingKey::serviceHost), service.baseUrl());
    settings.setValue(QString::fromLatin1(SettingKey::sendAnalytics), false);

    for (const int n : sizes) {
        const QString volume = sandbox.path() + QStringLiteral("/volume-%1").arg(n);
        makeBundles(volume, catalogue, n);
        settings.setValue(QString::fromLatin1(SettingKey::volumeRoot), volume);
        QFile::remove(VLScanData::pathForDataFile());
        std::printf("N = %d installed bundles\n", n);
        printStages("first", timeOneCheck());
        printStages("next", timeOneCheck());
        // Three runs: on a shared machine one run says little.
        for (int run = 0; run < 3; ++run) {
            double seconds = 0;
            double cpuSeconds = 0;
            long peakKb = 0;
            if (!timeCli(sandbox.filePath(QStringLiteral("figures")), &seconds, &cpuSeconds, &peakKb)) {
                std::fprintf(stderr, "velmora-cli check failed\n");
                return 1;
            }
            std::printf("  velmora-cli check: %.2f s (%.2f s processor), peak resident %.1f MB\n", seconds, cpuSeconds,
                        double(peakKb) / 1024.0);
        }
    }
    return 0;
}
