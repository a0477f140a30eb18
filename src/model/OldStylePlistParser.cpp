#include "model/OldStylePlistParser.h"

#include "model/PlistBudget.h"

#include <QStringDecoder>

#include <algorithm>
#include <cctype>

namespace {

class Parser
{
public:
    explicit Parser(const QString &text) : m_text(text) {}

    std::optional<QVariantMap> parseTopLevel()
    {
        skipSpaceAndComments();
        const PlistBudget::Level level(m_budget);
        if (!m_budget.spend()) {
            return fail(PlistBudget::tooManyObjects());
        }
        // A file may hold a braced dictionary or, as .strings files do, bare pairs.
        if (peek() == u'{') {
            ++m_pos;
            auto dict = parsePairs(u'}');
            if (!dict) {
                return std::nullopt;
            }
            skipSpaceAndComments();
            if (!atEnd()) {
                return fail(QStringLiteral("text after the closing brace"));
            }
            return dict;
        }
        return parsePairs(QChar());
    }

    QString problem() const { return m_problem; }

private:
    std::nullopt_t fail(const QString &why)
    {
        if (m_problem.isEmpty()) {
            m_problem = QStringLiteral("%1 at character %2").arg(why).arg(m_pos);
        }
        return std::nullopt;
    }

    bool atEnd() const { return m_pos >= m_text.size(); }
    QChar peek() const { return atEnd() ? QChar() : m_text.at(m_pos); }

    void skipSpaceAndComments()
    {
        while (!atEnd()) {
            const QChar c = peek();
            const QStringView rest = QStringView(m_text).mid(m_pos);
            if (c.isSpace() || c == QChar(0xFEFF)) {
                ++m_pos;
            } else if (rest.startsWith(u"//")) {
                const qsizetype end = m_text.indexOf(QLatin1Char('\n'), m_pos);
                m_pos = end < 0 ? m_text.size() : end + 1;
            } else if (rest.startsWith(u"/*")) {
                const qsizetype end = m_text.indexOf(QLatin1String("*/"), m_pos + 2);
                m_pos = end < 0 ? m_text.size() : end + 2;
            } else {
                return;
            }
        }
    }

    // Pairs up to the closing character (a null QChar: up to the end of the text).
    std::optional<QVariantMap> parsePairs(QChar closing)
    {
        QVariantMap dict;
        for (;;) {
            skipSpaceAndComments();
            if (closing.isNull() ? atEnd() : peek() == closing) {
                if (!closing.isNull()) {
                    ++m_pos;
                }
                return dict;
            }
            if (atEnd()) {
                return fail(QStringLiteral("missing closing brace"));
            }
            const auto key = parseString();
            if (!key) {
                return std::nullopt;
            }
            if (!m_budget.spend()) {
                return fail(PlistBudget::tooManyObjects());
            }
            skipSpaceAndComments();
            QVariant value = *key; // a lone key stands for itself, as in "key";
            if (peek() == u'=') {
                ++m_pos;
                skipSpaceAndComments();
                auto parsed = parseValue();
                if (!parsed) {
                    return std::nullopt;
                }
                value = *parsed;
                skipSpaceAndComments();
            }
            if (peek() != u';') {
                return fail(QStringLiteral("missing semicolon"));
            }
            ++m_pos;
            dict.insert(*key, value);
        }
    }

    std::optional<QVariant> parseValue()
    {
        if (!m_budget.spend()) {
            return fail(PlistBudget::tooManyObjects());
        }
        const QChar c = peek();
        if (c == u'<') {
            return parseData();
        }
        if (c != u'{' && c != u'(') {
            auto text = parseString();
            return text ? std::optional<QVariant>(*text) : std::nullopt;
        }
        const PlistBudget::Level level(m_budget);
        if (!level.ok()) {
            return fail(PlistBudget::tooDeep());
        }
        ++m_pos;
        if (c == u'{') {
            auto dict = parsePairs(u'}');
            return dict ? std::optional<QVariant>(*dict) : std::nullopt;
        }
        auto list = parseArray();
        return list ? std::optional<QVariant>(*list) : std::nullopt;
    }

    // <0fbd 7788>: bytes in hexadecimal, blanks between them allowed.
    std::optional<QVariant> parseData()
    {
        const qsizetype end = m_text.indexOf(QLatin1Char('>'), m_pos);
        if (end < 0) {
            return fail(QStringLiteral("unterminated data"));
        }
        QByteArray hex = QStringView(m_text).mid(m_pos + 1, end - m_pos - 1).toLatin1();
        hex.removeIf([](char c) { return std::isspace(uchar(c)); });
        const auto isHex = [](char c) { return std::isxdigit(uchar(c)); };
        if (hex.size() % 2 != 0 || !std::all_of(hex.cbegin(), hex.cend(), isHex)) {
            return fail(QStringLiteral("bad data"));
        }
        m_pos = end + 1;
        return QByteArray::fromHex(hex);
    }

