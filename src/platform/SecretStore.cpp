// libsecret pulls in glib, whose headers use "signals" as a name: they come before any Qt header, which defines it
// as a macro.
#include <libsecret/secret.h>

#include "platform/SecretStore.h"

#include <QCoreApplication>

#include <memory>

namespace {

// Items are matched by their attributes alone, so the schema's name is not part of a search.
const SecretSchema *genericSchema()
{
    static const SecretSchema schema = {"com.velmora.GenericPassword",
                                        SECRET_SCHEMA_DONT_MATCH_NAME,
                                        {{"acct", SECRET_SCHEMA_ATTRIBUTE_STRING},
                                         {"svce", SECRET_SCHEMA_ATTRIBUTE_STRING},
                                         {"labl", SECRET_SCHEMA_ATTRIBUTE_STRING},
                                         {"desc", SECRET_SCHEMA_ATTRIBUTE_STRING},
                                         {nullptr, SECRET_SCHEMA_ATTRIBUTE_STRING}},
                                        0,
                                        nullptr,
                                        nullptr,
                                        nullptr,
                                        nullptr,
                                        nullptr,
                                        nullptr,
                                        nullptr};
    return &schema;
}

struct GHashTableDeleter
{
    void operator()(GHashTable *table) const { g_hash_table_unref(table); }
};
using HashTable = std::unique_ptr<GHashTable, GHashTableDeleter>;

HashTable toHashTable(const SecretStore::Attributes &attributes)
{
    HashTable table(g_hash_table_new_full(g_str_hash, g_str_equal, g_free, g_free));
    for (auto it = attributes.cbegin(); it != attributes.cend(); ++it) {
        g_hash_table_insert(table.get(), g_strdup(it.key().toUtf8().constData()),
                            g_strdup(it.value().toUtf8().constData()));
    }
    return table;
}

SecretStore::Attributes fromHashTable(GHashTable *table)
{
    SecretStore::Attributes attributes;
    GHashTableIter iter;
    gpointer key = nullptr;
    gpointer value = nullptr;
    g_hash_table_iter_init(&iter, table);
    while (g_hash_table_iter_next(&iter, &key, &value)) {
        attributes.insert(QString::fromUtf8(static_cast<const char *>(key)),
                          QString::fromUtf8(static_cast<const char *>(value)));
    }
    // libsecret adds the schema's name; it is no attribute of ours.
    attributes.remove(QStringLiteral("xdg:schema"));
    return attributes;
}

SecretStore::Outcome failure(GError *error)
{
    SecretStore::Outcome outcome;
    // A missing bus or service is told apart from a store that answered with an error.
    const bool unreachable = error->domain == G_DBUS_ERROR || error->domain == G_IO_ERROR ||
                             (error->domain == SECRET_ERROR && error->code == SECRET_ERROR_NO_SUCH_OBJECT);
    outcome.status = unreachable ? SecretStore::NotAvailable : SecretStore::IOError;
    outcome.message = QString::fromUtf8(error->message);
    g_error_free(error);
    return outcome;
}

struct ItemList
{
    GList *items = nullptr;
    ~ItemList() { g_list_free_full(items, g_object_unref); }
};

SecretStore::Outcome search(const SecretStore::Attributes &attributes, SecretSearchFlags flags, ItemList &found)
{
    GError *error = nullptr;
    SecretService *service = secret_service_get_sync(SECRET_SERVICE_NONE, nullptr, &error);
    if (!service) {
        return failure(error);
    }
    // A search needs one attribute at least: with none, every item of ours is meant, and each carries its schema's
    // name.
    SecretStore::Attributes wanted = attributes;
    if (wanted.isEmpty()) {
        wanted.insert(QStringLiteral("xdg:schema"), QString::fromLatin1(genericSchema()->name));
    }
    const HashTable table = toHashTable(wanted);
    found.items = secret_service_search_sync(service, nullptr, table.get(), flags, nullptr, &error);
    g_object_unref(service);
    if (error) {
        return failure(error);
    }
    if (!found.items) {
        return {SecretStore::ItemNotFound, SecretStore::messageForStatus(SecretStore::ItemNotFound)};
    }
    return {};
}

} // namespace

namespace SecretStore {

Outcome add(const Attributes &attributes, const QString &label, const QByteArray &secret)
{
    GError *error = nullptr;
    SecretValue *value = secret_value_new(secret.constData(), secret.size(), "text/plain");
    const HashTable table = toHashTable(attributes);
    const gboolean stored = secret_password_storev_binary_sync(genericSchema(), table.get(), SECRET_COLLECTION_DEFAULT,
                                                               label.toUtf8().constData(), value, nullptr, &error);
    secret_value_unref(value);
    if (!stored) {
        return failure(error);
    }
    return {};
}

Outcome deleteFirst(const Attributes &attributes)
{
    ItemList found;
    const Outcome searched = search(attributes, SECRET_SEARCH_UNLOCK, found);
    if (!searched.ok()) {
        return searched;
    }
    GError *error = nullptr;
    if (!secret_item_delete_sync(SECRET_ITEM(found.items->data), nullptr, &error)) {
        return failure(error);
    }
    return {};
}

Outcome findAll(const Attributes &attributes, bool withSecrets, QList<Item> *items)
{
    ItemList found;
    const int flags = SECRET_SEARCH_ALL | SECRET_SEARCH_UNLOCK | (withSecrets ? SECRET_SEARCH_LOAD_SECRETS : 0);
    const Outcome searched = search(attributes, SecretSearchFlags(flags), found);
    if (!searched.ok()) {
        return searched;
    }
    for (GList *node = found.items; node; node = node->next) {
        SecretItem *secretItem = SECRET_ITEM(node->data);
        GHashTable *table = secret_item_get_attributes(secretItem);
        Item item{fromHashTable(table), std::nullopt};
        g_hash_table_unref(table);
        if (withSecrets) {
            if (SecretValue *value = secret_item_get_secret(secretItem)) {
                gsize length = 0;
                const gchar *data = secret_value_get(value, &length);
                item.secret = QByteArray(data, qsizetype(length));
                secret_value_unref(value);
            } else {
                item.secret = QByteArray();
            }
        }
        items->append(item);
    }
    return {};
}

QString messageForStatus(int status)
{
    switch (status) {
    case Success:
        return QCoreApplication::translate("SecretStore", "No error.");
    case ItemNotFound:
        return QCoreApplication::translate("SecretStore", "The specified item could not be found in the keychain.");
    case NotAvailable:
        return QCoreApplication::translate("SecretStore", "No keychain is available.");
    default:
        return QCoreApplication::translate("SecretStore", "An error occurred while using the keychain (%1).")
            .arg(status);
    }
}

} // namespace SecretStore
