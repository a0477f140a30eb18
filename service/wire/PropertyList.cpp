#include "wire/PropertyList.h"

#include <QJsonArray>

#include <plist/plist.h>

namespace {

plist_t node(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Bool:
        return plist_new_bool(value.toBool() ? 1 : 0);
    case QJsonValue::Double: {
        const double number = value.toDouble();
        return number == double(qint64(number)) && number >= 0 ? plist_new_uint(quint64(number))
                                                               : plist_new_real(number);
    }
    case QJsonValue::Array: {
        plist_t array = plist_new_array();
        for (const QJsonValue &item : value.toArray())
            plist_array_append_item(array, node(item));
        return array;
    }
    case QJsonValue::Object: {
        plist_t dict = plist_new_dict();
        const QJsonObject object = value.toObject();
        for (auto it = object.begin(); it != object.end(); ++it)
            plist_dict_set_item(dict, it.key().toUtf8().constData(), node(it.value()));
        return dict;
    }
    default:
        return plist_new_string(value.toString().toUtf8().constData());
    }
}

} // namespace

namespace PropertyList {

QByteArray xml(const QJsonObject &root)
{
    plist_t plist = node(root);
    char *text = nullptr;
    uint32_t length = 0;
    plist_to_xml(plist, &text, &length);
    QByteArray result(text, qsizetype(length));
    plist_to_xml_free(text);
    plist_free(plist);
    return result;
}

} // namespace PropertyList