    std::optional<QVariantList> parseArray()
    {
        QVariantList list;
        for (;;) {
            skipSpaceAndComments();
            if (peek() == u')') {
                ++m_pos;
                return list;
            }
            auto value = parseValue();
            if (!value) {
                return std::nullopt;
            }
            list.append(*value);
            skipSpaceAndComments();
            if (peek() == u',') {
                ++m_pos;
            } else if (peek() != u')') {
                return fail(QStringLiteral("missing comma in array"));
            }
        }
    }

    static bool isUnquotedChar(QChar c) { return c.isLetterOrNumber() || QStringView(u"_$+/:.-").contains(c); }

    std::optional<QString> parseString()
    {
        if (peek() == u'"' || peek() == u'\'') {
            return parseQuoted(peek());
        }
        const qsizetype start = m_pos;
        while (!atEnd() && isUnquotedChar(peek())) {
            ++m_pos;
        }
        if (m_pos == start) {
            return fail(QStringLiteral("expected a string"));
        }
        return m_text.mid(start, m_pos - start);
    }

    std::optional<QString> parseQuoted(QChar quote)
    {
        ++m_pos;
        QString out = QStringLiteral(""); // empty, not null: an empty value is present
        while (!atEnd()) {
            const QChar c = m_text.at(m_pos++);
            if (c == quote) {
                return out;
            }
            if (c != u'\\') {
                out.append(c);
                continue;
            }
            if (atEnd()) {
                break;
            }
            const QChar e = m_text.at(m_pos++);
            switch (e.unicode()) {
            case 'n':
                out.append(u'\n');
                break;
            case 't':
                out.append(u'\t');
                break;
            case 'r':
                out.append(u'\r');
                break;
            case 'a':
                out.append(QChar(7));
                break;
            case 'b':
                out.append(QChar(8));
                break;
            case 'f':
                out.append(QChar(12));
                break;
            case 'v':
                out.append(QChar(11));
                break;
            case 'U':
            case 'u': {
                bool ok = false;
                const uint code = m_text.mid(m_pos, 4).toUInt(&ok, 16);
                if (!ok || m_text.mid(m_pos, 4).size() != 4) {
                    return fail(QStringLiteral("bad \\U escape"));
                }
                m_pos += 4;
                out.append(QChar(char16_t(code)));
                break;
            }
            default:
                if (e >= u'0' && e <= u'7') {
                    uint code = uint(e.unicode() - '0');
                    for (int i = 0; i < 2 && !atEnd() && peek() >= u'0' && peek() <= u'7'; ++i) {
                        code = code * 8 + uint(m_text.at(m_pos++).unicode() - '0');
                    }
                    out.append(QChar(char16_t(code)));
                } else {
                    out.append(e); // \" \\ \' and anything else stand for themselves
                }
            }
        }
        return fail(QStringLiteral("unterminated string"));
    }

    const QString &m_text;
    qsizetype m_pos = 0;
    PlistBudget m_budget;
    QString m_problem;
};

} // namespace

QString decodeStringsText(const QByteArray &bytes)
{
    if (bytes.startsWith("\xFF\xFE")) {
        return QStringDecoder(QStringDecoder::Utf16LE)(bytes.mid(2));
    }
    if (bytes.startsWith("\xFE\xFF")) {
        return QStringDecoder(QStringDecoder::Utf16BE)(bytes.mid(2));
    }
    if (bytes.startsWith("\xEF\xBB\xBF")) {
        return QString::fromUtf8(bytes.mid(3));
    }
    // UTF-16 without a mark still shows itself by the zero byte beside each ASCII character.
    if (bytes.size() >= 2 && bytes.size() % 2 == 0) {
        if (bytes.at(0) != 0 && bytes.at(1) == 0) {
            return QStringDecoder(QStringDecoder::Utf16LE)(bytes);
        }
        if (bytes.at(0) == 0 && bytes.at(1) != 0) {
            return QStringDecoder(QStringDecoder::Utf16BE)(bytes);
        }
    }
    return QString::fromUtf8(bytes);
}

std::optional<QVariantMap> parseOldStylePlist(const QString &text, QString *problem)
{
    Parser parser(text);
    auto result = parser.parseTopLevel();
    if (!result && problem) {
        *problem = parser.problem();
    }
    return result;
}
