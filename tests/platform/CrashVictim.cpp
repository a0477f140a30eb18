// A program that crashes on purpose under the crash handler: crash-victim SIGNAL [thread].

#include "platform/CrashHandler.h"
#include "platform/Log.h"

#include <QCoreApplication>
#include <QTemporaryFile>

#include <csignal>
#include <cstdlib>
#include <thread>

#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

// Exported and never inlined, so that the report's backtrace names it.
[[gnu::noinline]] void crashVictimFaults(int signalNumber)
{
    switch (signalNumber) {
    case SIGSEGV:
        *static_cast<volatile int *>(nullptr) = 1;
        break;
    case SIGBUS: {
        // A page of a file that has shrunk under its mapping.
        QTemporaryFile file;
        file.open();
        file.resize(4096);
        auto *page = static_cast<volatile char *>(mmap(nullptr, 4096, PROT_READ, MAP_SHARED, file.handle(), 0));
        file.resize(0);
        (void)page[0];
        break;
    }
    case SIGILL:
        __builtin_trap();
    case SIGFPE: {
        volatile int dividend = 7, zero = 0; // both unknown, so the division stays a division
        volatile int quotient = dividend / zero;
        (void)quotient;
        break;
    }
    case SIGABRT:
        std::abort();
    }
}

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const rlimit noCore = {0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    const int signalNumber = argc > 1 ? std::atoi(argv[1]) : SIGSEGV;
    const CrashHandler handler(QStringLiteral("crash-victim"));
    if (!handler.isInstalled()) {
        return 3;
    }
    vlLog(QStringLiteral("victim about to crash"));
    if (argc > 2) {
        std::thread([signalNumber] { crashVictimFaults(signalNumber); }).join();
    } else {
        crashVictimFaults(signalNumber);
    }
    return 0; // not reached
}
