#include "model/XmlPlistReader.h"

#include "model/PlistBudget.h"
#include "model/PlistWideInteger.h"

#include <QByteArrayView>
#include <QDateTime>
#include <QStringDecoder>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <limits>

namespace XmlPlistReader {
namespace {

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// A tag as it stands in the text: <name ...>, </name> or <name .../>.
struct Tag
{
    QByteArrayView name;
    bool closing = false;
    bool empty = false;
};

// A reader over UTF-8: it knows XML's markup (declarations, processing instructions, comments, the DOCTYPE with its
// internal subset, character data, references), so nothing inside them is ever taken for an element, and it reads
// the elements of a property list as it meets them, without building a document first.
class Parser
{
public:
    explicit Parser(QByteArrayView utf8) : m_p(utf8.data()), m_end(utf8.data() + utf8.size()) {}

    std::optional<QVariant> document(QString *problem)
    {
        std::optional<QVariant> value = top();
        if (!value && problem) {
            *problem = m_problem;
        }
        return value;
    }

private:
    std::nullopt_t fail(const QString &why)
    {
        if (m_problem.isEmpty()) {
            m_problem = PlistBudget::problem(why);
        }
        return std::nullopt;
    }

    bool at(const char *text) const
    {
        const size_t size = std::strlen(text);
        return size_t(m_end - m_p) >= size && std::memcmp(m_p, text, size) == 0;
    }

    bool skipPast(const char *marker)
    {
        const qsizetype found = QByteArrayView(m_p, m_end - m_p).indexOf(QByteArrayView(marker));
        if (found < 0) {
            fail(QStringLiteral("no %1 to end a markup").arg(QLatin1String(marker)));
            return false;
        }
        m_p += found + qsizetype(std::strlen(marker));
        return true;
    }

    enum class Misc { None, Skipped, Failed };

    // Comments and processing instructions may stand anywhere between elements.
    Misc skipMisc()
    {
        if (!at("<!--") && !at("<?")) {
            return Misc::None;
        }
        return skipPast(at("<!--") ? "-->" : "?>") ? Misc::Skipped : Misc::Failed;
    }

    // Quoted literals may hold anything; an internal subset holds declarations, comments and processing
    // instructions. Entities would let a few bytes stand for a great many, and property lists never declare any.
    bool skipDoctype()
    {
        bool inSubset = false;
        m_p += 9;
        while (m_p < m_end) {
            const char c = *m_p;
            if (c == '"' || c == '\'') {
                const void *close = std::memchr(m_p + 1, c, size_t(m_end - m_p - 1));
                if (!close) {
                    break;
                }
                m_p = static_cast<const char *>(close) + 1;
            } else if (inSubset && at("<!ENTITY")) {
                fail(QStringLiteral("it declares entities"));
                return false;
            } else if (inSubset && skipMisc() != Misc::None) {
                if (!m_problem.isEmpty()) {
                    return false;
                }
            } else if (c == '>' && !inSubset) {
                ++m_p;
                return true;
            } else {
                inSubset = c == '[' || (inSubset && c != ']');
                ++m_p;
            }
        }
        fail(QStringLiteral("unterminated DOCTYPE"));
        return false;
    }

    std::optional<QVariant> top()
    {
        if (at("\xEF\xBB\xBF")) {
            m_p += 3;
        }
        for (;;) {
            while (m_p < m_end && isSpace(*m_p)) {
                ++m_p;
            }
            if (at("<!DOCTYPE")) {
                if (!skipDoctype()) {
                    return std::nullopt;
                }
                continue;
            }
            const Misc misc = skipMisc();
            if (misc == Misc::Failed) {
                return std::nullopt;
            }
            if (misc == Misc::None) {
                break;
            }
        }
        Tag tag;
        if (!nextTag(tag) || tag.closing) {
            return fail(QStringLiteral("no property list element"));
        }
        if (tag.name == "plist" && (tag.empty || !nextTag(tag) || tag.closing)) {
            return fail(QStringLiteral("empty property list"));
        }
        return value(tag);
    }

