#include "cli/AccountCommand.h"

#include "cli/CliFeedback.h"
#include "cli/MemberSession.h"
#include "platform/TerminalInput.h"
#include "scan/VLMemberLists.h"
#include "scan/VLScanData.h"
#include "services/VLKeychain.h"
#include "services/VLMemberAccount.h"
#include "services/VLMemberProfileSaver.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace {

struct Options
{
    QHash<QString, QString> values; // --email, --first, --last
    QStringList settings;           // each --set
    bool passwordFromStdin = false;
    QString problem;
};

Options parseOptions(const QStringList &words, const QStringList &valued)
{
    Options options;
    for (qsizetype i = 0; i < words.size(); ++i) {
        const QString &word = words.at(i);
        if (word == QLatin1String("--password-stdin")) {
            options.passwordFromStdin = true;
        } else if (word.startsWith(QLatin1String("--password"))) {
            options.problem = Cli::tr("a password is never taken from the command line; type it when asked, or "
                                      "pipe it in with --password-stdin");
        } else if (valued.contains(word) && i + 1 < words.size()) {
            if (word == QLatin1String("--set")) {
                options.settings.append(words.at(++i));
            } else {
                options.values.insert(word, words.at(++i));
            }
        } else {
            options.problem = Cli::tr("unexpected argument %1").arg(word);
        }
        if (!options.problem.isEmpty()) {
            break;
        }
    }
    return options;
}

// Signed in: said so, with a word when the keychain could not keep the password for the next run.
int signedIn(CommandContext &ctx)
{
    if (VLKeychain::accountsForLabel(QString::fromLatin1(VLMemberAccount::kKeychainName)).isEmpty()) {
        ctx.err << "notice: " << Cli::tr("no keychain is available; the sign-in holds for this run only") << '\n';
    }
    return ExitSuccess;
}

std::optional<QString> password(bool fromStdin)
{
    return fromStdin ? TerminalInput::readStdinLine() : TerminalInput::askLine(Cli::tr("Password: "), false);
}

// The profile's fields by the names --set takes.
QList<QPair<QString, QString *>> profileFields(VLMemberAccount &account)
{
    return {{QStringLiteral("firstname"), &account.firstname},
            {QStringLiteral("lastname"), &account.lastname},
            {QStringLiteral("email"), &account.email_string},
            {QStringLiteral("address"), &account.address},
            {QStringLiteral("city"), &account.city},
            {QStringLiteral("state"), &account.state},
            {QStringLiteral("zip"), &account.zip},
            {QStringLiteral("country"), &account.country}};
}

} // namespace

QString AccountCommand::description() const
{
    return Cli::tr("Sign in, sign up, or change the member account");
}

QString AccountCommand::help() const
{
    return Cli::tr("Usage: velmora-cli account login [--email E] [--password-stdin]\n"
                   "       velmora-cli account signup --email E --first F --last L [--password-stdin]\n"
                   "       velmora-cli account status | logout | forgot-password\n"
                   "       velmora-cli account profile [--set FIELD=VALUE...]\n"
                   "\n"
                   "The member account with the Velmora service. login and signup ask on the terminal for what is\n"
                   "missing, the password without echo; --password-stdin reads it from the first line of stdin\n"
                   "instead. A password is never taken as an argument. Once signed in, the password is kept in the\n"
                   "keychain (the desktop's Secret Service), so later runs are signed in too; logout forgets it.\n"
                   "profile prints the member's profile, or changes fields of it: firstname, lastname, email,\n"
                   "address, city, state, zip, country. forgot-password prints the page that resets a password and\n"
                   "opens it when a desktop session is there. status and profile print JSON with --json.\n");
}

int AccountCommand::usage(const QString &problem, CommandContext &ctx) const
{
    ctx.err << "error: " << problem << "\n\n" << help();
    return ExitUsage;
}

int AccountCommand::execute(const QStringList &arguments, CommandContext &ctx)
{
    const QString action = arguments.value(0);
    const QStringList options = arguments.mid(1);
    if (action == QLatin1String("login")) {
        return login(options, ctx);
    }
    if (action == QLatin1String("signup")) {
        return signup(options, ctx);
    }
    if (action == QLatin1String("profile")) {
        return profile(options, ctx);
    }
    if (!options.isEmpty()) {
        return usage(Cli::tr("unexpected argument %1").arg(options.first()), ctx);
    }
    if (action == QLatin1String("status")) {
        return status(ctx);
    }
    if (action == QLatin1String("logout")) {
        return logout(ctx);
    }
    if (action == QLatin1String("forgot-password")) {
        return forgotPassword(ctx);
    }
    return usage(action.isEmpty() ? Cli::tr("name an action") : Cli::tr("unknown action %1").arg(action), ctx);
}

int AccountCommand::login(const QStringList &words, CommandContext &ctx)
{
    const Options options = parseOptions(words, {QStringLiteral("--email")});
    if (!options.problem.isEmpty()) {
        return usage(options.problem, ctx);
    }
    CliFeedback feedback(ctx.err);
    VLMemberAccount account;
    const std::optional<QString> email = options.values.contains(QStringLiteral("--email"))
                                             ? options.values.value(QStringLiteral("--email"))
                                             : TerminalInput::askLine(Cli::tr("Email: "), true);
    const std::optional<QString> typed = email ? password(options.passwordFromStdin) : std::nullopt;
    if (!email || !typed) {
        ctx.err << "error: " << Cli::tr("no e-mail address or password was given") << '\n';
        return ExitUsage;
    }
    account.email = *email;
    account.password = *typed;
    account.login();
    if (!account.isLoggedIn) {
        ctx.err << "error: "
                << (account.errorfield.isEmpty() ? Cli::tr("the service did not answer") : account.errorfield) << '\n';
        return ExitFailure;
    }
    printMember(account, ctx);
    return signedIn(ctx);
}

