// The task runner's contract: output captured whole, null on a non-zero status or a tool that cannot start, input
// given and then closed, standard input left open without input, and the end of output (not of the tool) ending
// the wait.

#include "install/VLSynchronousTask.h"
#include "support/DataTable.h"
#include "support/TestMain.h"

using namespace Qt::StringLiterals;

using Output = std::optional<QByteArray>;

class TestVLSynchronousTask : public QObject
{
    Q_OBJECT

private slots:
    void task_data()
    {
        columns<QString, QString, QStringList, Output, Output>("tool", "directory", "args", "input", "output");
        const QByteArray large(3 << 20, 'x');
        const Output none;
        const QString sh = u"/bin/sh"_s;
        const QString cat = u"/bin/cat"_s;
        QTest::newRow("output") << u"/bin/echo"_s << QString() << QStringList{u"a b"_s} << none << Output("a b\n");
        QTest::newRow("no output is empty, not null")
            << u"/bin/true"_s << QString() << QStringList() << none << Output("");
        QTest::newRow("status 1 with output")
            << sh << QString() << QStringList{u"-c"_s, u"echo out; exit 1"_s} << none << none;
        QTest::newRow("killed") << sh << QString() << QStringList{u"-c"_s, u"kill -9 $$"_s} << none << none;
        QTest::newRow("missing tool") << u"/nonexistent/tool"_s << QString() << QStringList() << none << none;
        QTest::newRow("working folder") << u"/bin/pwd"_s << u"/usr"_s << QStringList() << none << Output("/usr\n");
        QTest::newRow("input then end of file")
            << cat << QString() << QStringList() << Output("yes\n") << Output("yes\n");
        QTest::newRow("empty input is end of file") << cat << QString() << QStringList() << Output("") << Output("");
        QTest::newRow("large input and output at once")
            << cat << QString() << QStringList() << Output(large) << Output(large);
        // Without input the pipe stays open: cat waits until timeout ends it with status 124.
        QTest::newRow("no input: standard input stays open")
            << u"/usr/bin/timeout"_s << QString() << QStringList{u"1"_s, cat} << none << none;
        QTest::newRow("a child holding the output is waited for")
            << sh << QString() << QStringList{u"-c"_s, u"(sleep 1; echo late) & echo early"_s} << none
            << Output("early\nlate\n");
        QTest::newRow("a tool that closed its output early is not waited for")
            << sh << QString() << QStringList{u"-c"_s, u"echo early; exec >&- 2>&-; sleep 30; exit 1"_s} << none
            << Output("early\n");
    }

    void task()
    {
        auto [tool, directory, args, input, output] =
            fetch<QString, QString, QStringList, Output, Output>("tool", "directory", "args", "input", "output");
        QCOMPARE(VLSynchronousTask::task(tool, directory, args, input), output);
    }
};

VELMORA_TEST_MAIN(TestVLSynchronousTask)
#include "TestVLSynchronousTask.moc"
