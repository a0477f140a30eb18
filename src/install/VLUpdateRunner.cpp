#include "install/VLUpdateRunner.h"

#include "install/QuitAndRelaunchGate.h"

#include <QThread>

VLUpdateRunner::VLUpdateRunner(std::shared_ptr<VLApp> app, UpdateRows *rows, QObject *parent)
    : QObject(parent), m_app(std::move(app))
{
    auto gate = std::make_shared<QuitAndRelaunchGate>(m_app.get(), m_app->vlID);
    m_download = std::make_unique<VLAppDownload>(m_app, rows, gate.get());
    m_thread.reset(QThread::create([this, gate] { m_download->download(); }));
    m_thread->setObjectName(QStringLiteral("update ") + m_app->displayName);
    connect(m_thread.get(), &QThread::finished, this, [this, gate] {
        m_outcome = m_download->outcome();
        m_outcome.skipped = gate->declined();
        emit finished();
    });
}

VLUpdateRunner::~VLUpdateRunner()
{
    if (m_thread->isRunning()) {
        VLAppDownload::cancelUpdate(*m_app);
        m_thread->wait();
    }
}

void VLUpdateRunner::start()
{
    // Counted as running from now on, before its thread has even begun.
    m_app->isDownloading = true;
    m_thread->start();
}
