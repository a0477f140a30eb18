// The matching reply's zlib streams: what inflates, what gives nothing, and the cap that keeps a bomb out of memory.

#include "platform/RAZipper.h"
#include "support/DataTable.h"
#include "support/TestMain.h"

#include <QRandomGenerator>

namespace {

QByteArray randomBytes(qsizetype size)
{
    QByteArray bytes;
    QRandomGenerator generator(7);
    while (bytes.size() < size) {
        bytes.append(static_cast<char>(generator.generate()));
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
    void inflate_data()
    {
        columns<QByteArray, qint64, std::optional<QByteArray>>("stream", "maxBytes", "data");
        const qint64 cap = RAZipper::kMaxDecompressedBytes;
        const QByteArray noise = randomBytes(4000);
        const QByteArray letters(1 << 20, 'a');
        QTest::newRow("empty data") << compressed({}) << cap << std::optional(QByteArray());
        QTest::newRow("incompressible: the first buffer fits") << compressed(noise) << cap << std::optional(noise);
        QTest::newRow("1000:1, the buffer doubles") << compressed(letters) << cap << std::optional(letters);
        QTest::newRow("exactly the cap") << compressed(letters) << qint64(1 << 20) << std::optional(letters);
        QTest::newRow("a bomb past the cap")
            << compressed(QByteArray(4 << 20, 0)) << qint64(1 << 20) << std::optional<QByteArray>();
        QTest::newRow("zero bytes") << QByteArray() << cap << std::optional<QByteArray>();
        QTest::newRow("garbage") << noise << cap << std::optional<QByteArray>();
        QTest::newRow("cut short") << compressed(noise).left(2000) << cap << std::optional<QByteArray>();
    }

    void inflate()
    {
        auto [stream, maxBytes] = fetch<QByteArray, qint64>("stream", "maxBytes");
        QTEST(RAZipper::dataForCompressedData(stream, maxBytes), "data");
    }

    void text()
    {
        const QString text = QStringLiteral("{\"t\":\"Grüße\"}");
        QCOMPARE(RAZipper::stringForCompressedData(RAZipper::compressedDataForString(text).value_or(QByteArray())),
                 std::optional(text));
    }
};

VELMORA_TEST_MAIN(TestRAZipper)
#include "TestRAZipper.moc"
