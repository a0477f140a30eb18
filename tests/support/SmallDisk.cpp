#include "support/SmallDisk.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <cstring>

#include <sys/mount.h>
#include <sys/resource.h>

SmallDisk::SmallDisk(const QString &folder, qint64 capacity) : m_folder(folder), m_capacity(capacity)
{
    QDir().mkpath(folder);
    const QByteArray options = "size=" + QByteArray::number(capacity) + ",mode=0700";
    if (mount("tmpfs", QFile::encodeName(folder).constData(), "tmpfs", MS_NOSUID | MS_NODEV, options.constData()) ==
        0) {
        m_mounted = true;
        return;
    }
    const QString mountError = QString::fromLocal8Bit(std::strerror(errno));
    struct rlimit limit = {};
    if (getrlimit(RLIMIT_FSIZE, &limit) == 0) {
        m_oldLimit = limit.rlim_cur;
        limit.rlim_cur = rlim_t(capacity);
        m_oldHandler = std::signal(SIGXFSZ, SIG_IGN);
        if (setrlimit(RLIMIT_FSIZE, &limit) == 0) {
            m_limited = true;
            return;
        }
        std::signal(SIGXFSZ, m_oldHandler);
    }
    m_skipReason = QStringLiteral("not run: no tmpfs could be mounted (%1) and no file-size limit set (%2)")
                       .arg(mountError, QString::fromLocal8Bit(std::strerror(errno)));
}

SmallDisk::~SmallDisk()
{
    if (m_mounted && umount2(QFile::encodeName(m_folder).constData(), 0) != 0) {
        umount2(QFile::encodeName(m_folder).constData(), MNT_DETACH);
    }
    if (m_limited) {
        struct rlimit limit = {};
        getrlimit(RLIMIT_FSIZE, &limit);
        limit.rlim_cur = rlim_t(m_oldLimit);
        setrlimit(RLIMIT_FSIZE, &limit);
        std::signal(SIGXFSZ, m_oldHandler);
    }
}