    // The next tag, past white space (or stray text), comments and processing instructions.
    bool nextTag(Tag &tag)
    {
        for (;;) {
            const void *open = std::memchr(m_p, '<', size_t(m_end - m_p));
            if (!open) {
                fail(QStringLiteral("premature end"));
                return false;
            }
            m_p = static_cast<const char *>(open);
            const Misc misc = skipMisc();
            if (misc == Misc::Failed) {
                return false;
            }
            if (misc == Misc::None) {
                break;
            }
        }
        tag.closing = at("</");
        const char *name = m_p + (tag.closing ? 2 : 1);
        const char *p = name;
        while (p < m_end && !isSpace(*p) && *p != '/' && *p != '>') {
            ++p;
        }
        tag.name = QByteArrayView(name, p - name);
        // Attributes are passed over; a ">" inside a quoted value does not end the tag.
        char quote = 0;
        for (; p < m_end && (quote || *p != '>'); ++p) {
            if (*p == '"' || *p == '\'') {
                quote = quote == *p ? 0 : (quote ? quote : *p);
            }
        }
        if (p == m_end || tag.name.isEmpty()) {
            fail(QStringLiteral("malformed tag"));
            return false;
        }
        tag.empty = p[-1] == '/';
        m_p = p + 1;
        return true;
    }

    std::optional<QVariant> value(const Tag &tag)
    {
        if (!m_budget.spend()) {
            return fail(PlistBudget::tooManyObjects());
        }
        if (tag.name == "dict" || tag.name == "array") {
            return container(tag);
        }
        const std::optional<QByteArrayView> content = text(tag);
        if (!content) {
            return std::nullopt;
        }
        if (tag.name == "string") {
            return content->isEmpty() ? QStringLiteral("") : QString::fromUtf8(*content);
        }
        if (tag.name == "integer") {
            return integer(content->trimmed());
        }
        if (tag.name == "real") {
            bool ok = false;
            const double real = content->trimmed().toByteArray().toDouble(&ok);
            return ok ? std::optional<QVariant>(real) : fail(QStringLiteral("bad real"));
        }
        if (tag.name == "true" || tag.name == "false") {
            return tag.name == "true";
        }
        if (tag.name == "date") {
            const QDateTime date = QDateTime::fromString(QString::fromLatin1(content->trimmed()), Qt::ISODate);
            return date.isValid() ? std::optional<QVariant>(date.toUTC()) : fail(QStringLiteral("bad date"));
        }
        if (tag.name == "data") {
            return QByteArray::fromBase64(content->toByteArray());
        }
        return fail(QStringLiteral("unknown element <%1>").arg(QString::fromUtf8(tag.name)));
    }

    // A dictionary (key, value, key, value, ...) or an array, up to its closing tag.
    std::optional<QVariant> container(const Tag &tag)
    {
        const PlistBudget::Level level(m_budget);
        if (!level.ok()) {
            return fail(PlistBudget::tooDeep());
        }
        const bool isDict = tag.name == "dict";
        QVariantMap map;
        QVariantList list;
        Tag item;
        while (!tag.empty) {
            if (!nextTag(item)) {
                return std::nullopt;
            }
            if (item.closing) {
                if (item.name != tag.name) {
                    return fail(QStringLiteral("<%1> closed by </%2>")
                                    .arg(QString::fromUtf8(tag.name), QString::fromUtf8(item.name)));
                }
                break;
            }
            QString key;
            if (isDict) {
                if (item.name != "key") {
                    return fail(QStringLiteral("value without a key"));
                }
                const std::optional<QByteArrayView> keyText = text(item);
                if (!keyText) {
                    return std::nullopt;
                }
                if (!m_budget.spend()) {
                    return fail(PlistBudget::tooManyObjects());
                }
                key = QString::fromUtf8(*keyText);
                if (!nextTag(item) || item.closing) {
                    return fail(QStringLiteral("key %1 without a value").arg(key));
                }
            }
            std::optional<QVariant> element = value(item);
            if (!element) {
                return std::nullopt;
            }
            if (isDict) {
                map.insert(key, std::move(*element));
            } else {
                list.append(std::move(*element));
            }
        }
        return isDict ? QVariant(map) : QVariant(list);
    }

