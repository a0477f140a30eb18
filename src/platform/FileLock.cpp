#include "platform/FileLock.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QThread>

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

FileLock::FileLock(const QString &path) : m_path(path) {}

FileLock::~FileLock()
{
    if (m_fd >= 0) {
        close(m_fd);
    }
}

bool FileLock::lock(int timeoutMs)
{
    if (m_depth > 0) {
        ++m_depth;
        return true;
    }
    const int fd = open(QFile::encodeName(m_path).constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (fd < 0) {
        return false;
    }
    const QDeadlineTimer deadline(timeoutMs < 0 ? QDeadlineTimer::Forever : QDeadlineTimer(timeoutMs));
    for (;;) {
        const int operation = deadline.isForever() ? LOCK_EX : LOCK_EX | LOCK_NB;
        if (flock(fd, operation) == 0) {
            break;
        }
        if ((errno != EWOULDBLOCK && errno != EINTR) || deadline.hasExpired()) {
            close(fd);
            return false;
        }
        if (errno == EWOULDBLOCK) {
            QThread::msleep(std::min<qint64>(20, std::max<qint64>(1, deadline.remainingTime())));
        }
    }
    m_fd = fd;
    m_depth = 1;
    return true;
}

void FileLock::unlock()
{
    if (m_depth > 0 && --m_depth == 0) {
        // Closing the only descriptor releases the lock.
        close(m_fd);
        m_fd = -1;
    }
}
