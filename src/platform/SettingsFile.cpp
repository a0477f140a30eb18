#include "platform/SettingsFile.h"

#include "platform/AtomicFile.h"
#include "platform/Log.h"

#include <QFileDevice>

#include <optional>
#include <utility>

namespace SettingsFile {
namespace {

thread_local QString t_lastWriteFailure;

// Keys outside any group; a group that is itself named "General" is written "%General".
const QString kTopSection = QStringLiteral("General");
const QString kEscapedTopSection = QStringLiteral("%General");
const QString kNoValue = QStringLiteral("@Invalid()");
// The characters written as a backslash and a letter, and their letters.
const QString kNamedControls = QStringLiteral("\a\b\f\n\r\t\v");
const QString kControlLetters = QStringLiteral("abfnrtv");

bool isHexDigit(char32_t c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

uint digitValue(char32_t c)
{
    return c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10;
}

QString hex(uint value, int width = 0)
{
    return QStringLiteral("%1").arg(value, width, 16, QLatin1Char('0')).toUpper();
}

// Letters, digits and "_-." stand as they are, "/" becomes "\", anything else %XX or %UXXXX.
QString escapedKey(const QString &key)
{
    QString out;
    for (const QChar c : key) {
        const char16_t u = c.unicode();
        if (u == '/') {
            out += QLatin1Char('\\');
        } else if (u < 128 && (c.isLetterOrNumber() || u == '_' || u == '-' || u == '.')) {
            out += c;
        } else if (u <= 0xFF) {
            out += QLatin1Char('%') + hex(u, 2);
        } else {
            out += QStringLiteral("%U") + hex(u, 4);
        }
    }
    return out;
}

// The number in the count hex digits at text[from], when they are all there.
std::optional<uint> hexNumber(QStringView text, qsizetype from, qsizetype count)
{
    if (from + count > text.size()) {
        return std::nullopt;
    }
    uint value = 0;
    for (qsizetype j = from; j < from + count; ++j) {
        if (!isHexDigit(text.at(j).unicode())) {
            return std::nullopt;
        }
        value = value * 16 + digitValue(text.at(j).unicode());
    }
    return value;
}

QString unescapedKey(QStringView text)
{
    QString out;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        const bool wide = c == QLatin1Char('%') && i + 1 < text.size() && text.at(i + 1) == QLatin1Char('U');
        const std::optional<uint> code =
            c == QLatin1Char('%') ? hexNumber(text, i + (wide ? 2 : 1), wide ? 4 : 2) : std::nullopt;
        if (code) {
            out += QChar(char16_t(*code));
            i += wide ? 5 : 2;
        } else {
            out += c == QLatin1Char('\\') ? QLatin1Char('/') : c;
        }
    }
    return out;
}

// One text, quoted when it holds a separator or starts or ends with a space; a leading "@" is doubled, as "@" starts
// Qt's type markers. After a \x escape a hex digit is escaped too, so that it is not read as part of the number.
QString escapedText(const QString &text)
{
    QString out = text.startsWith(QLatin1Char('@')) ? QStringLiteral("@") : QString();
    bool escapeHexDigit = false;
    for (const QChar c : text) {
        const char16_t u = c.unicode();
        if (escapeHexDigit && isHexDigit(u)) {
            out += QStringLiteral("\\x") + hex(u);
            continue;
        }
        escapeHexDigit = false;
        if (const qsizetype n = kNamedControls.indexOf(c); n >= 0) {
            out += QLatin1Char('\\') + kControlLetters.at(n);
        } else if (u == '"' || u == '\\') {
            out += QLatin1Char('\\') + c;
        } else if (u < 0x20 || u == 0x7F) {
            out += QStringLiteral("\\x") + hex(u);
            escapeHexDigit = true;
        } else {
            out += c;
        }
    }
    const bool quoted = text.contains(QLatin1Char(';')) || text.contains(QLatin1Char(',')) ||
                        text.contains(QLatin1Char('=')) || text.startsWith(QLatin1Char(' ')) ||
                        text.endsWith(QLatin1Char(' '));
    return quoted ? QLatin1Char('"') + out + QLatin1Char('"') : out;
}

QString escapedValue(const QVariant &value)
{
    if (!value.isValid()) {
        return kNoValue;
    }
    if (value.typeId() == QMetaType::QStringList || value.typeId() == QMetaType::QVariantList) {
        const QStringList items = value.toStringList();
        QStringList out;
        for (const QString &item : items) {
            out.append(escapedText(item));
        }
        return items.isEmpty() ? kNoValue : out.join(QStringLiteral(", "));
    }
    if (value.typeId() == QMetaType::Bool) {
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    }
    return escapedText(value.toString());
}

// The character after a backslash at text[i]; i is left on the escape's last character.
QChar unescaped(QStringView text, qsizetype &i)
{
    const QChar c = text.at(i);
    if (const qsizetype n = kControlLetters.indexOf(c); n >= 0) {
        return kNamedControls.at(n);
    }
    if (c != QLatin1Char('x')) {
        return c; // '"', '\\' and anything unknown stand for themselves
    }
    uint code = 0;
    for (; i + 1 < text.size() && isHexDigit(text.at(i + 1).unicode()); ++i) {
        code = code * 16 + digitValue(text.at(i + 1).unicode());
    }
    return QChar(char16_t(code));
}

QVariant atUnescaped(const QString &text)
{
    if (text == kNoValue) {
        return {};
    }
    return text.startsWith(QLatin1String("@@")) ? text.mid(1) : text;
}

// Comma-separated texts, each maybe quoted; ";" outside quotes starts a comment. One text is a string, more a list.
QVariant parsedValue(QStringView text)
{
    QStringList items;
    QString current;
    bool quoted = false;
    bool started = false;
    qsizetype trailingSpace = 0;
    const auto finish = [&] {
        current.chop(trailingSpace);
        items.append(current);
        current.clear();
        started = false;
        trailingSpace = 0;
    };
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == QLatin1Char('"')) {
            quoted = !quoted;
            started = true;
            trailingSpace = 0;
        } else if (c == QLatin1Char('\\') && i + 1 < text.size()) {
            current += unescaped(text, ++i);
            started = true;
            trailingSpace = 0;
        } else if (quoted) {
            current += c;
        } else if (c == QLatin1Char(';')) {
            break;
        } else if (c == QLatin1Char(',')) {
            finish();
        } else if (c == QLatin1Char(' ') || c == QLatin1Char('\t')) {
            if (started) {
                current += c;
                ++trailingSpace;
            }
        } else {
            current += c;
            started = true;
            trailingSpace = 0;
        }
    }
    finish();
    if (items.size() == 1) {
        return atUnescaped(items.first());
    }
    QStringList list;
    for (const QString &item : std::as_const(items)) {
        list.append(atUnescaped(item).toString());
    }
    return list;
}

