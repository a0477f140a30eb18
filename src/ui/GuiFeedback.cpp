#include "ui/GuiFeedback.h"

#include "platform/Log.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QThread>

GuiFeedback::GuiFeedback(QObject *parent) : QObject(parent)
{
    connect(&m_notifications, &DesktopNotifications::clicked, this,
            [](quint32 id) { UserFeedback::noticeClicked(id); });
    UserFeedback::install(this);
}

GuiFeedback::~GuiFeedback()
{
    UserFeedback::install(nullptr);
}

template <typename F> void GuiFeedback::runOnUiThread(F &&work, bool wait)
{
    if (QThread::currentThread() == thread()) {
        work();
        return;
    }
    QMetaObject::invokeMethod(this, std::forward<F>(work), wait ? Qt::BlockingQueuedConnection : Qt::QueuedConnection);
}

void GuiFeedback::showAlert(const QString &message, const QString &informativeText)
{
    vlLog(QStringLiteral("%1: %2").arg(message, informativeText));
    runOnUiThread(
        [message, informativeText] {
            auto *box =
                new QMessageBox(QMessageBox::Warning, message, message, QMessageBox::Ok, QApplication::activeWindow());
            box->setInformativeText(informativeText);
            box->setAttribute(Qt::WA_DeleteOnClose);
            box->open();
        },
        false);
}

void GuiFeedback::showNotice(const SystemNotice &notice)
{
    vlLog(QStringLiteral("notice: %1: %2").arg(notice.title, notice.informativeText));
    runOnUiThread([this, notice] { m_notifications.notify(notice); }, false);
}

void GuiFeedback::withdrawNotices()
{
    runOnUiThread([this] { m_notifications.closeAll(); }, false);
}

bool GuiFeedback::askQuestion(const QString &message, const QString &informativeText, const QString &yesButton,
                              const QString &noButton)
{
    bool yes = false;
    runOnUiThread(
        [&] {
            QMessageBox box(QMessageBox::Question, message, message, QMessageBox::NoButton,
                            QApplication::activeWindow());
            box.setInformativeText(informativeText);
            QPushButton *yesAnswer = box.addButton(yesButton, QMessageBox::AcceptRole);
            box.addButton(noButton, QMessageBox::RejectRole);
            box.setDefaultButton(yesAnswer);
            box.exec();
            yes = box.clickedButton() == yesAnswer;
        },
        true);
    return yes;
}
