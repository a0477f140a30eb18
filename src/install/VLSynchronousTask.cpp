#include "install/VLSynchronousTask.h"

#include "platform/NativePath.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QThread>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

extern char **environ;

namespace {

// How long a tool that closed its output is given to exit before its status is taken as unknown (0).
constexpr int kExitGraceMs = 5000;
// How often the caller's event loop turns while the tool runs.
constexpr int kTurnMs = 50;

class Descriptor
{
public:
    Descriptor() = default;
    explicit Descriptor(int fd) : m_fd(fd) {}
    ~Descriptor() { reset(); }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    int get() const { return m_fd; }
    void reset()
    {
        if (m_fd >= 0) {
            ::close(m_fd);
        }
        m_fd = -1;
    }

private:
    int m_fd = -1;
};

void turnEventLoop()
{
    if (QCoreApplication::instance() && QThread::currentThread()->eventDispatcher()) {
        QCoreApplication::processEvents();
    }
}

int statusOf(int waitStatus)
{
    if (WIFEXITED(waitStatus)) {
        return WEXITSTATUS(waitStatus);
    }
    return WIFSIGNALED(waitStatus) ? 128 + WTERMSIG(waitStatus) : -1;
}

// The status of pid when it exits within the grace time; 0 when it does not (it is then reaped in the background).
int awaitExit(pid_t pid)
{
    int waitStatus = 0;
    const Descriptor handle(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
    if (handle.get() >= 0) {
        pollfd exitFd{handle.get(), POLLIN, 0};
        while (poll(&exitFd, 1, kExitGraceMs) < 0 && errno == EINTR) {
        }
    } else {
        for (int waited = 0; waited < kExitGraceMs; waited += 5) {
            if (waitpid(pid, &waitStatus, WNOHANG) == pid) {
                return statusOf(waitStatus);
            }
            usleep(5000);
        }
    }
    pid_t reaped = 0;
    while ((reaped = waitpid(pid, &waitStatus, WNOHANG)) < 0 && errno == EINTR) {
    }
    if (reaped == pid) {
        return statusOf(waitStatus);
    }
    std::thread([pid] {
        int ignored = 0;
        while (waitpid(pid, &ignored, 0) < 0 && errno == EINTR) {
        }
    }).detach();
    return 0;
}

} // namespace

void VLSynchronousTask::run(const QString &launchPath, const QString &directory, const QStringList &args,
                            const std::optional<QByteArray> &input)
{
    m_output.clear();
    m_failure.clear();
    m_done = false;
    m_result = 0;

    int outFds[2];
    if (pipe2(outFds, O_CLOEXEC) != 0) {
        describeFailure(launchPath, false, false, {});
        return;
    }
    Descriptor outRead(outFds[0]);
    Descriptor outWrite(outFds[1]);
    // A socket rather than a pipe for the input, so that writing to a tool that has gone raises no SIGPIPE.
    int inFds[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, inFds) != 0) {
        describeFailure(launchPath, false, false, {});
        return;
    }
    Descriptor inWrite(inFds[0]);
    Descriptor inRead(inFds[1]);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (input) {
        posix_spawn_file_actions_adddup2(&actions, inRead.get(), STDIN_FILENO);
    } else {
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    }
    posix_spawn_file_actions_adddup2(&actions, outWrite.get(), STDOUT_FILENO);
    const QByteArray folder = NativePath::encode(directory);
    if (!directory.isEmpty()) {
        posix_spawn_file_actions_addchdir_np(&actions, folder.constData());
    }
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t noSignals;
    sigemptyset(&noSignals);
    posix_spawnattr_setsigmask(&attributes, &noSignals);
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    // A session of its own: no terminal to ask a password on, and one process group to stop, children included.
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSID);

    const QByteArray path = NativePath::encode(launchPath);
    std::vector<QByteArray> argBytes{path};
    for (const QString &arg : args) {
        argBytes.push_back(NativePath::encode(arg));
    }
    std::vector<char *> argv;
    for (QByteArray &arg : argBytes) {
        argv.push_back(arg.data());
    }
    argv.push_back(nullptr);

    pid_t pid = 0;
    const int spawned = posix_spawn(&pid, path.constData(), &actions, &attributes, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    inRead.reset();
    outWrite.reset();
    if (spawned != 0) {
        describeFailure(launchPath, false, false, {});
        return;
    }

    QByteArray pending = input.value_or(QByteArray());
    qsizetype written = 0;
    if (input) {
        fcntl(inWrite.get(), F_SETFL, fcntl(inWrite.get(), F_GETFL) | O_NONBLOCK);
        if (pending.isEmpty()) {
            inWrite.reset();
        }
    }
    char buffer[1 << 16];
    QElapsedTimer clock;
    clock.start();
    bool timedOut = false;
    QString stoppedBecause;
    while (!m_done) {
        timedOut = std::chrono::milliseconds(clock.elapsed()) > m_timeLimit;
        if (m_watch && !timedOut) {
            stoppedBecause = m_watch();
        }
        if (timedOut || !stoppedBecause.isEmpty()) {
            kill(-pid, SIGKILL);
            break;
        }
        pollfd fds[2] = {{outRead.get(), POLLIN, 0}, {inWrite.get(), POLLOUT, 0}};
        const bool feeding = input && inWrite.get() >= 0;
        if (poll(fds, feeding ? 2 : 1, kTurnMs) < 0 && errno != EINTR) {
            break;
        }
        if (feeding && (fds[1].revents & (POLLOUT | POLLERR | POLLHUP))) {
            const ssize_t n = send(inWrite.get(), pending.constData() + written, size_t(pending.size() - written),
                                   MSG_NOSIGNAL | MSG_DONTWAIT);
            if (n > 0) {
                written += n;
            }
            // All of it given, or the tool stopped reading: either way it sees end of file.
            if (written == pending.size() || (n < 0 && errno != EAGAIN && errno != EINTR)) {
                inWrite.reset();
            }
        }
        if (fds[0].revents & (POLLIN | POLLHUP | POLLERR)) {
            const ssize_t n = read(outRead.get(), buffer, sizeof buffer);
            if (n > 0) {
                m_output.append(buffer, n);
            } else if (n == 0 || errno != EINTR) {
                m_done = true;
            }
        }
        turnEventLoop();
    }
    inWrite.reset();
    m_result = awaitExit(pid);
    describeFailure(launchPath, true, timedOut, stoppedBecause);
}

