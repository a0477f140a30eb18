// Times the desktop program with a large store of N records, OUTDATED of them with an update:
//
//   bench_gui [N] [OUTDATED]        (default: 5000 500)
//
// - launch to the main window shown with its list painted: this program started again (as velmora starts:
//   QApplication, the desktop program, the stored scan read on the check thread), timed from just before the
//   process is spawned to the end of the list's first paint with rows in it;
// - tray click to painted panel: what a click on the tray icon does (the outdated list refilled, the panel opened at
//   the icon), up to the end of the panel's paint; the first click and later ones;
// - the window listing its view again (what every change of the records costs the UI thread), with its paint;
// - a scroll through the whole Installed list (all N records) by wheel notches, and again a page at a time: each
//   frame timed from the event to the end of its paint;
// - the resident size of an idle `velmora` (the program itself) once it stopped using the processor.
//
// Each figure is wall time, with the processor time of the thread (or, for the launch, of the process) beside it:
// the machine is shared, and processor time is the steadier of the two. Run it under QT_QPA_PLATFORM=offscreen or
// under a real X server (xvfb-run). HOME and the XDG folders point into a temporary folder; every host points where
// nothing listens, so no check or request leaves the machine.

#include "app/DesktopApp.h"
#include "model/DateDescription.h"
#include "platform/VLSettings.h"
#include "scan/VLMainWindowController.h"
#include "scan/VLScanData.h"
#include "support/HostSettings.h"
#include "support/PlistFiles.h"
#include "support/TestMain.h"
#include "ui/AppListModel.h"
#include "ui/VLMainWindow.h"
#include "ui/VLPanelController.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLoggingCategory>
#include <QProcess>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <QTreeView>
#include <QWheelEvent>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <sys/resource.h>

namespace {

constexpr char kLaunchMode[] = "--launch";
constexpr char kSpawnVariable[] = "VELMORA_BENCH_SPAWN_NS";
constexpr int kLaunchRuns = 5;
constexpr int kPanelOpens = 10;
constexpr int kWaitMs = 60000;
constexpr int kWakeMs = 250;

qint64 monotonicNs()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return qint64(now.tv_sec) * 1000000000 + now.tv_nsec;
}

double threadCpuMs()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

double processCpuMs()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto ms = [](const timeval &time) { return double(time.tv_sec) * 1e3 + double(time.tv_usec) / 1e3; };
    return ms(usage.ru_utime) + ms(usage.ru_stime);
}

// A wall time and the processor time spent meanwhile, in milliseconds.
struct Sample
{
    double wall = 0;
    double cpu = 0;
};

class Stopwatch
{
public:
    Stopwatch() : m_cpu(threadCpuMs()) { m_wall.start(); }
    Sample lap() const { return {double(m_wall.nsecsElapsed()) / 1e6, threadCpuMs() - m_cpu}; }

private:
    QElapsedTimer m_wall;
    double m_cpu;
};

void printSamples(const char *label, QList<Sample> samples)
{
    if (samples.isEmpty()) {
        std::printf("  %-34s no samples\n", label);
        return;
    }
    std::sort(samples.begin(), samples.end(), [](const Sample &a, const Sample &b) { return a.wall < b.wall; });
    const auto at = [&samples](double share) { return samples.at(qsizetype(share * double(samples.size() - 1))); };
    double cpuMax = 0;
    for (const Sample &sample : std::as_const(samples)) {
        cpuMax = std::max(cpuMax, sample.cpu);
    }
    std::printf("  %-34s %5lld x: median %7.2f ms (%6.2f cpu), p99 %7.2f ms, max %7.2f ms (%6.2f cpu); cpu max %.2f "
                "ms\n",
                label, qint64(samples.size()), at(0.5).wall, at(0.5).cpu, at(0.99).wall, samples.last().wall,
                samples.last().cpu, cpuMax);
}