bool readFile(QIODevice &device, QSettings::SettingsMap &map)
{
    QString section;
    const QList<QByteArray> lines = device.readAll().split('\n');
    for (const QByteArray &bytes : lines) {
        const QString line = QString::fromUtf8(bytes).trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char(';'))) {
            continue;
        }
        if (line.startsWith(QLatin1Char('[')) && line.endsWith(QLatin1Char(']'))) {
            const QStringView name = QStringView(line).mid(1, line.size() - 2).trimmed();
            section = name == kEscapedTopSection ? kTopSection : unescapedKey(name);
            if (name.compare(kTopSection, Qt::CaseInsensitive) == 0) {
                section.clear();
            }
            continue;
        }
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        if (equals <= 0) {
            continue;
        }
        const QString key = unescapedKey(QStringView(line).left(equals).trimmed());
        map.insert(section.isEmpty() ? key : section + QLatin1Char('/') + key,
                   parsedValue(QStringView(line).mid(equals + 1)));
    }
    return true;
}

// Keys without "/" go under [General], "a/b/c" under [a] as "b\c", as Qt's INI format has them.
bool writeFile(QIODevice &device, const QSettings::SettingsMap &map)
{
    QMap<QString, QString> sections;
    for (auto it = map.constBegin(); it != map.constEnd(); ++it) {
        const qsizetype slash = it.key().indexOf(QLatin1Char('/'));
        const QString section = slash < 0 ? QString() : it.key().left(slash);
        sections[section] += escapedKey(slash < 0 ? it.key() : it.key().mid(slash + 1)) + QLatin1Char('=') +
                             escapedValue(it.value()) + QLatin1Char('\n');
    }
    QString text;
    for (auto it = sections.constBegin(); it != sections.constEnd(); ++it) {
        const QString name = it.key().isEmpty()        ? kTopSection
                             : it.key() == kTopSection ? kEscapedTopSection
                                                       : escapedKey(it.key());
        text += (text.isEmpty() ? QString() : QStringLiteral("\n")) + QLatin1Char('[') + name + QStringLiteral("]\n") +
                it.value();
    }
    // QSettings hands over the open temporary file that it renames over the settings file when this succeeds.
    auto *file = qobject_cast<QFileDevice *>(&device);
    const AtomicFile::Result result = file ? AtomicFile::writeAndSync(file->handle(), text.toUtf8())
                                           : AtomicFile::Result{false, QStringLiteral("not a file")};
    if (!result.ok) {
        t_lastWriteFailure = result.reason;
        vlLog(QStringLiteral("Settings write error %1").arg(result.reason));
    }
    return result.ok;
}

} // namespace

QSettings::Format format()
{
    static const QSettings::Format registered = QSettings::registerFormat(QStringLiteral("ini"), readFile, writeFile);
    return registered;
}

QString takeWriteFailure()
{
    return std::exchange(t_lastWriteFailure, QString());
}

} // namespace SettingsFile
