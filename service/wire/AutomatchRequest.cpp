#include "wire/AutomatchRequest.h"

#include "wire/FormBody.h"

namespace {

constexpr int maxApps = 1000000;

// Sets one field of an app group; false when a URL-encoded value is malformed.
bool setAppField(AutomatchApp &app, char field, QByteArrayView raw)
{
    switch (field) {
    case 'p':
        app.digest = QString::fromUtf8(raw);
        return true;
    case 'v':
        app.installedVersion = QString::fromUtf8(raw);
        return true;
    case 'm':
        // When the app was last opened plays no part in matching; it only has to be well-formed.
        return Percent::isValid(raw, true);
    default:
        break;
    }
    auto value = Percent::decode(raw, true);
    if (!value)
        return false;
    AppDescription &description = app.description;
    (field == 't'   ? description.bundleName
     : field == 'd' ? description.displayName
                    : description.bundleId) = std::move(*value);
    return true;
}

// "app[12][t]" -> 12, 't'; false for any other name.
bool parseAppFieldName(QByteArrayView name, int *index, char *field)
{
    constexpr QByteArrayView prefix("app[");
    constexpr qsizetype maxDigits = 7;
    const qsizetype digits = name.size() - prefix.size() - 4; // what stands between the prefix and "][t]"
    if (!name.startsWith(prefix) || digits < 1 || digits > maxDigits)
        return false;
    const QByteArrayView tail = name.last(4);
    if (tail[0] != ']' || tail[1] != '[' || tail[3] != ']' || QByteArrayView("tpdvbm").indexOf(tail[2]) < 0)
        return false;
    int value = 0;
    for (const char c : name.sliced(prefix.size(), digits)) {
        if (c < '0' || c > '9')
            return false;
        value = value * 10 + (c - '0');
    }
    *index = value;
    *field = tail[2];
    return true;
}

} // namespace

// The body is read in place: a field's name is decoded only when it holds escapes, and only the values matching
// needs become texts. A 500-app request is some 3,000 fields, read for every matching request.
std::optional<AutomatchRequest> AutomatchRequest::parse(const QByteArray &body, QString *error)
{
    AutomatchRequest request;
    const std::pair<QByteArrayView, QString *> head[] = {{"vld", &request.clientVersion},
                                                         {"c", &request.serial},
                                                         {"uuid", &request.installation},
                                                         {"mid", &request.memberId},
                                                         {"type", &request.type}};
    int lastIndex = -1;
    AutomatchApp *app = nullptr;
    const bool read = Percent::forEachPair(body, [&](QByteArrayView name, QByteArrayView raw) {
        QByteArray decodedName;
        if (!Percent::isPlainAscii(name, true)) {
            auto decoded = Percent::decodeBytes(name, true);
            if (!decoded) {
                *error = QStringLiteral("bad form encoding");
                return false;
            }
            decodedName = std::move(*decoded);
            name = decodedName;
        }
        int index = 0;
        char field = 0;
        if (parseAppFieldName(name, &index, &field)) {
            if (index >= maxApps) {
                *error = QStringLiteral("app index out of range: %1").arg(index);
                return false;
            }
            // The fields of one app come together; look the app up only when the index changes.
            if (index != lastIndex) {
                app = &request.apps[index];
                lastIndex = index;
            }
            if (!setAppField(*app, field, raw)) {
                *error = QStringLiteral("bad encoding in %1").arg(QString::fromUtf8(name));
                return false;
            }
            return true;
        }
        if (name.startsWith("app[")) {
            *error = QStringLiteral("unknown app field %1").arg(QString::fromUtf8(name));
            return false;
        }
        for (const auto &[key, target] : head) {
            if (name != key)
                continue;
            const auto value = Percent::decode(raw, true);
            if (!value) {
                *error = QStringLiteral("bad encoding in %1").arg(QString::fromUtf8(name));
                return false;
            }
            *target = *value;
        }
        return true;
    });
    if (!read)
        return std::nullopt;
    return request;
}
