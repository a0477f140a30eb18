// The matching reply as the check receives it: a zlib stream inflated with the doubling buffer, a JSON object of
// catalogue items, each made into a record and applied to an installed one. Bytes that do not inflate are read as
// the JSON text itself, so that the items' reading is fuzzed without the fuzzer having to forge zlib checksums.
// Whatever the bytes, nothing inflates past its cap, and every record made can be judged, archived and restored.

#include "FuzzEnvironment.h"
#include "model/VLApp.h"
#include "platform/RAZipper.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cstdint>
#include <cstdlib>

namespace {

// Well below the run's memory limit, far above any seed: the cap's refusal is reached without exhausting the run.
constexpr qint64 kMaxInflatedBytes = qint64(64) * 1024 * 1024;

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    FuzzEnvironment::silenceMessages();
    FuzzEnvironment::isolateFiles();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const std::optional<QByteArray> inflated = RAZipper::dataForCompressedData(bytes, kMaxInflatedBytes);
    if (inflated && inflated->size() > kMaxInflatedBytes) {
        std::abort();
    }
    const QJsonDocument reply = QJsonDocument::fromJson(inflated.value_or(bytes));
    if (!reply.isObject()) {
        return 0;
    }
    VLApp installed = VLApp::initWithCoder(QJsonObject{{QStringLiteral("localPath"), QStringLiteral("/A/Foo.app")},
                                                       {QStringLiteral("name"), QStringLiteral("Foo")}});
    for (const QVariant &entry : reply.object().toVariantMap()) {
        const QVariantMap item = entry.toMap();
        const VLApp fromCatalogue = VLApp::initWithServerItemJSON(item);
        installed.updateWithServerItemJSON(item);
        for (VLApp app : {fromCatalogue, installed}) {
            app.checkIfOutdated();
            app.checkIfPaidUpgrade();
            if (VLApp::initWithCoder(app.encodeWithCoder()).encodeWithCoder().isEmpty()) {
                std::abort();
            }
        }
    }
    return 0;
}
