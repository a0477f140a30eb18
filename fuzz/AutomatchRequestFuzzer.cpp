// The service's matching request (head fields, then app[i][t|p|d|v|b|m] groups): whatever the bytes, the reader
// answers a request or says why not; each app is matched against the sample catalogue; and the digest and
// installed version, which the reply echoes as JSON texts, come back unchanged from that JSON.

#include "FuzzEnvironment.h"
#include "catalogue/CatalogueFile.h"
#include "catalogue/CatalogueIndex.h"
#include "wire/AutomatchRequest.h"
#include "wire/JsonText.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <cstdint>
#include <cstdlib>
#include <memory>

namespace {

std::unique_ptr<CatalogueIndex> g_index;

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    FuzzEnvironment::silenceMessages();
    QString error;
    const std::optional<CatalogueImport> import =
        CatalogueFile::read(QStringLiteral(VELMORA_FUZZ_SAMPLE_CATALOGUE), &error);
    if (!import) {
        qFatal("%s", qPrintable(error));
    }
    std::vector<CatalogueEntry> entries;
    for (const ImportApp &app : import->apps) {
        // Only what matching reads: the reply's parts are not made here.
        CatalogueEntry entry;
        entry.id = app.id;
        entry.record = app.record;
        entries.push_back(std::move(entry));
    }
    g_index = std::make_unique<CatalogueIndex>(std::move(entries));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // Read where libFuzzer put it, so that the sanitizer sees any read past the end.
    const QByteArrayView body(reinterpret_cast<const char *>(data), qsizetype(size));
    QString error;
    const std::optional<AutomatchRequest> request = AutomatchRequest::parse(body, &error);
    if (!request) {
        if (error.isEmpty()) {
            std::abort(); // a 400 always says why
        }
        return 0;
    }
    for (const AutomatchApp &app : request->apps) {
        g_index->match(app.description);
        QByteArray echoed = "[";
        JsonText::appendQuotedBytes(echoed, app.digest);
        echoed += ',';
        JsonText::appendQuotedBytes(echoed, app.installedVersion);
        echoed += ']';
        const QJsonArray texts = QJsonDocument::fromJson(echoed).array();
        if (texts.size() != 2 || texts.at(0).toString() != QString::fromUtf8(app.digest) ||
            texts.at(1).toString() != QString::fromUtf8(app.installedVersion)) {
            std::abort();
        }
    }
    return 0;
}
