#include "support/CliRunner.h"

#include <QProcess>

namespace {

CliResult finish(QProcess &process)
{
    CliResult result;
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit) {
        process.kill();
        process.waitForFinished();
        result.err = "velmora-cli did not finish normally";
        return result;
    }
    result.exitCode = process.exitCode();
    result.out = process.readAllStandardOutput();
    result.err = process.readAllStandardError();
    return result;
}

} // namespace

CliResult runCli(const QStringList &arguments, const QProcessEnvironment &environment)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(VELMORA_BINARY_DIR "/src/velmora-cli"), arguments);
    return finish(process);
}

CliResult runCli(const QStringList &arguments, const QByteArray &input, const std::function<void()> &beforeInput,
                 const QProcessEnvironment &environment)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(VELMORA_BINARY_DIR "/src/velmora-cli"), arguments);
    process.waitForStarted();
    if (beforeInput) {
        beforeInput();
    }
    process.write(input);
    process.closeWriteChannel();
    return finish(process);
}
