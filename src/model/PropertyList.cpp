#include "model/PropertyList.h"

#include "model/BinaryPlistReader.h"
#include "model/OldStylePlistParser.h"
#include "model/XmlPlistReader.h"
#include "platform/FileBytes.h"

#include <QDateTime>

#include <plist/plist.h>

#include <algorithm>
#include <memory>

namespace PropertyList {
namespace {

// Larger than any real property list; with the bounds of the readers, what bounds the memory a bogus file can take.
constexpr qint64 kLargestPlist = 64 * 1024 * 1024;

bool isSpace(char16_t c)
{
    return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n' || c == 0xFEFF;
}

// Whether the text, past a byte-order mark and white space, begins with a tag: XML rather than old-style text.
bool startsWithTag(const QByteArray &bytes)
{
    const qsizetype start = bytes.startsWith("\xEF\xBB\xBF") ? 3 : 0;
    const auto tag = std::find_if(bytes.cbegin() + start, bytes.cend(), [](char c) { return !isSpace(uchar(c)); });
    return tag != bytes.cend() && *tag == '<';
}

bool startsWithTag(const QString &text)
{
    const auto tag = std::find_if(text.cbegin(), text.cend(), [](QChar c) { return !isSpace(c.unicode()); });
    return tag != text.cend() && *tag == u'<';
}

// The top value of a list in any of its three forms. XML in UTF-8, or in an 8-bit encoding that its declaration
// names, goes to the XML reader as bytes; text in UTF-16 is decoded first.
std::optional<QVariant> parseValue(const QByteArray &bytes, QString *problem)
{
    if (bytes.startsWith("bplist")) {
        return BinaryPlistReader::read(bytes, problem);
    }
    if (startsWithTag(bytes)) {
        return XmlPlistReader::read(bytes, problem);
    }
    const QString text = decodeStringsText(bytes);
    if (startsWithTag(text)) {
        return XmlPlistReader::read(text, problem);
    }
    const std::optional<QVariantMap> dictionary = parseOldStylePlist(text, problem);
    return dictionary ? std::optional<QVariant>(*dictionary) : std::nullopt;
}

ReadResult readFile(const QString &path, std::optional<QVariantMap> (*parse)(const QByteArray &, QString *))
{
    ReadResult result;
    const FileBytes::Result file = FileBytes::read(path, kLargestPlist);
    switch (file.failure) {
    case FileBytes::Failure::Missing:
        result.exists = file.bytes.has_value();
        break;
    case FileBytes::Failure::TooLarge:
        result.problem = QStringLiteral("%1: property list too large").arg(path);
        break;
    case FileBytes::Failure::Unreadable:
        result.problem = QStringLiteral("cannot read %1: %2").arg(path, file.reason);
        break;
    }
    if (!file.bytes) {
        return result;
    }
    QString problem;
    result.dictionary = parse(*file.bytes, &problem);
    if (!result.dictionary) {
        result.problem = QStringLiteral("%1: %2").arg(path, problem);
    }
    return result;
}

} // namespace

std::optional<QVariantMap> parseDictionary(const QByteArray &bytes, QString *problem)
{
    QString why;
    std::optional<QVariant> value;
    if (bytes.isEmpty()) {
        why = QStringLiteral("empty property list");
    } else if (bytes.size() > kLargestPlist) {
        why = QStringLiteral("property list too large");
    } else if ((value = parseValue(bytes, &why)) && value->typeId() != QMetaType::QVariantMap) {
        why = QStringLiteral("property list is not a dictionary");
        value.reset();
    }
    if (!value && problem) {
        *problem = why;
    }
    return value ? std::optional<QVariantMap>(value->toMap()) : std::nullopt;
}

std::optional<QVariantMap> parseStrings(const QByteArray &bytes, QString *problem)
{
    // A strings file with nothing in it holds no strings.
    return bytes.isEmpty() ? QVariantMap() : parseDictionary(bytes, problem);
}

ReadResult readDictionaryFile(const QString &path)
{
    return readFile(path, &parseDictionary);
}

ReadResult readStringsFile(const QString &path)
{
    return readFile(path, &parseStrings);
}

namespace {

struct NodeDeleter
{
    void operator()(void *node) const { plist_free(static_cast<plist_t>(node)); }
};
using NodePtr = std::unique_ptr<void, NodeDeleter>;

plist_t toNode(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
        return plist_new_bool(value.toBool());
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::ULongLong:
        return plist_new_uint(value.toULongLong());
    case QMetaType::Double:
    case QMetaType::Float:
        return plist_new_real(value.toDouble());
    case QMetaType::QByteArray: {
        const QByteArray bytes = value.toByteArray();
        return plist_new_data(bytes.constData(), uint64_t(bytes.size()));
    }
    case QMetaType::QDateTime: {
        const qint64 msecs = value.toDateTime().toMSecsSinceEpoch() - BinaryPlistReader::kEpochOffset * 1000;
        return plist_new_date(int32_t(msecs / 1000), int32_t((msecs % 1000) * 1000));
    }
    case QMetaType::QVariantList:
    case QMetaType::QStringList: {
        plist_t array = plist_new_array();
        for (const QVariant &item : value.toList()) {
            plist_array_append_item(array, toNode(item));
        }
        return array;
    }
    case QMetaType::QVariantMap: {
        plist_t dict = plist_new_dict();
        const QVariantMap map = value.toMap();
        for (auto it = map.cbegin(); it != map.cend(); ++it) {
            plist_dict_set_item(dict, it.key().toUtf8().constData(), toNode(it.value()));
        }
        return dict;
    }
    default:
        return plist_new_string(value.toString().toUtf8().constData());
    }
}

QByteArray serialize(const QVariantMap &dictionary, void (*write)(plist_t, char **, uint32_t *),
                     void (*release)(char *))
{
    const NodePtr root(toNode(dictionary));
    char *buffer = nullptr;
    uint32_t length = 0;
    write(static_cast<plist_t>(root.get()), &buffer, &length);
    const QByteArray bytes(buffer, qsizetype(length));
    release(buffer);
    return bytes;
}

} // namespace

QByteArray toXml(const QVariantMap &dictionary)
{
    return serialize(dictionary, &plist_to_xml, &plist_to_xml_free);
}

QByteArray toBinary(const QVariantMap &dictionary)
{
    return serialize(dictionary, &plist_to_bin, &plist_to_bin_free);
}

} // namespace PropertyList