// Fires once the watched widget has painted with rows in the list: the paint event has been handled by then.
class PaintWatch : public QObject
{
public:
    PaintWatch(QWidget *widget, std::function<bool()> ready) : m_ready(std::move(ready))
    {
        widget->installEventFilter(this);
    }
    bool painted() const { return m_painted; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && !m_painted && m_ready()) {
            // Counted after this paint returns.
            QMetaObject::invokeMethod(
                this, [this] { m_painted = true; }, Qt::QueuedConnection);
        }
        return QObject::eventFilter(watched, event);
    }

private:
    std::function<bool()> m_ready;
    bool m_painted = false;
};

// Sleeps until events come, as the program's own event loop does: a wait that polled would take a core from the
// threads it waits for. The timer only wakes it to give up.
bool waitFor(const std::function<bool()> &done)
{
    const QDeadlineTimer deadline(kWaitMs);
    QTimer wake;
    wake.start(kWakeMs);
    while (!done()) {
        if (deadline.hasExpired()) {
            return false;
        }
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

// n bundles under volume/Applications and a store whose records were matched just now (so a launch does not check
// again), the first outdated of them with a newer version in the catalogue.
void makeStore(const QString &volume, int n, int outdated)
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    AppList apps;
    apps.reserve(n);
    for (int i = 0; i < n; ++i) {
        const QString path = volume + QStringLiteral("/Applications/Bench App %1.app").arg(i);
        PlistFiles::makeBundle(
            path, PlistFiles::info(QStringLiteral("org.example.bench%1").arg(i), QStringLiteral("1.%1").arg(i % 7)));
        auto app = std::make_shared<VLApp>(VLApp::initWithBundleAt(path));
        app->vlID = QString::number(100000 + i);
        app->vlVersion = i < outdated ? QStringLiteral("2.0") : app->localVersion;
        app->vlDate = QStringLiteral("2026-11-%1").arg(1 + i % 25, 2, 10, QLatin1Char('0'));
        app->sortDate = dateDescription(now.addSecs(-60 * i));
        app->lastmatched = dateDescription(now);
        app->releaseNotes = QStringLiteral("Fixes and improvements in version 2.0.");
        app->checkIfOutdated();
        apps.append(app);
    }
    VLScanData store;
    VLScanData::Change change(store);
    store.setApps(apps);
    store.saveDataToDisk();
}

QTreeView &appList(VLMainWindow &window)
{
    return *window.findChild<QTreeView *>(QStringLiteral("appList"));
}

// The child: starts as velmora does and prints, in milliseconds from its spawn, when the application was made, the
// desktop program made and started (the window shown), the stored scan loaded, and the list painted with rows; then
// the process's processor time and the rows.
int runLaunch()
{
    const qint64 spawned = qEnvironmentVariable(kSpawnVariable).toLongLong();
    const auto since = [spawned] { return double(monotonicNs() - spawned) / 1e6; };
    const double application = since();
    DesktopApp desktop;
    const double made = since();
    double loaded = 0;
    QObject::connect(&desktop.driver(), &VLMainWindowController::checkFinished, [&] { loaded = since(); });
    desktop.start(false);
    const double started = since();
    QTreeView &list = appList(desktop.window());
    const PaintWatch watch(list.viewport(), [&list] { return list.model()->rowCount() > 0; });
    if (!waitFor([&watch] { return watch.painted(); })) {
        std::fprintf(stderr, "the list was never painted with rows\n");
        return 1;
    }
    std::printf("%.2f %.2f %.2f %.2f %.2f %.2f %d\n", application, made, started, loaded, since(), processCpuMs(),
                list.model()->rowCount());
    std::fflush(stdout);
    std::_Exit(0); // tearing down is not what is timed
}

bool timeLaunches()
{
    QList<QList<QByteArray>> runs;
    for (int run = 0; run < kLaunchRuns; ++run) {
        QProcess child;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QLatin1String(kSpawnVariable), QString::number(monotonicNs()));
        child.setProcessEnvironment(environment);
        child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        child.start(QCoreApplication::applicationFilePath(), {QLatin1String(kLaunchMode)});
        if (!child.waitForFinished(kWaitMs) || child.exitCode() != 0) {
            std::fprintf(stderr, "the launch run failed\n");
            return false;
        }
        const QList<QByteArray> fields = child.readAllStandardOutput().trimmed().split(' ');
        if (fields.size() != 7) {
            return false;
        }
        runs.append(fields);
    }
    std::printf("  launch to the list painted (%s rows), ms from the spawn: application made, desktop program made, "
                "started (window shown), store loaded, list painted; process cpu\n",
                runs.constLast().constLast().constData());
    for (const QList<QByteArray> &fields : std::as_const(runs)) {
        std::printf("    %s\n", fields.mid(0, 6).join(" / ").constData());
    }
    return true;
}