int AccountCommand::signup(const QStringList &words, CommandContext &ctx)
{
    const Options options =
        parseOptions(words, {QStringLiteral("--email"), QStringLiteral("--first"), QStringLiteral("--last")});
    if (!options.problem.isEmpty()) {
        return usage(options.problem, ctx);
    }
    CliFeedback feedback(ctx.err);
    VLMemberAccount account;
    const std::optional<QString> typed = password(options.passwordFromStdin);
    account.signupEmail = options.values.value(QStringLiteral("--email"));
    account.signupFirstName = options.values.value(QStringLiteral("--first"));
    account.signupLastName = options.values.value(QStringLiteral("--last"));
    account.signupPassword = typed.value_or(QString());
    account.createAccount();
    if (!account.isLoggedIn) {
        ctx.err << "error: " << account.createErrorfield << '\n';
        return ExitFailure;
    }
    printMember(account, ctx);
    return signedIn(ctx);
}

void AccountCommand::printMember(const VLMemberAccount &account, CommandContext &ctx) const
{
    if (ctx.json) {
        QJsonObject member = {{QStringLiteral("isLoggedIn"), account.isLoggedIn}};
        if (account.isLoggedIn) {
            member.insert(QStringLiteral("memberID"), account.memberID);
            member.insert(QStringLiteral("firstname"), account.firstname);
            member.insert(QStringLiteral("lastname"), account.lastname);
            member.insert(QStringLiteral("fullname"), account.fullname);
            member.insert(QStringLiteral("email"), account.email_string);
            member.insert(QStringLiteral("address"), account.address);
            member.insert(QStringLiteral("city"), account.city);
            member.insert(QStringLiteral("state"), account.state);
            member.insert(QStringLiteral("zip"), account.zip);
            member.insert(QStringLiteral("country"), account.country);
            member.insert(QStringLiteral("created_on"), account.created_on);
        }
        ctx.out << QJsonDocument(member).toJson(QJsonDocument::Indented);
    } else if (account.isLoggedIn) {
        ctx.out << Cli::tr("Signed in as %1 <%2>, member %3")
                       .arg(account.fullname, account.email_string)
                       .arg(account.memberID)
                << '\n';
    } else {
        ctx.out << Cli::tr("Not signed in") << '\n';
    }
}

int AccountCommand::status(CommandContext &ctx)
{
    CliFeedback feedback(ctx.err);
    VLMemberAccount account;
    MemberSession::restore(account);
    printMember(account, ctx);
    return ExitSuccess;
}

int AccountCommand::profile(const QStringList &words, CommandContext &ctx)
{
    const Options options = parseOptions(words, {QStringLiteral("--set")});
    if (!options.problem.isEmpty()) {
        return usage(options.problem, ctx);
    }
    CliFeedback feedback(ctx.err);
    VLMemberAccount account;
    if (!MemberSession::require(account, ctx)) {
        return ExitFailure;
    }
    const auto fields = profileFields(account);
    for (const QString &setting : options.settings) {
        const QString field = setting.section(QLatin1Char('='), 0, 0);
        const auto known =
            std::find_if(fields.cbegin(), fields.cend(), [&](const auto &f) { return f.first == field; });
        if (!setting.contains(QLatin1Char('=')) || known == fields.cend()) {
            return usage(Cli::tr("unknown profile field %1").arg(field), ctx);
        }
        *known->second = setting.section(QLatin1Char('='), 1);
    }
    if (!options.settings.isEmpty()) {
        bool saved = false;
        account.showAlert = [&ctx, &saved](const QString &message, bool critical) {
            if (critical) {
                ctx.err << "error: " << message << '\n';
            }
            saved = !critical;
        };
        VLMemberProfileSaver *saver = account.saveAccountInfo();
        if (!saver) {
            return ExitFailure;
        }
        int status = 0;
        QObject::connect(saver, &VLServiceConnection::done, saver, [&status, saver] { status = saver->serverResonse; });
        saver->waitUntilDone();
        if (!saved || status < 200 || status >= 300) {
            ctx.err << "error: " << Cli::tr("the service did not save the profile") << '\n';
            return ExitFailure;
        }
    }
    if (ctx.json) {
        printMember(account, ctx);
        return ExitSuccess;
    }
    for (const auto &[field, value] : fields) {
        ctx.out << field << '\t' << *value << '\n';
    }
    return ExitSuccess;
}

int AccountCommand::logout(CommandContext &ctx)
{
    CliFeedback feedback(ctx.err);
    VLMemberAccount account;
    account.logout();
    // The member's lists leave the stored scan with the member.
    VLScanData store;
    VLMemberLists::removePurchasesAndWatchListApps(store);
    ctx.out << Cli::tr("Signed out") << '\n';
    return ExitSuccess;
}

int AccountCommand::forgotPassword(CommandContext &ctx)
{
    VLMemberAccount account;
    ctx.out << account.forgotpassword() << '\n';
    return ExitSuccess;
}
