#include "cli/CliFeedback.h"

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
    m_err << "error: " << message << ": " << informativeText << Qt::endl;
}

void CliFeedback::showSystemNotification(const QString &title, const QString &informativeText, const QString &)
{
    const QMutexLocker lock(&m_mutex);
    m_err << "notice: " << title << ": " << informativeText << Qt::endl;
}
