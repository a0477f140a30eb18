#include "platform/PrivilegedCommand.h"

#include "platform/VLSettings.h"

#include <QProcess>
#include <QStandardPaths>

#include <unistd.h>

namespace PrivilegedCommand {

CommandLine commandLine(const QStringList &command, Escalation escalation)
{
    if (escalation == Escalation::WhenNotRoot && geteuid() == 0) {
        return {command.value(0), command.mid(1)};
    }
    QStringList words = QProcess::splitCommand(VLSettings().stringValue(SettingKey::escalationCommand));
    if (words.isEmpty()) {
        return {};
    }
    const QString tool = words.takeFirst();
    return {tool.startsWith(QLatin1Char('/')) ? tool : QStandardPaths::findExecutable(tool), words + command};
}

bool wasRefused(int status)
{
    return status == 126 || status == 127;
}

} // namespace PrivilegedCommand
