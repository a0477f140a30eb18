// The matching reply's zlib streams: what inflates, what gives nothing, and the cap that keeps a bomb out of memory.

#include "platform/RAZipper.h"
#include "support/TestMain.h"

#include <QRandomGenerator>

namespace {

QByteArray randomBytes(qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator generator(7);
    for (char &byte : bytes) {
        byte = char(generator.bounded(256));
    }
    return bytes;
}

QByteArray compressed(const QByteArray &data)
{
    return RAZipper::compressedDataForData(data).value_or(QByteArray());
}

} // namespace

class TestRAZipper : public QObject
{
    Q_OBJECT

private slots:
    void inflates_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<qint64>("maxBytes");
        QTest::newRow("empty") << QByteArray() << RAZipper::kMaxDecompressedBytes;
        QTest::newRow("incompressible: first buffer fits") << randomBytes(5000) << RAZipper::kMaxDecompressedBytes;
        QTest::newRow("1000:1, the buffer doubles nine times")
            << QByteArray(1 << 20, 'a') << RAZipper::kMaxDecompressedBytes;
        QTest::newRow("exactly at the cap") << QByteArray(1 << 20, 'a') << qint64(1 << 20);
    }

    void inflates()
    {
        QFETCH(QByteArray, data);
        QFETCH(qint64, maxBytes);
        QCOMPARE(RAZipper::dataForCompressedData(compressed(data), maxBytes), std::optional<QByteArray>(data));
    }

    void givesNothing_data()
    {
        QTest::addColumn<QByteArray>("stream");
        QTest::addColumn<qint64>("maxBytes");
        QTest::newRow("zero bytes") << QByteArray() << RAZipper::kMaxDecompressedBytes;
        QTest::newRow("garbage") << randomBytes(4000) << RAZipper::kMaxDecompressedBytes;
        QTest::newRow("cut short") << compressed(randomBytes(4000)).left(2000) << RAZipper::kMaxDecompressedBytes;
        QTest::newRow("bomb past the cap") << compressed(QByteArray(4 << 20, '\0')) << qint64(1 << 20);
    }

    void givesNothing()
    {
        QFETCH(QByteArray, stream);
        QFETCH(qint64, maxBytes);
        QCOMPARE(RAZipper::dataForCompressedData(stream, maxBytes), std::nullopt);
    }

    void text()
    {
        const QString text = QStringLiteral("{\"t\":\"Grüße\"}");
        const std::optional<QByteArray> stream = RAZipper::compressedDataForString(text);
        QVERIFY(stream);
        QCOMPARE(RAZipper::stringForCompressedData(*stream), std::optional<QString>(text));
    }
};

VELMORA_TEST_MAIN(TestRAZipper)
#include "TestRAZipper.moc"
