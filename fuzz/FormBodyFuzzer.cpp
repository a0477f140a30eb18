// The service's reader of form bodies, which every POST from the program goes through: whatever the bytes, each
// field reads raw, decoded and to the end of the body; and a value that decodes comes back the same after the
// program's own percent-encoding; and a value is called valid exactly when it decodes.

#include "FuzzEnvironment.h"
#include "wire/FormBody.h"

#include <QUrl>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    FuzzEnvironment::silenceMessages();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray body(reinterpret_cast<const char *>(data), qsizetype(size));
    if (const std::optional<QJsonObject> object = FormBody::jsonObject(body, "a")) {
        for (const QJsonValue &value : *object) {
            FormBody::jsonInteger(value);
        }
    }
    const std::optional<FormBody> form = FormBody::parse(body);
    if (!form) {
        return 0;
    }
    for (const FormBody::Field &field : form->fields()) {
        if (!form->contains(field.name)) {
            std::abort();
        }
        form->raw(field.name);
        form->rawToEnd(field.name);
        const std::optional<QString> value = form->decoded(field.name);
        if (value && Percent::decode(QUrl::toPercentEncoding(*value), true) != value) {
            std::abort();
        }
        if (Percent::isValid(field.raw, true) != Percent::decode(field.raw, true).has_value()) {
            std::abort();
        }
    }
    return 0;
}
