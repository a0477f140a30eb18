#include "model/BinaryPlistReader.h"

#include "model/PlistBudget.h"
#include "model/PlistWideInteger.h"

#include <QDateTime>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

namespace BinaryPlistReader {
namespace {

constexpr quint64 kHeader = 8;
constexpr quint64 kTrailer = 32;

__extension__ typedef unsigned __int128 Unsigned128;

quint64 bigEndian(const uchar *bytes, int size)
{
    quint64 value = 0;
    for (int i = 0; i < size; ++i) {
        value = value << 8 | bytes[i];
    }
    return value;
}

// A 16-byte integer: qint64 when it fits, else its decimal digits.
QVariant wideInteger(quint64 high, quint64 low)
{
    const bool negative = high >> 63;
    if ((high == 0 && low >> 63 == 0) || (high == ~quint64(0) && low >> 63 == 1)) {
        return qint64(low);
    }
    Unsigned128 magnitude = Unsigned128(high) << 64 | low;
    if (negative) {
        magnitude = ~magnitude + 1;
    }
    QString digits;
    do {
        digits.prepend(QChar(char16_t(u'0' + magnitude % 10)));
        magnitude /= 10;
    } while (magnitude != 0);
    return QVariant::fromValue(PlistWideInteger{negative ? QStringLiteral("-") + digits : digits});
}

class Reader
{
public:
    explicit Reader(const QByteArray &bytes)
        : m_data(reinterpret_cast<const uchar *>(bytes.constData())), m_size(quint64(bytes.size()))
    {
    }

    std::optional<QVariant> read(QString *problem)
    {
        std::optional<Object> top;
        if (!readTrailer()) {
            fail(QStringLiteral("bad trailer"));
        } else if (m_count > quint64(PlistBudget::kMostObjects)) {
            fail(PlistBudget::tooManyObjects()); // a writer puts in the table only what the list holds
        } else {
            m_read.resize(m_count);
            top = readObject(m_top);
        }
        if (!top && problem) {
            *problem = m_problem;
        }
        return top ? std::optional<QVariant>(top->value) : std::nullopt;
    }

private:
    struct Object
    {
        QVariant value;
        qint64 objects = 0; // itself and every copy it holds; 0 before it is read, -1 while its contents are
        int levels = 0;     // containers nested in it, itself included
    };

    std::nullopt_t fail(const QString &why)
    {
        if (m_problem.isEmpty()) {
            m_problem = PlistBudget::problem(why);
        }
        return std::nullopt;
    }

    bool readTrailer()
    {
        if (m_size < kHeader + kTrailer || std::memcmp(m_data, "bplist00", kHeader) != 0) {
            return false;
        }
        const uchar *trailer = m_data + m_size - kTrailer;
        m_offsetSize = trailer[6];
        m_refSize = trailer[7];
        m_count = bigEndian(trailer + 8, 8);
        m_top = bigEndian(trailer + 16, 8);
        m_table = bigEndian(trailer + 24, 8);
        const quint64 tableEnd = m_size - kTrailer;
        return m_offsetSize >= 1 && m_offsetSize <= 8 && m_refSize >= 1 && m_refSize <= 8 && m_count > 0 &&
               m_top < m_count && m_table >= kHeader && m_table <= tableEnd &&
               m_count <= (tableEnd - m_table) / quint64(m_offsetSize);
    }

    // Whether `count` items of `size` bytes each start at `at` and end before the offset table.
    bool holds(quint64 at, quint64 count, quint64 size = 1) const
    {
        return at <= m_table && count <= (m_table - at) / size;
    }

    // The item count after a marker at `at`: in the marker, or in an integer object that follows it (one written as
    // wide as 16 bytes included); `at` moves past both.
    std::optional<quint64> count(quint64 &at)
    {
        const quint64 inMarker = m_data[at++] & 0xF;
        if (inMarker != 0xF) {
            return inMarker;
        }
        if (!holds(at, 1) || m_data[at] >> 4 != 0x1 || (m_data[at] & 0xF) > 4) {
            return fail(QStringLiteral("bad count"));
        }
        const quint64 width = quint64(1) << (m_data[at] & 0xF);
        if (!holds(at + 1, width) || (width == 16 && bigEndian(m_data + at + 1, 8) != 0)) {
            return fail(QStringLiteral("bad count"));
        }
        const quint64 value =
            bigEndian(m_data + at + 1 + width - std::min<quint64>(width, 8), int(std::min<quint64>(width, 8)));
        at += 1 + width;
        return value;
    }

    std::optional<Object> readObject(quint64 index)
    {
        if (const Object *known = &m_read[index]; known->objects != 0) {
            if (known->objects < 0) {
                return fail(QStringLiteral("a container holds itself"));
            }
            if (!m_budget.fits(known->levels)) {
                return fail(PlistBudget::tooDeep());
            }
            return m_budget.spend(known->objects) ? std::optional<Object>(*known) : fail(PlistBudget::tooManyObjects());
        }
        if (!m_budget.spend()) {
            return fail(PlistBudget::tooManyObjects());
        }
        quint64 at = bigEndian(m_data + m_table + index * quint64(m_offsetSize), m_offsetSize);
        if (at < kHeader || at >= m_table) {
            return fail(QStringLiteral("object %1 outside the object table").arg(index));
        }
        const uchar marker = m_data[at];
        const int type = marker >> 4;
        if (type == 0xA || type == 0xB || type == 0xC || type == 0xD) {
            return readContainer(index, at, type == 0xD);
        }
        std::optional<QVariant> value = readScalar(at);
        if (!value) {
            return std::nullopt;
        }
        m_read[index] = Object{std::move(*value), 1};
        return m_read[index];
    }

