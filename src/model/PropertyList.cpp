#include "model/PropertyList.h"

#include "platform/FileBytes.h"
#include "model/OldStylePlistParser.h"
#include "model/PlistNesting.h"

#include <QDateTime>
#include <QStringDecoder>

#include <plist/plist.h>

#include <cstdlib>
#include <memory>

namespace PropertyList {
namespace {

// Larger than any real property list; also what bounds the memory a bogus file can take.
constexpr qint64 kLargestPlist = 64 * 1024 * 1024;

// Deeper than any real property list, and far shallower than what would exhaust a reading thread's stack.
constexpr int kDeepestPlist = 512;

// Seconds between 1970-01-01 and the property-list epoch, 2001-01-01.
constexpr qint64 kPlistEpochOffset = 978307200;

struct NodeDeleter
{
    void operator()(void *node) const { plist_free(static_cast<plist_t>(node)); }
};
using NodePtr = std::unique_ptr<void, NodeDeleter>;

QVariant fromNode(plist_t node)
{
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return bool(value);
    }
    case PLIST_UINT: {
        uint64_t value = 0;
        plist_get_uint_val(node, &value);
        return qint64(value);
    }
    case PLIST_REAL: {
        double value = 0;
        plist_get_real_val(node, &value);
        return value;
    }
    case PLIST_STRING: {
        uint64_t length = 0;
        const char *value = plist_get_string_ptr(node, &length);
        return QString::fromUtf8(value, qsizetype(length));
    }
    case PLIST_DATA: {
        uint64_t length = 0;
        const char *value = plist_get_data_ptr(node, &length);
        return QByteArray(value, qsizetype(length));
    }
    case PLIST_DATE: {
        int32_t seconds = 0;
        int32_t microseconds = 0;
        plist_get_date_val(node, &seconds, &microseconds);
        return QDateTime::fromMSecsSinceEpoch((kPlistEpochOffset + seconds) * 1000 + microseconds / 1000, Qt::UTC);
    }
    case PLIST_ARRAY: {
        QVariantList list;
        const uint32_t size = plist_array_get_size(node);
        for (uint32_t i = 0; i < size; ++i) {
            list.append(fromNode(plist_array_get_item(node, i)));
        }
        return list;
    }
    case PLIST_DICT: {
        QVariantMap map;
        plist_dict_iter iter = nullptr;
        plist_dict_new_iter(node, &iter);
        for (;;) {
            char *key = nullptr;
            plist_t value = nullptr;
            plist_dict_next_item(node, iter, &key, &value);
            if (!key) {
                break;
            }
            map.insert(QString::fromUtf8(key), fromNode(value));
            free(key);
        }
        free(iter);
        return map;
    }
    default:
        return {};
    }
}

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
        const qint64 msecs = value.toDateTime().toMSecsSinceEpoch() - kPlistEpochOffset * 1000;
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

bool looksLikePlist(const QByteArray &bytes)
{
    if (bytes.startsWith("bplist")) {
        return true;
    }
    const QByteArray head = bytes.left(256).trimmed();
    return head.startsWith("<?xml") || head.startsWith("<!DOCTYPE") || head.startsWith("<plist");
}

// Some older bundles keep their XML in UTF-16, which the parser does not read; it gets the same text in UTF-8.
QByteArray utf8Xml(const QByteArray &bytes)
{
    const std::optional<QStringConverter::Encoding> encoding = QStringConverter::encodingForData(bytes, u'<');
    if (encoding != QStringConverter::Utf16LE && encoding != QStringConverter::Utf16BE) {
        return bytes;
    }
    QStringDecoder decoder(*encoding);
    const QString text = decoder(bytes);
    return decoder.hasError() ? bytes : text.toUtf8();
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

std::optional<QVariantMap> parseDictionary(const QByteArray &data, QString *problem)
{
    const QByteArray bytes = utf8Xml(data);
    if (bytes.isEmpty() || bytes.size() > kLargestPlist) {
        if (problem) {
            *problem =
                bytes.isEmpty() ? QStringLiteral("empty property list") : QStringLiteral("property list too large");
        }
        return std::nullopt;
    }
    if (!looksLikePlist(bytes)) {
        if (problem) {
            *problem = QStringLiteral("not an XML or binary property list");
        }
        return std::nullopt;
    }
    if (PlistNesting::nestsDeeperThan(bytes, kDeepestPlist)) {
        if (problem) {
            *problem = QStringLiteral("property list nested too deeply");
        }
        return std::nullopt;
    }
    plist_t root = nullptr;
    plist_from_memory(bytes.constData(), uint32_t(bytes.size()), &root);
    const NodePtr owner(root);
    if (!root || plist_get_node_type(root) != PLIST_DICT) {
        if (problem) {
            *problem =
                root ? QStringLiteral("property list is not a dictionary") : QStringLiteral("malformed property list");
        }
        return std::nullopt;
    }
    return fromNode(root).toMap();
}

std::optional<QVariantMap> parseStrings(const QByteArray &bytes, QString *problem)
{
    const QByteArray xml = utf8Xml(bytes);
    if (looksLikePlist(xml)) {
        return parseDictionary(xml, problem);
    }
    return parseOldStylePlist(bytes, problem);
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
