#include "cli/ChoiceCommand.h"

#include "cli/AppLookup.h"

#include "model/UserChoices.h"
#include "scan/VLScanData.h"
#include "services/VLGoogleTracking.h"

QString ChoiceCommand::name() const
{
    switch (m_choice) {
    case Choice::Ignore:
        return QStringLiteral("ignore");
    case Choice::SetCurrent:
        return QStringLiteral("set-current");
    case Choice::UnsetCurrent:
        return QStringLiteral("unset-current");
    case Choice::DontCheck:
        return QStringLiteral("dont-check");
    }
    return {};
}

QString ChoiceCommand::description() const
{
    switch (m_choice) {
    case Choice::Ignore:
        return Cli::tr("Skip an app's current update");
    case Choice::SetCurrent:
        return Cli::tr("Treat an app's installed copy as the newest version");
    case Choice::UnsetCurrent:
        return Cli::tr("Read an app's installed version from its files again");
    case Choice::DontCheck:
        return Cli::tr("Never list an app as outdated");
    }
    return {};
}

QString ChoiceCommand::help() const
{
    return Cli::tr(
               "Usage: velmora-cli %1 APP [--undo]\n"
               "\n"
               "%2. APP is a display name, a catalogue id or the path of an installed app, as \"velmora-cli list\"\n"
               "shows them. The choice is kept in the stored scan; --undo takes it back.\n")
        .arg(name(), description());
}

void ChoiceCommand::apply(VLApp &app, bool undo) const
{
    switch (m_choice) {
    case Choice::Ignore:
        undo ? UserChoices::unignore(app) : UserChoices::ignore(app);
        if (!undo) {
            VLGoogleTracking::trackProgramEvent(QStringLiteral("IGNORE_APP"));
        }
        break;
    case Choice::SetCurrent:
    case Choice::UnsetCurrent:
        if ((m_choice == Choice::SetCurrent) != undo) {
            UserChoices::setVersionToCurrent(app);
            VLGoogleTracking::trackProgramEvent(QStringLiteral("SET_VERSION_TO_CURRENT"));
        } else {
            UserChoices::unsetVersionToCurrent(app);
            VLGoogleTracking::trackProgramEvent(QStringLiteral("UNSET_VERSION_TO_CURRENT"));
        }
        break;
    case Choice::DontCheck:
        UserChoices::setDontCheckForUpdates(app, !undo);
        break;
    }
}

int ChoiceCommand::execute(const QStringList &arguments, CommandContext &ctx)
{
    const bool undo = arguments.contains(QStringLiteral("--undo"));
    QStringList words = arguments;
    words.removeAll(QStringLiteral("--undo"));
    if (words.size() != 1 || words.first().startsWith(QLatin1String("--"))) {
        ctx.err << "error: " << Cli::tr("name one app") << "\n\n" << help();
        return ExitUsage;
    }
    const QString wanted = words.first();

    VLScanData store;
    VLScanData::Change change(store);
    if (!store.apps()) {
        ctx.err << "error: " << Cli::tr("no check has been made yet; run velmora-cli check first") << '\n';
        return ExitFailure;
    }
    const AppList matches = appsNamed(store.apps().value_or(AppList()), wanted);
    if (matches.size() != 1) {
        ctx.err << "error: "
                << (matches.isEmpty()
                        ? Cli::tr("no app %1 in the stored scan").arg(wanted)
                        : Cli::tr("%1 names %2 apps; use a catalogue id or a path").arg(wanted).arg(matches.size()))
                << '\n';
        return ExitFailure;
    }
    {
        const QMutexLocker lock(&store.mutex());
        apply(*matches.first(), undo);
    }
    if (!store.saveDataToDisk()) {
        ctx.err << "error: " << Cli::tr("the stored scan could not be written") << '\n';
        return ExitFailure;
    }
    return ExitSuccess;
}