    std::optional<QVariant> readScalar(quint64 at)
    {
        const uchar marker = m_data[at];
        const quint64 width = quint64(1) << (marker & 0xF);
        switch (marker >> 4) {
        case 0x0:
            return marker == 0x08 || marker == 0x09 ? QVariant(marker == 0x09) : QVariant();
        case 0x1:
            if ((marker & 0xF) > 4 || !holds(at + 1, width)) {
                return fail(QStringLiteral("bad integer"));
            }
            if (width == 16) {
                return wideInteger(bigEndian(m_data + at + 1, 8), bigEndian(m_data + at + 9, 8));
            }
            return qint64(bigEndian(m_data + at + 1, int(width))); // 8 bytes are signed, fewer are not
        case 0x2:
            if ((width != 4 && width != 8) || !holds(at + 1, width)) {
                return fail(QStringLiteral("bad real"));
            }
            return real(at + 1, width);
        case 0x3: {
            if (marker != 0x33 || !holds(at + 1, 8)) {
                return fail(QStringLiteral("bad date"));
            }
            const double seconds = real(at + 1, 8) + double(kEpochOffset);
            if (!(std::fabs(seconds) < 1e15)) {
                return fail(QStringLiteral("bad date"));
            }
            return QDateTime::fromMSecsSinceEpoch(qint64(std::llround(seconds * 1000)), Qt::UTC);
        }
        case 0x4:
        case 0x5:
        case 0x6: {
            const std::optional<quint64> size = count(at);
            const quint64 unit = marker >> 4 == 0x6 ? 2 : 1;
            if (!size || !holds(at, *size, unit)) {
                return fail(QStringLiteral("bad data or string"));
            }
            const char *bytes = reinterpret_cast<const char *>(m_data + at);
            if (marker >> 4 == 0x4) {
                return QByteArray(bytes, qsizetype(*size));
            }
            if (unit == 1) {
                return QString::fromLatin1(bytes, qsizetype(*size));
            }
            QString text(qsizetype(*size), Qt::Uninitialized);
            for (quint64 i = 0; i < *size; ++i) {
                text[qsizetype(i)] = QChar(char16_t(bigEndian(m_data + at + 2 * i, 2)));
            }
            return text;
        }
        case 0x8:
            return QVariant(); // a reference to an archived object
        default:
            return fail(QStringLiteral("unknown object type %1").arg(marker, 2, 16, QLatin1Char('0')));
        }
    }

    double real(quint64 at, quint64 width) const
    {
        const quint64 bits = bigEndian(m_data + at, int(width));
        if (width == 4) {
            float value = 0;
            const quint32 narrow = quint32(bits);
            std::memcpy(&value, &narrow, sizeof value);
            return value;
        }
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }

    // An array or set (a list here) or a dictionary, whose references follow its count: a dictionary's keys, then
    // its values.
    std::optional<Object> readContainer(quint64 index, quint64 at, bool isDict)
    {
        const std::optional<quint64> size = count(at);
        const quint64 refs = isDict && size ? 2 * *size : size.value_or(0);
        if (!size || *size > m_size || !holds(at, refs, quint64(m_refSize))) {
            return fail(QStringLiteral("bad container"));
        }
        const PlistBudget::Level level(m_budget);
        if (!level.ok()) {
            return fail(PlistBudget::tooDeep());
        }
        m_read[index].objects = -1;
        Object container{QVariant(), 1, 1};
        QVariantList list;
        QVariantMap map;
        for (quint64 i = 0; i < *size; ++i) {
            std::optional<Object> item = readRef(at + i * quint64(m_refSize));
            std::optional<Object> key;
            if (isDict) {
                key = std::move(item);
                item = key ? readRef(at + (*size + i) * quint64(m_refSize)) : std::nullopt;
            }
            if (!item) {
                return std::nullopt;
            }
            if (isDict && key->value.typeId() != QMetaType::QString) {
                return fail(QStringLiteral("dictionary key that is not a string"));
            }
            container.objects += item->objects + (isDict ? key->objects : 0);
            container.levels = std::max(container.levels, item->levels + 1);
            if (isDict) {
                map.insert(key->value.toString(), std::move(item->value));
            } else {
                list.append(std::move(item->value));
            }
        }
        container.value = isDict ? QVariant(map) : QVariant(list);
        m_read[index] = container;
        return container;
    }

    std::optional<Object> readRef(quint64 at)
    {
        const quint64 index = bigEndian(m_data + at, m_refSize);
        return index < m_count ? readObject(index)
                               : fail(QStringLiteral("reference %1 past the last object").arg(index));
    }

    const uchar *m_data;
    quint64 m_size;
    int m_offsetSize = 0;
    int m_refSize = 0;
    quint64 m_count = 0;
    quint64 m_top = 0;
    quint64 m_table = 0;
    std::vector<Object> m_read; // by index: each object is read once
    PlistBudget m_budget;
    QString m_problem;
};

} // namespace

std::optional<QVariant> read(const QByteArray &bytes, QString *problem)
{
    return Reader(bytes).read(problem);
}

} // namespace BinaryPlistReader
