// The scan store "vldscan.vld6" as an older version, another process or a damaged disk may have left it: loading
// it never crashes, and the records it yields are saved and load again unchanged.

#include "FuzzEnvironment.h"
#include "scan/VLScanData.h"

#include <QFile>

#include <cstdint>
#include <cstdlib>

namespace {

QString g_storePath;

void removeStoreFiles()
{
    QFile::remove(g_storePath);
    QFile::remove(g_storePath + QStringLiteral(".damaged"));
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    FuzzEnvironment::silenceMessages();
    FuzzEnvironment::isolateFiles();
    g_storePath = VLScanData::pathForDataFile();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    removeStoreFiles();
    QFile file(g_storePath);
    if (!file.open(QIODevice::WriteOnly) ||
        file.write(reinterpret_cast<const char *>(data), qint64(size)) != qint64(size)) {
        std::abort();
    }
    file.close();

    VLScanData store(g_storePath);
    const std::optional<AppList> apps = store.apps();
    if (apps) {
        if (!store.saveDataToDisk()) {
            std::abort();
        }
        const std::optional<AppList> reloaded = VLScanData(g_storePath).apps();
        if (!reloaded || reloaded->size() != apps->size()) {
            std::abort();
        }
        // Loading settles a record (the defaults for missing fields, the App Store mark): a second load changes
        // nothing more, or every start of the program would drift the store.
        for (qsizetype i = 0; i < apps->size(); ++i) {
            if (apps->at(i)->encodeWithCoder() != reloaded->at(i)->encodeWithCoder()) {
                std::abort();
            }
        }
    }
    removeStoreFiles();
    return 0;
}
