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
        const QString sh = u"/bin/sh"_s;
        const QString cat = u"/bin/cat"_s;
        const QString none;
        row("output", u"/bin/echo"_s, none, QStringList{u"a b"_s}, Output(), Output("a b\n"));
        row("no output is empty, not null", u"/bin/true"_s, none, QStringList(), Output(), Output(""));
        row("status 1 with output", sh, none, QStringList{u"-c"_s, u"echo out; exit 1"_s}, Output(), Output());
        row("killed", sh, none, QStringList{u"-c"_s, u"kill -9 $$"_s}, Output(), Output());
        row("missing tool", u"/nonexistent/tool"_s, none, QStringList(), Output(), Output());
        row("working folder", u"/bin/pwd"_s, u"/usr"_s, QStringList(), Output(), Output("/usr\n"));
        row("input then end of file", cat, none, QStringList(), Output("yes\n"), Output("yes\n"));
        row("empty input is end of file", cat, none, QStringList(), Output(""), Output(""));
        row("large input and output at once", cat, none, QStringList(), Output(large), Output(large));
        // Without input the pipe stays open: cat waits until timeout ends it with status 124.
        row("no input: standard input stays open", u"/usr/bin/timeout"_s, none, QStringList{u"1"_s, cat}, Output(),
            Output());
        row("a child holding the output is waited for", sh, none,
            QStringList{u"-c"_s, u"(sleep 1; echo late) & echo early"_s}, Output(), Output("early\nlate\n"));
        row("a tool that closed its output early is not waited for", sh, none,
            QStringList{u"-c"_s, u"echo early; exec >&- 2>&-; sleep 30; exit 1"_s}, Output(), Output("early\n"));
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
