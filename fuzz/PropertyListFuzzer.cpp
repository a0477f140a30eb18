// XML and binary property lists, as bundles ship them in Info.plist and version.plist: whatever the bytes, the
// reader answers a dictionary or says why not; and a dictionary it answers can be written back in either form and
// read again.

#include "FuzzEnvironment.h"
#include "model/PropertyList.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    FuzzEnvironment::silenceMessages();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // A copy, as the file reader hands over: the parser may count on the terminating zero every QByteArray has.
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    QString problem;
    const std::optional<QVariantMap> dictionary = PropertyList::parseDictionary(bytes, &problem);
    if (!dictionary) {
        if (problem.isEmpty()) {
            std::abort(); // a refusal always says why, for the log line
        }
        return 0;
    }
    if (!PropertyList::parseDictionary(PropertyList::toBinary(*dictionary)) ||
        !PropertyList::parseDictionary(PropertyList::toXml(*dictionary))) {
        std::abort();
    }
    return 0;
}