// velmora itself, left alone until its processor time stays still for three seconds; its VmRSS and VmHWM.
bool measureIdleVelmora()
{
    QProcess velmora;
    velmora.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    velmora.start(QStringLiteral(VELMORA_GUI_PATH), {});
    if (!velmora.waitForStarted(kWaitMs)) {
        std::fprintf(stderr, "velmora did not start\n");
        return false;
    }
    const QString proc = QStringLiteral("/proc/%1/").arg(velmora.processId());
    const auto cpuTicks = [&proc] {
        QFile stat(proc + QStringLiteral("stat"));
        if (!stat.open(QIODevice::ReadOnly)) {
            return qint64(-1);
        }
        // utime and stime: the 14th and 15th fields, counted from after the parenthesised name.
        const QList<QByteArray> fields = stat.readAll().split(')').last().trimmed().split(' ');
        return fields.size() > 12 ? fields.at(11).toLongLong() + fields.at(12).toLongLong() : qint64(-1);
    };
    QElapsedTimer timer;
    timer.start();
    qint64 last = -1;
    int stillFor = 0;
    while (stillFor < 6 && timer.elapsed() < kWaitMs) {
        QThread::msleep(500);
        const qint64 ticks = cpuTicks();
        stillFor = ticks == last ? stillFor + 1 : 0;
        last = ticks;
    }
    QFile status(proc + QStringLiteral("status"));
    QByteArray rss;
    QByteArray peak;
    if (status.open(QIODevice::ReadOnly)) {
        for (const QByteArray &line : status.readAll().split('\n')) {
            if (line.startsWith("VmRSS:")) {
                rss = line.mid(6).simplified();
            } else if (line.startsWith("VmHWM:")) {
                peak = line.mid(6).simplified();
            }
        }
    }
    std::printf("  idle velmora after %.1f s: resident %s (peak %s), %.2f s of processor time\n",
                double(timer.elapsed()) / 1e3, rss.constData(), peak.constData(), double(last) / 100.0);
    velmora.terminate();
    if (!velmora.waitForFinished(10000)) {
        velmora.kill();
        velmora.waitForFinished();
    }
    return !rss.isEmpty();
}

// What a click on the tray icon does, up to the panel's paint; the panel is closed again before the next click.
void timePanelOpens(DesktopApp &desktop)
{
    VLPanelController &panel = desktop.panel();
    const QRect anchor(1800, 0, 30, 24);
    QList<Sample> later;
    for (int click = 0; click <= kPanelOpens; ++click) {
        const Stopwatch watch;
        desktop.refreshPanelAndBadge();
        panel.openPanel(anchor, false);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
        panel.repaint();
        const Sample sample = watch.lap();
        if (click == 0) {
            std::printf("  tray click to painted panel, first (%lld rows listed): %.2f ms (%.2f ms cpu)\n",
                        qint64(panel.outdatedApps().size()), sample.wall, sample.cpu);
        } else {
            later.append(sample);
        }
        panel.closePanel();
        QApplication::processEvents();
    }
    printSamples("tray click to painted panel, later", later);
}

