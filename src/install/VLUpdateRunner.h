#pragma once

// The update of one record on a worker thread of its own: the download, the check, the installation with the
// running-app gate. Made and started on the thread that owns the record's list; finished arrives there, and the
// outcome is then for that thread to apply (VLAppDownload::applyOutcome) under the list's lock.

#include "install/VLAppDownload.h"

#include <QObject>

#include <memory>

class QThread;
class UpdateRows;

class VLUpdateRunner : public QObject
{
    Q_OBJECT

public:
    // Reads the record's catalogue facts now: call under the list's lock. rows may be null and must outlive the run.
    explicit VLUpdateRunner(std::shared_ptr<VLApp> app, UpdateRows *rows = nullptr, QObject *parent = nullptr);
    // Cancels a running update and waits for its thread.
    ~VLUpdateRunner() override;

    void start();
    const std::shared_ptr<VLApp> &app() const { return m_app; }
    // Valid once finished has been emitted.
    const UpdateOutcome &outcome() const { return m_outcome; }

signals:
    void finished();

private:
    std::shared_ptr<VLApp> m_app;
    std::unique_ptr<VLAppDownload> m_download;
    std::unique_ptr<QThread> m_thread;
    UpdateOutcome m_outcome;
};
