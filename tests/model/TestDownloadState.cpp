// A record's download fields, written by an update's worker while another thread copies the record (as the rows do)
// and cancels. CI runs this under ThreadSanitizer (.ci/run), where a field that is not atomic is a reported race.

#include "model/VLApp.h"
#include "support/TestMain.h"

#include <thread>

class TestDownloadState : public QObject
{
    Q_OBJECT

private slots:
    void workerWritesWhileOthersCopy()
    {
        VLApp app;
        std::thread worker([&app] {
            app.isDownloading = true;
            for (qint64 received = 1; !app.didCancel; ++received) {
                app.receivedContentLength = received;
                app.percentDownloaded = double(received) / 1000;
                app.failMessage = QStringLiteral("at %1").arg(received);
            }
            app.isDownloading = false;
        });
        qint64 seen = 0;
        bool inOrder = true;
        while (seen < 1000) {
            const VLApp copy = app;
            inOrder = inOrder && copy.receivedContentLength >= seen;
            seen = std::max<qint64>(seen, copy.receivedContentLength);
        }
        app.didCancel = true;
        worker.join();
        QVERIFY(inOrder);
        QVERIFY(!app.isDownloading);
        const VLApp copy = app;
        QCOMPARE(copy.receivedContentLength.load(), app.receivedContentLength.load());
        QCOMPARE(copy.failMessage.load(), QStringLiteral("at %1").arg(app.receivedContentLength.load()));
    }
};

VELMORA_TEST_MAIN(TestDownloadState)
#include "TestDownloadState.moc"
