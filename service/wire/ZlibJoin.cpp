#include "wire/ZlibJoin.h"

namespace {

constexpr qsizetype maxStoredBlock = 65535;

void appendLittleEndian16(QByteArray &out, unsigned value)
{
    out.append(char(value & 0xff)).append(char(value >> 8));
}

} // namespace

ZlibJoin::Fragment ZlibJoin::fragment(const QByteArray &text)
{
    Fragment fragment;
    fragment.length = text.size();
    fragment.adler =
        adler32(adler32(0, nullptr, 0), reinterpret_cast<const Bytef *>(text.constData()), uInt(text.size()));
    z_stream stream{};
    // Raw deflate (no header of its own), level 1 as before.
    if (deflateInit2(&stream, 1, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) != Z_OK)
        return {};
    fragment.deflated.resize(qsizetype(deflateBound(&stream, uLong(text.size()))) + 16);
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(text.constData()));
    stream.avail_in = uInt(text.size());
    stream.next_out = reinterpret_cast<Bytef *>(fragment.deflated.data());
    stream.avail_out = uInt(fragment.deflated.size());
    // A sync flush ends on a byte boundary without a final block, so another block may follow.
    const int rc = deflate(&stream, Z_SYNC_FLUSH);
    fragment.deflated.truncate(qsizetype(stream.total_out));
    deflateEnd(&stream);
    return rc == Z_OK && stream.avail_in == 0 ? fragment : Fragment{};
}

ZlibJoin::ZlibJoin(qsizetype size) : m_adler(adler32(0, nullptr, 0))
{
    m_out.reserve(size);
    // Deflate with a 32 KB window, level 1 (the header's check bits make it a multiple of 31).
    m_out.append(char(0x78)).append(char(0x01));
}

void ZlibJoin::append(const Fragment &fragment)
{
    storePending();
    m_out.append(fragment.deflated);
    m_adler = adler32_combine(m_adler, fragment.adler, z_off_t(fragment.length));
}

void ZlibJoin::storePending()
{
    m_adler = adler32(m_adler, reinterpret_cast<const Bytef *>(m_pending.constData()), uInt(m_pending.size()));
    for (qsizetype at = 0; at < m_pending.size(); at += maxStoredBlock) {
        const auto length = unsigned(std::min(maxStoredBlock, m_pending.size() - at));
        // A stored block that is not the last: its header bits on a byte boundary, then the length and its
        // complement.
        m_out.append(char(0));
        appendLittleEndian16(m_out, length);
        appendLittleEndian16(m_out, ~length & 0xffff);
        m_out.append(m_pending.constData() + at, qsizetype(length));
    }
    // Kept allocated for the next piece of text.
    m_pending.resize(0);
}

QByteArray ZlibJoin::finish()
{
    storePending();
    // The final block, stored and empty.
    m_out.append(char(1));
    appendLittleEndian16(m_out, 0);
    appendLittleEndian16(m_out, 0xffff);
    for (int shift = 24; shift >= 0; shift -= 8)
        m_out.append(char((m_adler >> shift) & 0xff));
    return m_out;
}