    // The character data of an element up to its closing tag, references resolved. It points into the list itself
    // when there was nothing to resolve, else into a buffer that the next call reuses.
    std::optional<QByteArrayView> text(const Tag &tag)
    {
        if (tag.empty) {
            return QByteArrayView("", 0);
        }
        const char *const start = m_p;
        const void *open = std::memchr(m_p, '<', size_t(m_end - m_p));
        m_p = open ? static_cast<const char *>(open) : m_end;
        const bool plain = open && at("</") && !std::memchr(start, '&', size_t(m_p - start));
        if (!plain) {
            m_p = start;
            m_text.clear();
        }
        while (!plain) {
            open = std::memchr(m_p, '<', size_t(m_end - m_p));
            const char *const stop = open ? static_cast<const char *>(open) : m_end;
            if (!appendResolved(QByteArrayView(m_p, stop - m_p))) {
                return std::nullopt;
            }
            m_p = stop;
            if (!open) {
                return fail(QStringLiteral("premature end"));
            }
            if (at("</")) {
                break;
            }
            if (at("<![CDATA[")) {
                const char *const data = m_p + 9;
                if (!skipPast("]]>")) {
                    return std::nullopt;
                }
                m_text.append(data, m_p - 3 - data);
                continue;
            }
            const Misc misc = skipMisc();
            if (misc != Misc::Skipped) {
                return misc == Misc::Failed
                           ? std::nullopt
                           : fail(QStringLiteral("element inside <%1>").arg(QString::fromUtf8(tag.name)));
            }
        }
        const QByteArrayView content = plain ? QByteArrayView(start, m_p - start) : QByteArrayView(m_text);
        Tag closing;
        if (!nextTag(closing)) {
            return std::nullopt;
        }
        if (closing.name != tag.name) {
            return fail(QStringLiteral("<%1> closed by </%2>")
                            .arg(QString::fromUtf8(tag.name), QString::fromUtf8(closing.name)));
        }
        return content;
    }

    // Text with &lt; &gt; &amp; &quot; &apos; and character references resolved into m_text.
    bool appendResolved(QByteArrayView text)
    {
        for (qsizetype i = 0; i < text.size();) {
            const qsizetype amp = text.indexOf('&', i);
            m_text.append(text.sliced(i, (amp < 0 ? text.size() : amp) - i));
            if (amp < 0) {
                break;
            }
            const qsizetype semicolon = text.indexOf(';', amp);
            const QByteArrayView name = text.sliced(amp + 1, std::max<qsizetype>(semicolon - amp - 1, 0));
            static const std::pair<const char *, char> predefined[] = {
                {"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"quot", '"'}, {"apos", '\''}};
            const auto known = std::find_if(std::begin(predefined), std::end(predefined),
                                            [&name](const auto &entity) { return name == entity.first; });
            char32_t code = 0;
            bool ok = semicolon > 0;
            if (ok && known != std::end(predefined)) {
                code = char32_t(known->second);
            } else if (ok && name.startsWith('#')) {
                const bool hex = name.startsWith("#x");
                code = char32_t(name.sliced(hex ? 2 : 1).toByteArray().toUInt(&ok, hex ? 16 : 10));
                // Only characters that XML allows; a NUL, say, may not be written even as a reference.
                ok = ok && (code == 0x9 || code == 0xA || code == 0xD || (code >= 0x20 && code <= 0xD7FF) ||
                            (code >= 0xE000 && code <= 0xFFFD) || (code >= 0x10000 && code <= 0x10FFFF));
            } else {
                ok = false;
            }
            if (!ok) {
                fail(QStringLiteral("bad or undeclared reference &%1").arg(QString::fromUtf8(name)));
                return false;
            }
            m_text.append(QString::fromUcs4(&code, 1).toUtf8());
            i = semicolon + 1;
        }
        return true;
    }

