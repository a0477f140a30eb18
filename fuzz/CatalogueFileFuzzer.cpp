// The service's catalogue import files (our own records or the real-world shape): whatever the bytes, the reader
// answers records or says why not; and the records it answers build a matching index whose reply members are
// valid JSON and which finds each record by its main bundle identifier.

#include "FuzzEnvironment.h"
#include "catalogue/CatalogueFile.h"
#include "catalogue/CatalogueIndex.h"

#include <QJsonDocument>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    FuzzEnvironment::silenceMessages();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray json(reinterpret_cast<const char *>(data), qsizetype(size));
    QString error;
    const std::optional<CatalogueImport> import = CatalogueFile::parse(json, &error);
    if (!import) {
        if (error.isEmpty()) {
            std::abort(); // a refusal always says why, for the operator
        }
        return 0;
    }
    // The store gives every record a decimal id; records without one get their position here.
    std::vector<CatalogueEntry> entries;
    for (qsizetype i = 0; i < import->apps.size(); ++i) {
        const ImportApp &app = import->apps.at(i);
        CatalogueEntry entry;
        entry.id = app.id.isEmpty() ? QString::number(i + 1) : app.id;
        entry.record = app.record;
        entry.encodedMembers = encodeShortKeyMembers(entry.id, entry.record);
        const QJsonDocument members = QJsonDocument::fromJson('{' + entry.encodedMembers + '}');
        if (members.object().value(QLatin1StringView("m")).toString() != entry.id) {
            std::abort();
        }
        entries.push_back(std::move(entry));
    }
    const CatalogueIndex index(std::move(entries));
    for (const CatalogueEntry &entry : index.entries()) {
        // Sent as a request sends it, in UTF-8; an id that is no valid Unicode (a lone surrogate) cannot be sent.
        const QString bundleId = firstBundleId(entry.record);
        const QByteArray sent = bundleId.toUtf8();
        if (!bundleId.trimmed().isEmpty() && QString::fromUtf8(sent) == bundleId && !index.match({sent, {}, {}})) {
            std::abort();
        }
    }
    return 0;
}
