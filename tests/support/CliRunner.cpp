#include "support/CliRunner.h"

#include <QProcess>

CliResult runCli(const QStringList &arguments, const QProcessEnvironment &environment)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(VELMORA_BINARY_DIR "/src/velmora-cli"), arguments);
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
