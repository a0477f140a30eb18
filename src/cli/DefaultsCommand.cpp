#include "cli/DefaultsCommand.h"

#include "cli/SettingText.h"
#include "platform/VLSettings.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

namespace {

// Every setting that has a value: the table's keys in table order, then keys written by hand.
QList<QPair<QString, QVariant>> allValues(const VLSettings &settings)
{
    QList<QPair<QString, QVariant>> values;
    QStringList seen;
    for (const SettingDefinition &definition : VLSettings::definitions()) {
        const QString key = QLatin1String(definition.key);
        seen.append(key);
        const QVariant value = settings.value(key);
        if (value.isValid()) {
            values.append({key, value});
        }
    }
    for (const QString &key : settings.storedKeys()) {
        if (!seen.contains(key)) {
            values.append({key, settings.value(key)});
        }
    }
    return values;
}

// Settings are kept by name in a file where "/" and "\\" would nest one name inside another.
bool isKey(const QString &key)
{
    return !key.isEmpty() && !key.contains(QLatin1Char('/')) && !key.contains(QLatin1Char('\\'));
}

int cannotWrite(const VLSettings &settings, CommandContext &ctx)
{
    ctx.err << "error: " << Cli::tr("cannot write the settings file %1").arg(settings.fileName()) << ": "
            << settings.writeError() << '\n';
    return ExitFailure;
}

} // namespace

QString DefaultsCommand::description() const
{
    return Cli::tr("Read, write and delete the program's settings");
}

QString DefaultsCommand::help() const
{
    return Cli::tr(
        "Usage: velmora-cli defaults read [KEY]\n"
        "       velmora-cli defaults write KEY [-bool|-int|-float|-string|-array] VALUE...\n"
        "       velmora-cli defaults delete KEY\n"
        "\n"
        "read without a KEY prints every setting with its value, the registered default where none was\n"
        "written; with a KEY, only that value. With --json, prints JSON instead.\n"
        "write stores a value: a boolean (YES, NO, true, false, 1, 0), an integer, a decimal number, a text,\n"
        "or with -array a list of texts (each further word is one element). Without a type, a known setting\n"
        "takes its own type and any other key a text.\n"
        "delete removes a written value, so that the registered default applies again.\n");
}

int DefaultsCommand::usage(const QString &message, CommandContext &ctx)
{
    ctx.err << "error: " << message << "\n\n" << help();
    return ExitUsage;
}

int DefaultsCommand::execute(const QStringList &arguments, CommandContext &ctx)
{
    const QString verb = arguments.value(0);
    const QStringList rest = arguments.mid(1);
    if (verb == QLatin1String("read")) {
        return read(rest, ctx);
    }
    if (verb == QLatin1String("write")) {
        return write(rest, ctx);
    }
    if (verb == QLatin1String("delete")) {
        return remove(rest, ctx);
    }
    return usage(
        verb.isEmpty() ? Cli::tr("defaults needs read, write or delete") : Cli::tr("unknown action %1").arg(verb), ctx);
}

int DefaultsCommand::read(const QStringList &arguments, CommandContext &ctx)
{
    if (arguments.size() > 1) {
        return usage(Cli::tr("defaults read takes at most one KEY"), ctx);
    }
    VLSettings settings;
    if (arguments.isEmpty()) {
        const auto values = allValues(settings);
        if (ctx.json) {
            QJsonObject object;
            for (const auto &[key, value] : values) {
                object.insert(key, QJsonValue::fromVariant(value));
            }
            ctx.out << QJsonDocument(object).toJson(QJsonDocument::Indented);
        } else {
            ctx.out << SettingText::dictionary(values);
        }
        return ExitSuccess;
    }
    const QString key = arguments.first();
    const QVariant value = settings.value(key);
    if (!value.isValid()) {
        ctx.err << "error: " << Cli::tr("the setting %1 has no value").arg(key) << '\n';
        return ExitFailure;
    }
    if (ctx.json) {
        ctx.out << QJsonDocument(QJsonObject{{key, QJsonValue::fromVariant(value)}}).toJson(QJsonDocument::Indented);
    } else {
        ctx.out << SettingText::value(value, 0) << '\n';
    }
    return ExitSuccess;
}

int DefaultsCommand::write(const QStringList &arguments, CommandContext &ctx)
{
    if (arguments.size() < 2) {
        return usage(Cli::tr("defaults write needs a KEY and a VALUE"), ctx);
    }
    const QString key = arguments.first();
    if (!isKey(key)) {
        return usage(Cli::tr("%1 cannot be a setting's name").arg(key), ctx);
    }
    QStringList words = arguments.mid(1);
    std::optional<SettingType> type;
    if (words.first().startsWith(QLatin1Char('-'))) {
        type = SettingText::typeOfFlag(words.first());
        if (!type) {
            return usage(Cli::tr("unknown type %1").arg(words.first()), ctx);
        }
        words.removeFirst();
    }
    const SettingDefinition *definition = VLSettings::definition(key);
    if (!type) {
        type = definition ? definition->type : SettingType::String;
        if (type == SettingType::Array && words.size() != 1) {
            return usage(Cli::tr("write a list with -array"), ctx);
        }
    }
    if (definition && !SettingText::fits(*type, definition->type)) {
        return usage(Cli::tr("%1 is a setting of type %2").arg(key, SettingText::typeName(definition->type)), ctx);
    }
    if (*type != SettingType::Array && words.size() != 1) {
        return usage(Cli::tr("defaults write needs exactly one VALUE for %1").arg(key), ctx);
    }
    QString problem;
    const QVariant value = SettingText::parse(*type, words, &problem);
    if (!value.isValid()) {
        return usage(problem, ctx);
    }
    VLSettings settings;
    if (!settings.setValue(key, definition ? SettingText::convert(value, definition->type) : value)) {
        return cannotWrite(settings, ctx);
    }
    return ExitSuccess;
}

int DefaultsCommand::remove(const QStringList &arguments, CommandContext &ctx)
{
    if (arguments.size() != 1) {
        return usage(Cli::tr("defaults delete needs exactly one KEY"), ctx);
    }
    VLSettings settings;
    if (!settings.contains(arguments.first())) {
        ctx.err << "error: " << Cli::tr("the setting %1 was not written; nothing deleted").arg(arguments.first())
                << '\n';
        return ExitFailure;
    }
    if (!settings.remove(arguments.first())) {
        return cannotWrite(settings, ctx);
    }
    return ExitSuccess;
}
