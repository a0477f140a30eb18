// The old-style text of .strings files (InfoPlist.strings in a bundle's language folders), in UTF-8 or UTF-16:
// whatever the bytes, the reader answers a dictionary or says why not, and never runs away on nesting or escapes.

#include "FuzzEnvironment.h"
#include "model/OldStylePlistParser.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    FuzzEnvironment::silenceMessages();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    QString problem;
    if (!parseOldStylePlist(decodeStringsText(bytes), &problem) && problem.isEmpty()) {
        std::abort(); // a refusal always says why, for the log line
    }
    return 0;
}