    // Decimal or 0x-hexadecimal digits with an optional sign; decimal ones of any length.
    std::optional<QVariant> integer(QByteArrayView text)
    {
        const bool negative = text.startsWith('-');
        const QByteArrayView digits = negative || text.startsWith('+') ? text.sliced(1) : text;
        const bool hex = digits.startsWith("0x") || digits.startsWith("0X");
        const QByteArrayView number = hex ? digits.sliced(2) : digits;
        const auto isDigit = [hex](char c) { return (c >= '0' && c <= '9') || (hex && std::isxdigit(uchar(c))); };
        if (number.isEmpty() || !std::all_of(number.begin(), number.end(), isDigit)) {
            return fail(QStringLiteral("bad integer %1").arg(QString::fromLatin1(text)));
        }
        bool ok = false;
        const quint64 magnitude = number.toByteArray().toULongLong(&ok, hex ? 16 : 10);
        const quint64 limit = quint64(std::numeric_limits<qint64>::max()) + (negative ? 1 : 0);
        if (ok && magnitude <= limit) {
            return negative ? qint64(0 - magnitude) : qint64(magnitude);
        }
        if (hex && !ok) {
            return fail(QStringLiteral("integer %1 too wide").arg(QString::fromLatin1(text)));
        }
        const QString written = ok ? QString::number(magnitude) : QString::fromLatin1(number);
        return QVariant::fromValue(PlistWideInteger{negative ? QStringLiteral("-") + written : written});
    }

    const char *m_p;
    const char *const m_end;
    QByteArray m_text;
    PlistBudget m_budget;
    QString m_problem;
};

// The encoding named by the XML declaration at the start of bytes, lower case; "" when none is named.
QByteArray declaredEncoding(QByteArrayView bytes)
{
    const qsizetype end = bytes.startsWith("<?xml") ? bytes.indexOf("?>") : -1;
    const QByteArrayView declaration = bytes.first(std::max<qsizetype>(end, 0));
    qsizetype at = declaration.indexOf("encoding");
    if (at < 0) {
        return {};
    }
    at += 8;
    while (at < declaration.size() && (isSpace(declaration[at]) || declaration[at] == '=')) {
        ++at;
    }
    const char quote = at < declaration.size() ? declaration[at] : 0;
    const qsizetype close = quote == '"' || quote == '\'' ? declaration.indexOf(quote, at + 1) : -1;
    return close < 0 ? QByteArray() : declaration.sliced(at + 1, close - at - 1).toByteArray().toLower();
}

} // namespace

std::optional<QVariant> read(const QByteArray &bytes, QString *problem)
{
    // A declaration after white space or comments still names the encoding; a byte-order mark says UTF-8.
    QByteArrayView start(bytes);
    while (!start.isEmpty() && (isSpace(start.front()) || start.startsWith("<!--"))) {
        const qsizetype end = start.startsWith("<!--") ? start.indexOf("-->") : 0;
        start = start.sliced(end < 0 ? start.size() : end + (start.startsWith("<!--") ? 3 : 1));
    }
    const QByteArray encoding = declaredEncoding(start);
    // A list in UTF-16 has reached here only with a declaration that is wrong about it.
    if (bytes.startsWith("\xEF\xBB\xBF") || encoding.isEmpty() || encoding == "utf-8" || encoding == "us-ascii" ||
        encoding.startsWith("utf-16")) {
        return Parser(bytes).document(problem);
    }
    QStringDecoder decoder(encoding.constData());
    if (!decoder.isValid()) {
        if (problem) {
            *problem =
                QStringLiteral("malformed property list: unknown encoding %1").arg(QString::fromLatin1(encoding));
        }
        return std::nullopt;
    }
    return read(QString(decoder(bytes)), problem);
}

std::optional<QVariant> read(const QString &text, QString *problem)
{
    const QByteArray utf8 = text.toUtf8();
    return Parser(utf8).document(problem);
}

} // namespace XmlPlistReader
