#include "cli/CliFeedback.h"

#include "cli/Command.h"

#include <cstdio>
#include <unistd.h>

CliFeedback::CliFeedback(QTextStream &err) : m_err(err)
{
    UserFeedback::install(this);
}

CliFeedback::~CliFeedback()
{
    UserFeedback::install(nullptr);
}

void CliFeedback::showAlert(const QString &message, const QString &informativeText)
{
    m_alerted = true;
    const QMutexLocker lock(&m_mutex);
    stepAside();
    m_err << "error: " << message << ": " << informativeText << Qt::endl;
}

void CliFeedback::showNotice(const SystemNotice &notice)
{
    const QMutexLocker lock(&m_mutex);
    stepAside();
    m_err << "notice: " << notice.title << ": " << notice.informativeText << Qt::endl;
}

bool CliFeedback::askQuestion(const QString &message, const QString &informativeText, const QString &yesButton,
                              const QString &noButton)
{
    const QMutexLocker lock(&m_mutex);
    stepAside();
    if (m_answerYes) {
        m_err << "notice: " << message << ": " << yesButton << Qt::endl;
        return true;
    }
    if (!isatty(STDIN_FILENO) || !isatty(STDERR_FILENO)) {
        m_err << "notice: " << message << ": " << noButton << " ("
              << Cli::tr("no terminal to ask on; --yes answers yes") << ')' << Qt::endl;
        return false;
    }
    m_err << message << ' ' << informativeText << '\n'
          << Cli::tr("%1? [y/N] (no: %2) ").arg(yesButton, noButton) << Qt::flush;
    char line[64] = {};
    const bool yes = std::fgets(line, sizeof line, stdin) && (line[0] == 'y' || line[0] == 'Y');
    return yes;
}

void CliFeedback::stepAside()
{
    if (m_beforePrinting) {
        m_beforePrinting();
    }
}
