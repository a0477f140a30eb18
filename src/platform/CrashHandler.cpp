#include "platform/CrashHandler.h"

#include "platform/CrashReportFolder.h"
#include "platform/Log.h"
#include "platform/LogRing.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <ctime>

#include <execinfo.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::array<int, 5> kFatalSignals = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT};

// Everything the handler needs is ready before it can run: it may not allocate, lock or call into Qt.
int g_fd = -1;
char g_head[512];
size_t g_headSize = 0;
pid_t g_pid = 0;
std::atomic_flag g_crashing = ATOMIC_FLAG_INIT;
char g_altStack[64 * 1024]; // so that a stack overflow on the main thread can still be reported

void writeAll(int fd, const char *data, size_t size)
{
    while (size > 0) {
        const ssize_t written = ::write(fd, data, size);
        if (written <= 0) {
            return;
        }
        data += written;
        size -= static_cast<size_t>(written);
    }
}

// A small text builder over a fixed buffer; what does not fit is cut.
struct Text
{
    char data[256];
    size_t size = 0;

    Text &add(const char *text)
    {
        while (*text && size < sizeof data) {
            data[size++] = *text++;
        }
        return *this;
    }
    Text &number(unsigned long long value, unsigned base = 10, int minDigits = 1)
    {
        char digits[32];
        int count = 0;
        do {
            digits[count++] = "0123456789abcdef"[value % base];
            value /= base;
        } while (value != 0 || count < minDigits);
        while (count > 0 && size < sizeof data) {
            data[size++] = digits[--count];
        }
        return *this;
    }
    void writeTo(int fd) const { writeAll(fd, data, size); }
};

const char *signalName(int signalNumber)
{
    switch (signalNumber) {
    case SIGSEGV:
        return "SIGSEGV";
    case SIGBUS:
        return "SIGBUS";
    case SIGILL:
        return "SIGILL";
    case SIGFPE:
        return "SIGFPE";
    case SIGABRT:
        return "SIGABRT";
    }
    return "signal";
}

// "yyyy-MM-dd HH:mm:ss +0000", the program's own date form, from the clock alone (no time-zone files, no locks).
void addTime(Text &text)
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    const long long seconds = now.tv_sec;
    long long days = seconds / 86400;
    const long long rest = seconds % 86400;
    // Civil date from days since 1970-01-01 (proleptic Gregorian calendar).
    days += 719468;
    const long long era = days / 146097;
    const long long dayOfEra = days - era * 146097;
    const long long yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const long long dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const long long monthIndex = (5 * dayOfYear + 2) / 153;
    const long long day = dayOfYear - (153 * monthIndex + 2) / 5 + 1;
    const long long month = monthIndex < 10 ? monthIndex + 3 : monthIndex - 9;
    const long long year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
    text.number(static_cast<unsigned long long>(year)).add("-").number(month, 10, 2).add("-").number(day, 10, 2);
    text.add(" ").number(rest / 3600, 10, 2).add(":").number(rest / 60 % 60, 10, 2).add(":").number(rest % 60, 10, 2);
    text.add(" +0000");
}

void writeReport(int fd, int signalNumber, const siginfo_t *info)
{
    writeAll(fd, g_head, g_headSize);
    Text line;
    line.add("Time: ");
    addTime(line);
    line.add("\nSignal: ").add(signalName(signalNumber)).add(" (").number(static_cast<unsigned>(signalNumber));
    const int code = info ? info->si_code : 0;
    line.add("), code ").add(code < 0 ? "-" : "").number(static_cast<unsigned>(code < 0 ? -code : code));
    if (code > 0) {
        line.add(", address 0x").number(reinterpret_cast<uintptr_t>(info->si_addr), 16);
    } else if (info) {
        // Sent by a process (kill, raise, abort), which has no faulting address.
        line.add(", sent by process ").number(static_cast<unsigned>(info->si_pid));
    }
    const pid_t thread = gettid();
    char threadName[17] = {};
    prctl(PR_GET_NAME, threadName, 0, 0, 0);
    line.add("\nThread: ").number(static_cast<unsigned>(thread)).add(" \"").add(threadName).add("\"");
    line.add(thread == g_pid ? " (main)\n" : "\n");
    line.writeTo(fd);

    Text title;
    title.add("\nBacktrace:\n").writeTo(fd);
    void *frames[64];
    backtrace_symbols_fd(frames, backtrace(frames, 64), fd);
    title.size = 0;
    title.add("\nLog:\n").writeTo(fd);
    LogRing::writeTo(fd);
}

void onFatalSignal(int signalNumber, siginfo_t *info, void *)
{
    if (g_crashing.test_and_set()) {
        // Another thread is writing its report and will end the process.
        for (;;) {
            pause();
        }
    }
    const int savedErrno = errno;
    if (g_fd >= 0) {
        writeReport(g_fd, signalNumber, info);
    }
    errno = savedErrno;
    // SA_RESETHAND put the default action back: the signal ends the process once this handler returns (a fault
    // happens again; a sent signal is raised here).
    raise(signalNumber);
}

void restoreDefaults()
{
    for (const int signalNumber : kFatalSignals) {
        std::signal(signalNumber, SIG_DFL);
    }
}

} // namespace

CrashHandler::CrashHandler(const QString &program)
{
    m_path = CrashReportFolder::newReportPath(program);
    if (m_path.isEmpty()) {
        return;
    }
    m_fd = ::open(QFile::encodeName(m_path).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (m_fd < 0) {
        vlLog(QStringLiteral("cannot open the crash report %1").arg(m_path));
        return;
    }
    const QByteArray head = QByteArrayLiteral("Velmora Desktop crash report\nCompany: Velmora\nProgram: ") +
                            program.toUtf8() + ' ' + QByteArrayLiteral(VELMORA_VERSION) +
                            "\nProcess: " + QByteArray::number(getpid()) + '\n';
    g_headSize = std::min(sizeof g_head, size_t(head.size()));
    std::memcpy(g_head, head.constData(), g_headSize);
    g_pid = getpid();
    g_fd = m_fd;
    // The first backtrace() loads the unwinder; that must not happen inside the handler.
    void *frame[1];
    backtrace(frame, 1);

    stack_t altStack = {};
    altStack.ss_sp = g_altStack;
    altStack.ss_size = sizeof g_altStack;
    sigaltstack(&altStack, nullptr);
    struct sigaction action = {};
    action.sa_sigaction = onFatalSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_SIGINFO | SA_RESETHAND | SA_ONSTACK;
    for (const int signalNumber : kFatalSignals) {
        sigaction(signalNumber, &action, nullptr);
    }
}

CrashHandler::~CrashHandler()
{
    if (m_fd < 0) {
        return;
    }
    restoreDefaults();
    g_fd = -1;
    ::close(m_fd);
    QFile::remove(m_path);
}