void VLSynchronousTask::describeFailure(const QString &launchPath, bool started, bool timedOut,
                                        const QString &stoppedBecause)
{
    const QString tool = m_name.isEmpty() ? QFileInfo(launchPath).fileName() : m_name;
    if (!started) {
        m_failure = tr("%1 could not be started").arg(tool);
    } else if (timedOut) {
        m_result = m_result == 0 ? 128 + SIGKILL : m_result;
        m_failure = tr("%1 did not finish within %2 seconds and was stopped")
                        .arg(tool)
                        .arg(std::chrono::duration_cast<std::chrono::seconds>(m_timeLimit).count());
    } else if (!stoppedBecause.isEmpty()) {
        m_result = m_result == 0 ? 128 + SIGKILL : m_result;
        m_failure = stoppedBecause;
    } else if (m_result > 128) {
        m_failure = tr("%1 was stopped by signal %2").arg(tool).arg(m_result - 128);
    } else if (m_result != 0) {
        m_failure = tr("%1 failed with status %2").arg(tool).arg(m_result);
    }
}

std::optional<QByteArray> VLSynchronousTask::task(const QString &launchPath, const QString &directory,
                                                  const QStringList &args, const std::optional<QByteArray> &input,
                                                  QString *failure)
{
    VLSynchronousTask runner;
    runner.run(launchPath, directory, args, input);
    if (failure) {
        *failure = runner.failureText();
    }
    if (!runner.done() || runner.result() != 0) {
        return std::nullopt;
    }
    return runner.output();
}
