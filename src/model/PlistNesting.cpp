#include "model/PlistNesting.h"

#include <QByteArrayView>
#include <QHash>

#include <algorithm>
#include <cstring>
#include <vector>

namespace PlistNesting {
namespace {

const char *skipPast(const char *from, const char *end, const char *marker)
{
    const QByteArrayView rest(from, end - from);
    const qsizetype at = rest.indexOf(marker);
    return at < 0 ? end : from + at + qsizetype(std::strlen(marker));
}

// Tags in XML cannot hide in text ("<" is escaped there), only in comments and character data, which are skipped.
bool xmlNestsDeeperThan(const QByteArray &bytes, int limit)
{
    const char *p = bytes.constData();
    const char *const end = p + bytes.size();
    int depth = 0;
    while ((p = static_cast<const char *>(std::memchr(p, '<', size_t(end - p))))) {
        const QByteArrayView rest(p, end - p);
        if (rest.startsWith("<!--")) {
            p = skipPast(p, end, "-->");
            continue;
        }
        if (rest.startsWith("<![CDATA[")) {
            p = skipPast(p, end, "]]>");
            continue;
        }
        const bool closing = rest.startsWith("</");
        const char *const name = p + (closing ? 2 : 1);
        const char *const tagEnd = static_cast<const char *>(std::memchr(name, '>', size_t(end - name)));
        if (!tagEnd) {
            break;
        }
        const char *nameEnd = name;
        while (nameEnd < tagEnd && *nameEnd != '/' && *nameEnd != ' ' && *nameEnd != '\t' && *nameEnd != '\r' &&
               *nameEnd != '\n') {
            ++nameEnd;
        }
        const QByteArrayView tag(name, nameEnd - name);
        if (tag == "array" || tag == "dict") {
            if (closing) {
                --depth;
            } else if (depth + 1 > limit) {
                return true; // an empty one ("<array/>") is a level too, as in a binary list
            } else if (tagEnd[-1] != '/') {
                ++depth;
            }
        }
        p = tagEnd + 1;
    }
    return false;
}

quint64 bigEndian(const char *bytes, int size)
{
    quint64 value = 0;
    for (int i = 0; i < size; ++i) {
        value = value << 8 | uchar(bytes[i]);
    }
    return value;
}

// The object table of a binary list: a trailer at the end locates the offsets of the objects, and arrays, sets and
// dictionaries refer to other objects by their index.
class BinaryPlist
{
public:
    explicit BinaryPlist(const QByteArray &bytes) : m_bytes(bytes)
    {
        constexpr qsizetype kHeader = 8;
        constexpr qsizetype kTrailer = 32;
        if (bytes.size() < kHeader + kTrailer) {
            return;
        }
        const char *trailer = bytes.constData() + bytes.size() - kTrailer;
        m_offsetSize = uchar(trailer[6]);
        m_refSize = uchar(trailer[7]);
        m_count = bigEndian(trailer + 8, 8);
        top = bigEndian(trailer + 16, 8);
        m_table = bigEndian(trailer + 24, 8);
        const quint64 tableRoom = quint64(bytes.size() - kTrailer);
        m_valid = m_offsetSize >= 1 && m_offsetSize <= 8 && m_refSize >= 1 && m_refSize <= 8 && m_count > 0 &&
                  top < m_count && m_table < tableRoom && m_count <= (tableRoom - m_table) / quint64(m_offsetSize);
    }

    bool valid() const { return m_valid; }

    // The objects an array, set or dictionary refers to; false for any other object, or one that is malformed.
    bool containerRefs(quint64 object, std::vector<quint64> &refs) const
    {
        const quint64 size = quint64(m_bytes.size());
        const char *data = m_bytes.constData();
        if (object >= m_count) {
            return false;
        }
        quint64 at = bigEndian(data + m_table + object * quint64(m_offsetSize), m_offsetSize);
        if (at >= m_table) {
            return false;
        }
        const int type = uchar(data[at]) >> 4;
        if (type != 0xA && type != 0xC && type != 0xD) {
            return false;
        }
        quint64 count = uchar(data[at]) & 0xF;
        ++at;
        if (count == 0xF) { // the count follows as an integer object
            if (at >= size || (uchar(data[at]) & 0xF0) != 0x10) {
                return false;
            }
            const int width = 1 << (uchar(data[at]) & 0xF);
            if (width > 8 || at + 1 + quint64(width) > size) {
                return false;
            }
            count = bigEndian(data + at + 1, width);
            at += 1 + quint64(width);
        }
        const quint64 refCount = type == 0xD ? 2 * count : count; // a dictionary's keys, then its values
        if (count > size || refCount > (size - at) / quint64(m_refSize)) {
            return false;
        }
        refs.clear();
        for (quint64 i = 0; i < refCount; ++i) {
            refs.push_back(bigEndian(data + at + i * quint64(m_refSize), m_refSize));
        }
        return true;
    }

    quint64 top = 0;

private:
    const QByteArray &m_bytes;
    int m_offsetSize = 0;
    int m_refSize = 0;
    quint64 m_count = 0;
    quint64 m_table = 0;
    bool m_valid = false;
};

// A walk of the object graph from the top object, without recursion; each object is measured once, so lists that
// share objects cost no more than their size.
bool binaryNestsDeeperThan(const QByteArray &bytes, int limit)
{
    const BinaryPlist plist(bytes);
    if (!plist.valid()) {
        return false;
    }
    // The levels each object holds, itself included (0 for a scalar); kOnPath while the walk is inside it.
    constexpr int kOnPath = -1;
    QHash<quint64, int> levels;
    struct Frame
    {
        quint64 object;
        std::vector<quint64> refs;
        size_t next = 0;
        int levels = 1;
    };
    std::vector<Frame> path;
    const auto enter = [&](quint64 object) {
        std::vector<quint64> refs;
        if (plist.containerRefs(object, refs)) {
            levels.insert(object, kOnPath);
            path.push_back({object, std::move(refs)});
        } else {
            levels.insert(object, 0);
        }
    };
    enter(plist.top);
    while (!path.empty()) {
        if (int(path.size()) > limit) {
            return true;
        }
        Frame &frame = path.back();
        if (frame.next == frame.refs.size()) {
            const int held = frame.levels;
            levels.insert(frame.object, held);
            path.pop_back();
            if (!path.empty()) {
                path.back().levels = std::max(path.back().levels, held + 1);
            }
            continue;
        }
        const quint64 child = frame.refs[frame.next++];
        const auto known = levels.constFind(child);
        if (known == levels.cend()) {
            enter(child);
            continue;
        }
        if (*known == kOnPath) {
            return false; // a loop: the parser refuses it
        }
        frame.levels = std::max(frame.levels, *known + 1);
        if (int(path.size()) - 1 + frame.levels > limit) {
            return true;
        }
    }
    return false;
}

} // namespace

bool nestsDeeperThan(const QByteArray &bytes, int limit)
{
    return bytes.startsWith("bplist") ? binaryNestsDeeperThan(bytes, limit) : xmlNestsDeeperThan(bytes, limit);
}

} // namespace PlistNesting
