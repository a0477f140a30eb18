// The task runner's contract: output captured whole, null on a non-zero status or a tool that cannot start, input
// given and then closed, /dev/null and no terminal without input, the end of output (not of the tool) ending the
// wait, and a tool stopped at its time limit or by its watch, saying why.

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
        // timeout would end a cat that waits on its input with status 124.
        row("no input: standard input is empty", u"/usr/bin/timeout"_s, none, QStringList{u"5"_s, cat}, Output(),
            Output(""));
        // A session of its own has no terminal: nothing can prompt there.
        row("a session of its own", sh, none,
            QStringList{u"-c"_s, u"set -- $(cat /proc/$$/stat); [ \"$6\" = \"$$\" ] && echo own"_s}, Output(),
            Output("own\n"));
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

    void failureText_data()
    {
        columns<QStringList, int, QString, QString>("command", "limitMs", "stopWith", "failure");
        const QString sh = u"/bin/sh"_s;
        row("succeeded", QStringList{u"/bin/true"_s}, 60000, QString(), QString());
        row("missing tool", QStringList{u"/nonexistent/tool"_s}, 60000, QString(), u"tool could not be started"_s);
        row("status", QStringList{sh, u"-c"_s, u"exit 3"_s}, 60000, QString(), u"sh failed with status 3"_s);
        row("signal", QStringList{sh, u"-c"_s, u"kill -9 $$"_s}, 60000, QString(), u"sh was stopped by signal 9"_s);
        row("past its limit, with the child holding its output", QStringList{sh, u"-c"_s, u"sleep 60 & sleep 60"_s},
            1000, QString(), u"sh did not finish within 1 seconds and was stopped"_s);
        row("stopped by its watch", QStringList{u"/bin/sleep"_s, u"60"_s}, 60000, u"too big"_s, u"too big"_s);
    }

    void failureText()
    {
        auto [command, limitMs, stopWith, failure] =
            fetch<QStringList, int, QString, QString>("command", "limitMs", "stopWith", "failure");
        VLSynchronousTask runner;
        runner.setTimeLimit(std::chrono::milliseconds(limitMs));
        runner.setWatch([stopWith] { return stopWith; });
        runner.run(command.first(), {}, command.mid(1), std::nullopt);
        QCOMPARE(runner.failureText(), failure);
    }
};

VELMORA_TEST_MAIN(TestVLSynchronousTask)
#include "TestVLSynchronousTask.moc"
