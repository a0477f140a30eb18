#pragma once

// The desktop program's updates: one queue for the panel's rows, the window's rows and Update All, at most three
// running at once, each on its own worker. Progress comes back to the UI thread as signals; a finished update's
// outcome goes into the stored scan, which is saved.

#include "install/VLUpdateAllQueue.h"
#include "scan/AppList.h"

#include <QHash>
#include <QObject>

#include <memory>

class VLMainWindowController;
class VLUpdateRunner;

class UpdateController : public QObject
{
    Q_OBJECT

public:
    explicit UpdateController(VLMainWindowController &driver, QObject *parent = nullptr);
    ~UpdateController() override;

    void updateApp(const AppRef &app);
    void updateAll();
    void cancelUpdate(const AppRef &app);
    void cancelUpdateAll();
    const VLUpdateAllQueue &queue() const { return m_queue; }
    bool isUpdating(const VLApp *app) const;

signals:
    void progressChanged(const AppRef &app, double fraction);
    // Started, became uncancellable, or ended: the row shows the record's state again.
    void stateChanged(const AppRef &app);
    void updateFinished(const AppRef &app);
    void buttonStateChanged(UpdateAllButton state);

private:
    void start(const AppRef &app, std::function<void()> finished);
    void finish(const AppRef &app, std::function<void()> finished);

    VLMainWindowController &m_driver;
    VLUpdateAllQueue m_queue;
    QHash<const VLApp *, VLUpdateRunner *> m_runners;
};
