#include "platform/WorkerThread.h"

WorkerThread::WorkerThread(QObject *worker, const QString &name) : m_worker(worker)
{
    m_thread.setObjectName(name);
    worker->moveToThread(&m_thread);
    QObject::connect(&m_thread, &QThread::finished, worker, &QObject::deleteLater);
    m_thread.start();
}

WorkerThread::~WorkerThread()
{
    m_thread.quit();
    m_thread.wait();
}

void WorkerThread::post(std::function<void()> call)
{
    QMetaObject::invokeMethod(m_worker, std::move(call), Qt::QueuedConnection);
}
