#include "scan/ScanStoreFileRecords.h"

namespace ScanStoreFileRecords {
namespace {

// Far below the JSON parser's own limit, so that an object parsed alone fails exactly when it would within the file.
constexpr int kDeepest = 512;

class Cursor
{
public:
    explicit Cursor(QByteArrayView text) : m_at(text.data()), m_end(text.data() + text.size()) {}

    bool atEnd()
    {
        skipSpace();
        return m_at == m_end;
    }
    // Takes the given token after any whitespace.
    bool take(QByteArrayView token)
    {
        skipSpace();
        if (m_end - m_at < token.size() || QByteArrayView(m_at, token.size()) != token) {
            return false;
        }
        m_at += token.size();
        return true;
    }
    bool peek(char c)
    {
        skipSpace();
        return m_at != m_end && *m_at == c;
    }
    // An object from its "{" to its matching "}", strings and nested lists included.
    std::optional<QByteArrayView> object()
    {
        if (!peek('{')) {
            return std::nullopt;
        }
        const char *const start = m_at;
        int depth = 0;
        bool inString = false;
        for (; m_at != m_end; ++m_at) {
            const char c = *m_at;
            if (inString) {
                if (c == '\\') {
                    if (++m_at == m_end) {
                        return std::nullopt;
                    }
                } else if (c == '"') {
                    inString = false;
                }
            } else if (c == '"') {
                inString = true;
            } else if (c == '{' || c == '[') {
                if (++depth > kDeepest) {
                    return std::nullopt;
                }
            } else if (c == '}' || c == ']') {
                if (--depth == 0) {
                    ++m_at;
                    return QByteArrayView(start, m_at - start);
                }
            }
        }
        return std::nullopt;
    }

private:
    void skipSpace()
    {
        while (m_at != m_end && (*m_at == ' ' || *m_at == '\t' || *m_at == '\n' || *m_at == '\r')) {
            ++m_at;
        }
    }

    const char *m_at;
    const char *const m_end;
};

} // namespace

std::optional<std::vector<QByteArrayView>> split(QByteArrayView text)
{
    Cursor cursor(text);
    if (!cursor.take("{") || !cursor.take("\"apps\"") || !cursor.take(":") || !cursor.take("[")) {
        return std::nullopt;
    }
    std::vector<QByteArrayView> objects;
    if (!cursor.peek(']')) {
        do {
            const std::optional<QByteArrayView> object = cursor.object();
            if (!object) {
                return std::nullopt;
            }
            objects.push_back(*object);
        } while (cursor.take(","));
    }
    if (!cursor.take("]") || !cursor.take("}") || !cursor.atEnd()) {
        return std::nullopt;
    }
    return objects;
}

} // namespace ScanStoreFileRecords
