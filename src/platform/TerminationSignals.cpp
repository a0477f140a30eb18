#include "platform/TerminationSignals.h"

#include <QSocketNotifier>

#include <csignal>

#include <sys/socket.h>
#include <unistd.h>

namespace {

int g_pipe[2] = {-1, -1};

void onSignal(int signalNumber)
{
    const unsigned char number = static_cast<unsigned char>(signalNumber);
    // Only async-signal-safe work here: the number goes through the pipe to the event loop.
    [[maybe_unused]] const ssize_t written = ::write(g_pipe[0], &number, 1);
}

} // namespace

TerminationSignals::TerminationSignals(QObject *parent) : QObject(parent)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, g_pipe) != 0) {
        return;
    }
    m_notifier = new QSocketNotifier(g_pipe[1], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, [this] {
        unsigned char number = 0;
        if (::read(g_pipe[1], &number, 1) == 1) {
            emit received(number);
        }
    });
    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (const int signalNumber : {SIGTERM, SIGINT, SIGHUP}) {
        sigaction(signalNumber, &action, nullptr);
    }
}

TerminationSignals::~TerminationSignals()
{
    for (const int signalNumber : {SIGTERM, SIGINT, SIGHUP}) {
        std::signal(signalNumber, SIG_DFL);
    }
    delete m_notifier;
    ::close(g_pipe[0]);
    ::close(g_pipe[1]);
    g_pipe[0] = g_pipe[1] = -1;
}
