#include "wire/AutomatchRequest.h"

#include "wire/FormBody.h"

#include <algorithm>

namespace {

constexpr int maxApps = 1000000;

constexpr QByteArrayView keptFields = "btdpv";

QByteArrayView &fieldOf(AutomatchApp &app, char field)
{
    switch (field) {
    case 'b':
        return app.description.bundleId;
    case 't':
        return app.description.bundleName;
    case 'd':
        return app.description.displayName;
    case 'p':
        return app.digest;
    default:
        return app.installedVersion;
    }
}

// Groups in index order, an index sent in several places joined into one group whose later fields win.
void joinByIndex(std::vector<AutomatchApp> &apps)
{
    std::stable_sort(apps.begin(), apps.end(), [](const auto &a, const auto &b) { return a.index < b.index; });
    auto joined = apps.begin();
    for (auto next = apps.begin(); next != apps.end(); ++next) {
        if (joined == apps.begin() || std::prev(joined)->index != next->index) {
            *joined++ = *next;
            continue;
        }
        AutomatchApp &into = *std::prev(joined);
        for (qsizetype bit = 0; bit < keptFields.size(); ++bit) {
            if (next->fieldsSent & (1u << bit))
                fieldOf(into, keptFields[bit]) = fieldOf(*next, keptFields[bit]);
        }
        into.fieldsSent |= next->fieldsSent;
    }
    apps.erase(joined, apps.end());
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

// The body is read in place: a name or a value is decoded only when it holds escapes, and only the head's values
// become texts. A 500-app request is some 3,000 fields, read for every matching request.
std::optional<AutomatchRequest> AutomatchRequest::parse(QByteArrayView body, QString *error)
{
    AutomatchRequest request;
    // Sets one field of an app group; false when a URL-encoded value is malformed.
    const auto setAppField = [&request, body](AutomatchApp &app, char field, QByteArrayView raw) {
        if (field == 'm') {
            // When the app was last opened plays no part in matching; it only has to be well-formed.
            return Percent::isValid(raw, true);
        }
        QByteArrayView value = raw;
        // The digest and the installed version are sent as they are; the rest is URL-encoded.
        if (field != 'p' && field != 'v' && !Percent::isPlainAscii(raw, true)) {
            const auto decoded = Percent::decodeBytes(raw, true);
            if (!decoded)
                return false;
            if (request.m_decoded.capacity() == 0)
                request.m_decoded.reserve(body.size()); // nothing decodes longer than it was sent
            value = QByteArrayView(request.m_decoded.constEnd(), decoded->size());
            request.m_decoded.append(QByteArrayView(*decoded)); // a copy into the reserved space, never a share
        }
        fieldOf(app, field) = value;
        app.fieldsSent |= 1u << keptFields.indexOf(field);
        return true;
    };
    const std::pair<QByteArrayView, QString *> head[] = {{"vld", &request.clientVersion},
                                                         {"c", &request.serial},
                                                         {"uuid", &request.installation},
                                                         {"mid", &request.memberId},
                                                         {"type", &request.type}};
    int lastIndex = -1;
    bool inOrder = true;
    AutomatchApp *app = nullptr;
    const bool read = Percent::forEachPair(body, [&](QByteArrayView name, QByteArrayView raw) {
        int index = 0;
        char field = 0;
        // An app field's name has no escapes as the program sends it, so it is tried as it stands first.
        bool isAppField = parseAppFieldName(name, &index, &field);
        QByteArray decodedName;
        if (!isAppField && !Percent::isPlainAscii(name, true)) {
            auto decoded = Percent::decodeBytes(name, true);
            if (!decoded) {
                *error = QStringLiteral("bad form encoding");
                return false;
            }
            decodedName = std::move(*decoded);
            name = decodedName;
            isAppField = parseAppFieldName(name, &index, &field);
        }
        if (isAppField) {
            if (index >= maxApps) {
                *error = QStringLiteral("app index out of range: %1").arg(index);
                return false;
            }
            // The fields of one app come together, in rising order of index; an index out of that order is joined
            // with its earlier groups at the end.
            if (index != lastIndex) {
                inOrder = inOrder && index > lastIndex;
                app = &request.apps.emplace_back();
                app->index = index;
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
    if (!inOrder)
        joinByIndex(request.apps);
    return request;
}
