#include "cli/SettingText.h"

#include "cli/Command.h"

#include <QLocale>

namespace {

// Text that old-style property lists leave unquoted; everything else is quoted with its quotes escaped.
QString quotedIfNeeded(const QString &text)
{
    bool plain = !text.isEmpty();
    for (const QChar c : text) {
        if (!(c.isLetterOrNumber() && c.unicode() < 128) && c != QLatin1Char('_') && c != QLatin1Char('.')) {
            plain = false;
            break;
        }
    }
    if (plain) {
        return text;
    }
    QString escaped = text;
    escaped.replace(QLatin1Char('\\'), QLatin1String("\\\\")).replace(QLatin1Char('"'), QLatin1String("\\\""));
    return QLatin1Char('"') + escaped + QLatin1Char('"');
}

QString scalar(const QVariant &value, bool inside)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("1") : QStringLiteral("0");
    case QMetaType::Double:
        return QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
    default:
        return inside ? quotedIfNeeded(value.toString()) : value.toString();
    }
}

bool isList(const QVariant &value)
{
    return value.typeId() == QMetaType::QStringList || value.typeId() == QMetaType::QVariantList;
}

QString listText(const QVariant &value, int indent)
{
    const QString pad(indent, QLatin1Char(' '));
    const QVariantList items = value.toList();
    if (items.isEmpty()) {
        return QStringLiteral("(\n") + pad + QLatin1Char(')');
    }
    QStringList lines;
    for (const QVariant &item : items) {
        lines.append(pad + QStringLiteral("    ") + scalar(item, true));
    }
    return QStringLiteral("(\n") + lines.join(QStringLiteral(",\n")) + QLatin1Char('\n') + pad + QLatin1Char(')');
}

} // namespace

namespace SettingText {

std::optional<SettingType> typeOfFlag(const QString &flag)
{
    if (flag == QLatin1String("-bool") || flag == QLatin1String("-boolean")) {
        return SettingType::Bool;
    }
    if (flag == QLatin1String("-int") || flag == QLatin1String("-integer")) {
        return SettingType::Int;
    }
    if (flag == QLatin1String("-float")) {
        return SettingType::Float;
    }
    if (flag == QLatin1String("-string")) {
        return SettingType::String;
    }
    if (flag == QLatin1String("-array")) {
        return SettingType::Array;
    }
    return std::nullopt;
}

QString typeName(SettingType type)
{
    switch (type) {
    case SettingType::Bool:
        return QStringLiteral("boolean");
    case SettingType::Int:
        return QStringLiteral("integer");
    case SettingType::Float:
        return QStringLiteral("float");
    case SettingType::String:
        return QStringLiteral("string");
    case SettingType::Array:
        return QStringLiteral("array");
    }
    return {};
}

bool fits(SettingType given, SettingType declared)
{
    return given == declared || (given == SettingType::Int && declared == SettingType::Float);
}

QVariant parse(SettingType type, const QStringList &words, QString *problem)
{
    const QString word = words.value(0);
    bool ok = false;
    switch (type) {
    case SettingType::Bool: {
        const QString lower = word.toLower();
        if (lower == QLatin1String("yes") || lower == QLatin1String("true") || lower == QLatin1String("1")) {
            return true;
        }
        if (lower == QLatin1String("no") || lower == QLatin1String("false") || lower == QLatin1String("0")) {
            return false;
        }
        *problem = Cli::tr("%1 is not a boolean (YES, NO, true, false, 1 or 0)").arg(word);
        return {};
    }
    case SettingType::Int: {
        const qlonglong number = word.toLongLong(&ok);
        if (ok) {
            return number;
        }
        *problem = Cli::tr("%1 is not an integer").arg(word);
        return {};
    }
    case SettingType::Float: {
        const double number = word.toDouble(&ok);
        if (ok) {
            return number;
        }
        *problem = Cli::tr("%1 is not a number").arg(word);
        return {};
    }
    case SettingType::String:
        return word;
    case SettingType::Array:
        return words;
    }
    return {};
}

QVariant convert(const QVariant &value, SettingType declared)
{
    if (declared == SettingType::Float && value.typeId() != QMetaType::Double) {
        return value.toDouble();
    }
    return value;
}

QString value(const QVariant &value, int indent)
{
    return isList(value) ? listText(value, indent) : scalar(value, false);
}

QString dictionary(const QList<QPair<QString, QVariant>> &values)
{
    QString text = QStringLiteral("{\n");
    for (const auto &[key, item] : values) {
        text += QStringLiteral("    ") + quotedIfNeeded(key) + QStringLiteral(" = ") +
                (isList(item) ? listText(item, 4) : scalar(item, true)) + QStringLiteral(";\n");
    }
    return text + QStringLiteral("}\n");
}

} // namespace SettingText
