#include "catalogue/CatalogueIndex.h"

#include "catalogue/RecordFields.h"
#include "wire/JsonText.h"

#include <QJsonArray>

#include <algorithm>
#include <array>

namespace {

QByteArray folded(const QString &key)
{
    return key.trimmed().toCaseFolded().toUtf8();
}

// What QString::trimmed() takes off in ASCII.
bool isAsciiSpace(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

} // namespace

QString firstBundleId(const QJsonObject &record)
{
    const QJsonArray ids = record.value(RecordFields::bundleIds).toArray();
    return ids.isEmpty() ? QString() : ids.at(0).toString();
}

QByteArray encodeShortKeyMembers(const QString &id, const QJsonObject &record)
{
    QByteArray out = "\"m\":" + JsonText::quoted(id);
    for (const RecordFields::KeyPair &key : RecordFields::shortKeys) {
        const QJsonValue value = record.value(key.stored);
        if (value.isString())
            out += ",\"" + QByteArray(key.wire.data(), key.wire.size()) + "\":" + JsonText::quoted(value.toString());
    }
    if (record.value(RecordFields::ranking).isDouble())
        out += ",\"f1\":" + QByteArray::number(record.value(RecordFields::ranking).toDouble(), 'g', 17);
    return out;
}

CatalogueIndex::CatalogueIndex(std::vector<CatalogueEntry> entries) : m_entries(std::move(entries))
{
    for (int i = 0; i < int(m_entries.size()); ++i) {
        const CatalogueEntry &entry = m_entries[size_t(i)];
        m_byId.insert(entry.id, i);
        add(m_byBundleId, entry.record.value(RecordFields::bundleIds), i);
        add(m_byBundleName, entry.record.value(RecordFields::bundleNames), i);
        add(m_byDisplayName, entry.record.value(RecordFields::displayNames), i);
    }
}

void CatalogueIndex::add(Table &table, const QJsonValue &keys, int entry)
{
    const QJsonArray list = keys.toArray();
    for (int position = 0; position < list.size(); ++position) {
        const QByteArray key = folded(list.at(position).toString());
        if (key.isEmpty())
            continue;
        const Candidate candidate{entry, position};
        auto it = table.find(key);
        if (it == table.end())
            table.insert(key, candidate);
        else if (better(candidate, *it))
            *it = candidate;
    }
}

// Several records may claim one key (an app and its beta channel): the record that lists the key earlier
// wins, then a release over a beta, then the older catalogue id.
bool CatalogueIndex::better(const Candidate &a, const Candidate &b) const
{
    const CatalogueEntry &x = m_entries[size_t(a.entry)];
    const CatalogueEntry &y = m_entries[size_t(b.entry)];
    if (a.position != b.position)
        return a.position < b.position;
    if (x.isBeta != y.isBeta)
        return !x.isBeta;
    return x.id.toLongLong() < y.id.toLongLong();
}

const CatalogueEntry *CatalogueIndex::lookup(const Table &table, QByteArrayView key) const
{
    while (!key.isEmpty() && isAsciiSpace(key.front()))
        key = key.sliced(1);
    while (!key.isEmpty() && isAsciiSpace(key.back()))
        key.chop(1);
    if (key.isEmpty())
        return nullptr;
    // Nearly every key is ASCII, whose case folding is A-Z to a-z: folded on the stack, as a matching request
    // looks up some 1,500 keys. Others go the way the table's keys went.
    constexpr qsizetype onStack = 256;
    const bool ascii = std::all_of(key.begin(), key.end(), [](char c) { return uchar(c) < 0x80; });
    std::array<char, onStack> buffer; // left unset: only the key's part is written and read
    QByteArray foldedKey;
    if (ascii && key.size() <= onStack) {
        std::transform(key.begin(), key.end(), buffer.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? char(c + ('a' - 'A')) : c; });
        foldedKey = QByteArray::fromRawData(buffer.data(), key.size());
    } else {
        foldedKey = folded(QString::fromUtf8(key));
    }
    const auto it = table.constFind(foldedKey);
    return it == table.constEnd() ? nullptr : &m_entries[size_t(it->entry)];
}

const CatalogueEntry *CatalogueIndex::match(const AppDescription &app) const
{
    if (const CatalogueEntry *entry = lookup(m_byBundleId, app.bundleId))
        return entry;
    if (const CatalogueEntry *entry = lookup(m_byBundleName, app.bundleName))
        return entry;
    return lookup(m_byDisplayName, app.displayName);
}

const CatalogueEntry *CatalogueIndex::byId(const QString &id) const
{
    const auto it = m_byId.constFind(id);
    return it == m_byId.constEnd() ? nullptr : &m_entries[size_t(*it)];
}
