// Commands for the person who runs the service: read what arrived, manage members and the blacklist.

#include "commands/Commands.h"
#include "commands/Options.h"
#include "members/MemberAccounts.h"

#include <QJsonDocument>
#include <QTextStream>

#include <cstdio>

namespace {

// Prints one JSON object a line, oldest first, for a command that takes no arguments of its own.
int printJsonLines(const QStringList &args, QList<QJsonObject> (*lines)(Storage &))
{
    QCommandLineParser parser;
    Options::addCommon(parser);
    if (!Options::parse(parser, args) || !parser.positionalArguments().isEmpty())
        return Options::usageError(parser);
    auto storage = Options::openStorage(parser);
    if (!storage)
        return 1;
    for (const QJsonObject &line : lines(*storage))
        std::printf("%s\n", QJsonDocument(line).toJson(QJsonDocument::Compact).constData());
    return 0;
}

} // namespace

int reportsCommand(const QStringList &args)
{
    return printJsonLines(args, [](Storage &storage) {
        QList<QJsonObject> lines;
        for (const Report &report : storage.activity->reports()) {
            QJsonObject line = report.fields; // the report texts, decoded
            line.insert(QStringLiteral("id"), report.id);
            line.insert(QStringLiteral("kind"), report.kind);
            line.insert(QStringLiteral("received_at"), report.receivedAt);
            line.insert(QStringLiteral("member_id"), report.memberId);
            lines.append(line);
        }
        return lines;
    });
}

int hitsCommand(const QStringList &args)
{
    return printJsonLines(args, [](Storage &storage) { return storage.activity->hits(); });
}

int crashesCommand(const QStringList &args)
{
    return printJsonLines(args, [](Storage &storage) {
        QList<QJsonObject> lines;
        for (const CrashReport &crash : storage.crashes->crashes()) {
            QJsonObject line;
            line.insert(QStringLiteral("id"), crash.id);
            line.insert(QStringLiteral("received_at"), crash.receivedAt);
            line.insert(QStringLiteral("version"), crash.version);
            line.insert(QStringLiteral("penguin"), crash.installation);
            line.insert(QStringLiteral("details"), crash.details);
            line.insert(QStringLiteral("report"), QString::fromUtf8(crash.report)); // as it arrived
            lines.append(line);
        }
        return lines;
    });
}

int addMemberCommand(const QStringList &args)
{
    QCommandLineParser parser;
    Options::addCommon(parser);
    const QString email = QStringLiteral("email"), password = QStringLiteral("password");
    const QString first = QStringLiteral("first"), last = QStringLiteral("last");
    parser.addOption({email, QStringLiteral("E-mail address."), QStringLiteral("E")});
    parser.addOption(
        {password, QStringLiteral("Password; \"-\" reads it from the first line of stdin."), QStringLiteral("P")});
    parser.addOption({first, QStringLiteral("First name."), QStringLiteral("F")});
    parser.addOption({last, QStringLiteral("Last name."), QStringLiteral("L")});
    if (!Options::parse(parser, args) || !parser.isSet(email) || !parser.isSet(password))
        return Options::usageError(parser);
    QString secret = parser.value(password);
    if (secret == u'-')
        secret = QTextStream(stdin).readLine();
    auto storage = Options::openStorage(parser);
    auto secrets = Options::openSecrets(parser);
    if (!storage || !secrets)
        return 1;
    QString error;
    const auto member =
        MemberAccounts::create(*storage->members, *secrets,
                               {parser.value(email), secret, parser.value(first), parser.value(last), {}}, &error);
    if (!member) {
        std::fprintf(stderr, "error: %s\n", qUtf8Printable(error));
        return 1;
    }
    std::printf("%lld\n", member->id);
    return 0;
}

int blacklistCommand(const QStringList &args)
{
    QCommandLineParser parser;
    Options::addCommon(parser);
    parser.addPositionalArgument(QStringLiteral("add|remove NAME"), QStringLiteral("Change the list."));
    if (!Options::parse(parser, args))
        return Options::usageError(parser);
    const QStringList words = parser.positionalArguments();
    if (!words.isEmpty() &&
        (words.size() != 2 || (words[0] != QLatin1StringView("add") && words[0] != QLatin1StringView("remove"))))
        return Options::usageError(parser);
    auto storage = Options::openStorage(parser);
    if (!storage)
        return 1;
    if (words.isEmpty()) {
        for (const QString &name : storage->catalogue->blacklist())
            std::printf("%s\n", qUtf8Printable(name));
        return 0;
    }
    const bool done = words[0] == QLatin1StringView("add") ? storage->catalogue->addToBlacklist(words[1])
                                                           : storage->catalogue->removeFromBlacklist(words[1]);
    return done ? 0 : 1;
}
