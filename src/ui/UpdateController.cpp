#include "ui/UpdateController.h"

#include "install/UpdateRows.h"
#include "install/VLAppDownload.h"
#include "install/VLUpdateRunner.h"
#include "scan/VLMainWindowController.h"
#include "scan/VLScanData.h"

#include <QMetaObject>
#include <QPointer>

namespace {

// Hands the worker's calls to the UI thread without waiting.
class ForwardingRows : public UpdateRows
{
public:
    ForwardingRows(UpdateController *controller, AppRef app) : m_controller(controller), m_app(std::move(app)) {}

    void hideFieldsShowProgressBar() override
    {
        post([](UpdateController *c, const AppRef &a) { emit c->stateChanged(a); });
    }
    void updateMainProgressBar(double) override {}
    void updateProgressBar(double fraction) override
    {
        post([fraction](UpdateController *c, const AppRef &a) { emit c->progressChanged(a, fraction); });
    }
    void disableCancelButtons() override
    {
        post([](UpdateController *c, const AppRef &a) { emit c->stateChanged(a); });
    }
    void hideProgressBarShowFields(double) override {}

private:
    template <typename F> void post(F call)
    {
        QPointer<UpdateController> controller(m_controller);
        AppRef app = m_app;
        QMetaObject::invokeMethod(
            m_controller,
            [controller, app, call] {
                if (controller) {
                    call(controller.data(), app);
                }
            },
            Qt::QueuedConnection);
    }

    UpdateController *m_controller;
    AppRef m_app;
};

} // namespace

UpdateController::UpdateController(VLMainWindowController &driver, QObject *parent)
    : QObject(parent), m_driver(driver),
      m_queue([this](const AppRef &app, std::function<void()> finished) { start(app, std::move(finished)); })
{
    connect(&m_queue, &VLUpdateAllQueue::buttonStateChanged, this, &UpdateController::buttonStateChanged);
}

UpdateController::~UpdateController()
{
    m_queue.cancelUpdateAll();
    qDeleteAll(m_runners);
}

void UpdateController::updateApp(const AppRef &app)
{
    if (!isUpdating(app.get())) {
        m_queue.addToQueue({app});
    }
}

void UpdateController::updateAll()
{
    m_queue.updateAll(m_driver.outdatedApps());
}

void UpdateController::cancelUpdate(const AppRef &app)
{
    m_queue.removeAppFromUpdateAllQueue(app.get());
    VLAppDownload::cancelUpdate(*app);
}

void UpdateController::cancelUpdateAll()
{
    m_queue.cancelUpdateAll();
}

bool UpdateController::isUpdating(const VLApp *app) const
{
    return m_runners.contains(app);
}

void UpdateController::start(const AppRef &app, std::function<void()> finished)
{
    auto *rows = new ForwardingRows(this, app);
    VLUpdateRunner *runner = nullptr;
    {
        VLScanData *store = m_driver.scanData();
        std::optional<QMutexLocker<QRecursiveMutex>> lock;
        if (store) {
            lock.emplace(&store->mutex());
        }
        runner = new VLUpdateRunner(app, rows);
    }
    m_runners.insert(app.get(), runner);
    connect(runner, &VLUpdateRunner::finished, this, [this, app, rows, finished] {
        delete rows;
        finish(app, finished);
    });
    runner->start();
    emit stateChanged(app);
}

void UpdateController::finish(const AppRef &app, std::function<void()> finished)
{
    VLUpdateRunner *runner = m_runners.take(app.get());
    const UpdateOutcome outcome = runner->outcome();
    runner->deleteLater();
    const auto apply = [&app, &outcome] {
        VLAppDownload::applyOutcome(*app, outcome);
        // The panel keeps an updated row with its done mark for a while, counted from here.
        if (!outcome.installedPath.isEmpty()) {
            app->lastupdated = QDateTime::currentDateTimeUtc();
        }
    };
    if (VLScanData *store = m_driver.scanData()) {
        const VLScanData::Change change(*store);
        const QMutexLocker lock(&store->mutex());
        apply();
        store->saveDataToDisk();
    } else {
        apply();
    }
    finished();
    emit stateChanged(app);
    emit updateFinished(app);
}
