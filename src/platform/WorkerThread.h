#pragma once

// One worker object on a thread of its own, with the thread's event queue as its queue: post() runs calls on it one
// after the other. The holder quits and waits: its destructor ends the thread and deletes the worker on it, so
// nothing of the worker outlives its owner. A call that is running finishes first.
//
// Owner: whoever holds the WorkerThread (it owns the worker). Thread: post() may be called from any thread.

#include <QObject>
#include <QThread>

#include <functional>

class WorkerThread
{
public:
    // worker must have no parent; it is moved to the new thread, which starts at once.
    WorkerThread(QObject *worker, const QString &name);
    ~WorkerThread();
    WorkerThread(const WorkerThread &) = delete;
    WorkerThread &operator=(const WorkerThread &) = delete;

    void post(std::function<void()> call);
    QThread &thread() { return m_thread; }

private:
    QThread m_thread;
    QObject *m_worker;
};
