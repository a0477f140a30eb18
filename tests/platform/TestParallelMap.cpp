// The parallel map's ways of ending early: a cancel, a piece that throws, and worker threads that cannot start.

#include "platform/ParallelMap.h"
#include "support/DataTable.h"
#include "support/TestMain.h"

#include <optional>
#include <stdexcept>

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

// While it lives, the calling thread cannot start threads: a process-count limit of 0. Root is exempt from it, so a
// root thread first takes the real user id "nobody" for itself alone (the raw system call changes only the calling
// thread), keeping root as its saved id to come back.
class NoNewThreads
{
public:
    NoNewThreads()
    {
        getrlimit(RLIMIT_NPROC, &m_old);
        m_switched = geteuid() == 0 && syscall(SYS_setresuid, 65534, 65534, 0) == 0;
        const struct rlimit none = {0, m_old.rlim_max};
        setrlimit(RLIMIT_NPROC, &none);
    }
    ~NoNewThreads()
    {
        setrlimit(RLIMIT_NPROC, &m_old);
        if (m_switched) {
            syscall(SYS_setresuid, 0, 0, 0);
        }
    }
    static bool holds()
    {
        try {
            std::thread([] {}).join();
            return false;
        } catch (const std::system_error &) {
            return true;
        }
    }

private:
    struct rlimit m_old = {};
    bool m_switched = false;
};

} // namespace

class TestParallelMap : public QObject
{
    Q_OBJECT

private slots:
    void endings_data()
    {
        columns<int, int, bool>("cancelAt", "throwAt", "threadsStart"); // -1: never
        QTest::newRow("every piece") << -1 << -1 << true;
        QTest::newRow("no worker thread can start") << -1 << -1 << false;
        QTest::newRow("cancelled mid-way") << 300 << -1 << true;
        QTest::newRow("a piece throws") << -1 << 300 << true;
    }

    void endings()
    {
        auto [cancelAt, throwAt, threadsStart] = fetch<int, int, bool>("cancelAt", "throwAt", "threadsStart");
        constexpr int count = 1000;
        constexpr int threads = 4;
        std::atomic<bool> cancel{false};
        std::atomic<int> made{0};
        const auto make = [&](qsizetype i) {
            ++made;
            if (i == cancelAt) {
                cancel = true;
            }
            if (i == throwAt) {
                throw std::runtime_error("piece failed");
            }
            return int(i) + 1;
        };
        std::optional<NoNewThreads> blocked;
        if (!threadsStart && !blocked.emplace().holds()) {
            blocked.reset();
            QSKIP("not run: threads could still be started under a process-count limit of 0");
        }
        std::vector<int> results;
        bool thrown = false;
        try {
            results = parallelMap<int>(count, make, &cancel, threads);
        } catch (const std::runtime_error &) {
            thrown = true;
        }
        blocked.reset();

        QCOMPARE(thrown, throwAt >= 0);
        const int stop = std::max(cancelAt, throwAt);
        // Without a stop every piece is made; with one, how many others finished first depends on the scheduler.
        if (stop < 0) {
            QCOMPARE(made.load(), count);
        }
        for (int i = 0; i < int(results.size()); ++i) {
            QVERIFY(results[size_t(i)] == i + 1 || (stop >= 0 && results[size_t(i)] == 0));
        }
        QCOMPARE(int(results.size() - std::count(results.begin(), results.end(), 0)), thrown ? 0 : made.load());
    }
};

VELMORA_TEST_MAIN(TestParallelMap)
#include "TestParallelMap.moc"
