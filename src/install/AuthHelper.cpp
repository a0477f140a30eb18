#include "install/AuthHelper.h"

#include "install/VLSynchronousTask.h"
#include "install/WorkFolder.h"

#include <QFileInfo>

AuthHelper::AuthHelper() = default;

AuthHelper::AuthHelper(PrivilegedCommand::Escalation escalation) : m_escalation(escalation) {}

bool AuthHelper::copyPathWithForcedAuthentication(const QString &source, const QString &destination)
{
    return runWithForcedAuthentication({WorkFolder::tool(QStringLiteral("cp")), QStringLiteral("-a"),
                                        QStringLiteral("-T"), QStringLiteral("--"), source, destination});
}

bool AuthHelper::removePathWithForcedAuthentication(const QString &path)
{
    return runWithForcedAuthentication(
        {WorkFolder::tool(QStringLiteral("rm")), QStringLiteral("-rf"), QStringLiteral("--"), path});
}

bool AuthHelper::movePathWithForcedAuthentication(const QString &source, const QString &destination)
{
    return runWithForcedAuthentication(
        {WorkFolder::tool(QStringLiteral("mv")), QStringLiteral("-T"), QStringLiteral("--"), source, destination});
}

bool AuthHelper::archivePathWithForcedAuthentication(const QString &source, const QString &archive)
{
    const QFileInfo info(source);
    return runWithForcedAuthentication({WorkFolder::tool(QStringLiteral("bsdtar")), QStringLiteral("--format"),
                                        QStringLiteral("zip"), QStringLiteral("-cf"), archive, QStringLiteral("-C"),
                                        info.absolutePath(), QStringLiteral("--"), info.fileName()});
}

bool AuthHelper::runWithForcedAuthentication(const QStringList &command)
{
    if (m_refused) {
        return false;
    }
    const CommandLine line = PrivilegedCommand::commandLine(command, m_escalation);
    if (line.program.isEmpty()) {
        m_refused = true;
        return false;
    }
    VLSynchronousTask task;
    task.run(line.program, {}, line.arguments, QByteArray());
    const bool escalated = line.program != command.value(0);
    if (escalated && PrivilegedCommand::wasRefused(task.result())) {
        m_refused = true;
    }
    return task.done() && task.result() == 0;
}
