// The life of one update: which steps move it on and which it ignores (a job runs once, cannot be cancelled once its
// file is being installed, and keeps the end it reached), and how the worker's failures decide that end.

#include "install/UpdateState.h"
#include "support/DataTable.h"
#include "support/TestMain.h"

Q_DECLARE_METATYPE(UpdateStatus)
Q_DECLARE_METATYPE(UpdateStep)

class TestUpdateState : public QObject
{
    Q_OBJECT

private slots:
    void after_data()
    {
        using S = UpdateStatus;
        using P = UpdateStep;
        columns<S, P, S>("from", "step", "to");
        row("queued starts", S::Queued, P::Start, S::Downloading);
        row("a running job is not started twice", S::Downloading, P::Start, S::Downloading);
        row("a job cancelled in the queue never starts", S::Cancelled, P::Start, S::Cancelled);
        row("queued is cancelled", S::Queued, P::Cancel, S::Cancelled);
        row("downloading is cancelled", S::Downloading, P::Cancel, S::Cancelled);
        row("installing cannot be cancelled", S::Installing, P::Cancel, S::Installing);
        row("the file is complete", S::Downloading, P::Install, S::Installing);
        row("installing fails", S::Installing, P::Fail, S::Failed);
        row("a cancelled download that then breaks stays cancelled", S::Cancelled, P::Fail, S::Cancelled);
        row("a cancelled download's worker ends: still cancelled", S::Cancelled, P::Succeed, S::Cancelled);
    }

    void after()
    {
        auto [from, step, to] = fetch<UpdateStatus, UpdateStep, UpdateStatus>("from", "step", "to");
        QCOMPARE(updateStatusAfter(from, step), to);
    }

    void finish_data()
    {
        columns<bool, bool, bool, UpdateStatus>("fails", "takenBack", "cancelled", "end");
        row("clean", false, false, false, UpdateStatus::Done);
        row("a failure stands", true, false, false, UpdateStatus::Failed);
        row("a failure taken back (an archive that did unpack)", true, true, false, UpdateStatus::Done);
        row("cancelled, then the transfer reports its abort", true, false, true, UpdateStatus::Cancelled);
    }

    void finish()
    {
        auto [fails, takenBack, cancelled, end] =
            fetch<bool, bool, bool, UpdateStatus>("fails", "takenBack", "cancelled", "end");
        UpdateState state;
        QVERIFY(state.step(UpdateStep::Start));
        if (cancelled) {
            QVERIFY(state.cancel());
            QVERIFY(state.isCancelled());
        }
        if (fails) {
            state.fail(QStringLiteral("Error extracting tgz file"));
        }
        if (takenBack) {
            state.clearFailure();
        }
        state.finish();
        QCOMPARE(state.status(), end);
        QCOMPARE(state.failMessage(), fails ? QStringLiteral("Error extracting tgz file") : QString());
    }
};

VELMORA_TEST_MAIN(TestUpdateState)
#include "TestUpdateState.moc"