// What a change of the records costs the UI thread: the window lists its view again, with its paint.
void timeRelisting(VLMainWindow &window)
{
    const std::pair<AppView, const char *> views[] = {{AppView::Updates, "window relisted, Updates"},
                                                      {AppView::Installed, "window relisted, Installed"}};
    for (const auto &[view, label] : views) {
        window.showView(view);
        QApplication::processEvents();
        QList<Sample> samples;
        for (int run = 0; run < kPanelOpens; ++run) {
            const Stopwatch watch;
            window.reloadLists();
            window.repaint();
            samples.append(watch.lap());
        }
        printSamples(label, samples);
    }
}

// Scrolls the window's Installed list from top to bottom, each step an event and its paint.
void timeScrolling(VLMainWindow &window)
{
    window.showView(AppView::Installed);
    QTreeView &list = appList(window);
    QApplication::processEvents();
    QScrollBar &bar = *list.verticalScrollBar();
    QList<Sample> wheel;
    bar.setValue(0);
    QApplication::processEvents();
    while (bar.value() < bar.maximum()) {
        const Stopwatch watch;
        const QPointF at(list.viewport()->rect().center());
        QWheelEvent notch(at, list.viewport()->mapToGlobal(at), QPoint(), QPoint(0, -120), Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(list.viewport(), &notch);
        QApplication::processEvents();
        wheel.append(watch.lap());
    }
    QList<Sample> pages;
    bar.setValue(0);
    QApplication::processEvents();
    while (bar.value() < bar.maximum()) {
        const Stopwatch watch;
        bar.triggerAction(QAbstractSlider::SliderPageStepAdd);
        QApplication::processEvents();
        pages.append(watch.lap());
    }
    std::printf("  scroll through %d rows:\n", list.model()->rowCount());
    printSamples("by wheel notch (3 lines)", wheel);
    printSamples("by page", pages);
}

} // namespace

int main(int argc, char **argv)
{
    if (argc > 1 && qstrcmp(argv[1], kLaunchMode) == 0) {
        QApplication app(argc, argv);
        return runLaunch();
    }
    QTemporaryDir sandbox;
    TestSupport::isolateEnvironment(sandbox.path());
    QApplication app(argc, argv);
    // A line per record would drown the figures.
    QLoggingCategory::setFilterRules(QStringLiteral("velmora.info=false"));
    const int n = argc > 1 ? QByteArray(argv[1]).toInt() : 5000;
    const int outdated = argc > 2 ? QByteArray(argv[2]).toInt() : 500;

    pointHostsAt(QStringLiteral("http://127.0.0.1:1"),
                 {SettingKey::serviceHost, SettingKey::siteHost, SettingKey::analyticsHost, SettingKey::dealsHost});
    VLSettings settings;
    const QString volume = sandbox.path() + QStringLiteral("/volume");
    settings.setValue(QString::fromLatin1(SettingKey::volumeRoot), volume);
    settings.setValue(QString::fromLatin1(SettingKey::sendAnalytics), false);
    // The window opens at launch, as with no tray; the panel is opened by hand below.
    settings.setValue(QString::fromLatin1(SettingKey::showStatusItem), false);
    settings.sync();
    makeStore(volume, n, outdated);
    std::printf("N = %d records, %d outdated, platform %s\n", n, outdated, qPrintable(QGuiApplication::platformName()));

    if (!timeLaunches() || !measureIdleVelmora()) {
        return 1;
    }
    DesktopApp desktop;
    desktop.start(false);
    VLMainWindowController &driver = desktop.driver();
    if (!waitFor([&driver] { return driver.donescanning(); })) {
        std::fprintf(stderr, "the store was not loaded\n");
        return 1;
    }
    QApplication::processEvents();
    timePanelOpens(desktop);
    timeRelisting(desktop.window());
    timeScrolling(desktop.window());
    return 0;
}
