#include "support/TestMain.h"

#include "scan/VLNotificationCenter.h"

#include <QThread>

class TestVLNotificationCenter : public QObject
{
    Q_OBJECT

private slots:
    void deliveredAtOnceOnTheSameThread();
    void deliveredOnTheListenersThread();
    void listenerGoesWithItsContext();
};

void TestVLNotificationCenter::deliveredAtOnceOnTheSameThread()
{
    QObject context;
    QStringList heard;
    VLNotificationCenter &center = VLNotificationCenter::defaultCenter();
    center.subscribe(QStringLiteral("A"), &context, [&](const QVariant &object) { heard << object.toString(); });
    center.post(QStringLiteral("A"), QStringLiteral("one"));
    center.post(QStringLiteral("B"), QStringLiteral("not for us"));
    center.post(QStringLiteral("A"));
    QCOMPARE(heard, (QStringList{QStringLiteral("one"), QString()}));
}

void TestVLNotificationCenter::deliveredOnTheListenersThread()
{
    QObject context;
    QThread *heardOn = nullptr;
    VLNotificationCenter::defaultCenter().subscribe(QStringLiteral("C"), &context,
                                                    [&](const QVariant &) { heardOn = QThread::currentThread(); });
    QThread *poster = QThread::create([] { VLNotificationCenter::defaultCenter().post(QStringLiteral("C")); });
    poster->start();
    poster->wait();
    delete poster;
    QVERIFY(!heardOn); // waits for this thread's event loop
    QTRY_COMPARE(heardOn, QThread::currentThread());
}

void TestVLNotificationCenter::listenerGoesWithItsContext()
{
    int heard = 0;
    {
        QObject context;
        VLNotificationCenter::defaultCenter().subscribe(QStringLiteral("D"), &context, [&](const QVariant &) { ++heard; });
        VLNotificationCenter::defaultCenter().post(QStringLiteral("D"));
    }
    VLNotificationCenter::defaultCenter().post(QStringLiteral("D"));
    QCOMPARE(heard, 1);
}

VELMORA_TEST_MAIN(TestVLNotificationCenter)
#include "TestVLNotificationCenter.moc"
