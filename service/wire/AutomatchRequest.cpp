#include "wire/AutomatchRequest.h"

#include "wire/FormBody.h"

namespace {

constexpr int maxApps = 1000000;

// Sets one field of an app group; false when a URL-encoded value is malformed.
bool setAppField(AutomatchApp &app, QChar field, QByteArrayView raw)
{
    if (field == u'p' || field == u'v') {
        (field == u'p' ? app.digest : app.installedVersion) = QString::fromUtf8(raw);
        return true;
    }
    const auto value = Percent::decode(raw, true);
    if (!value)
        return false;
    switch (field.unicode()) {
    case 't':
        app.description.bundleName = *value;
        break;
    case 'd':
        app.description.displayName = *value;
        break;
    case 'b':
        app.description.bundleId = *value;
        break;
    default:
        app.lastOpened = *value;
        break;
    }
    return true;
}

// "app[12][t]" -> 12, 't'; false for any other name.
bool parseAppFieldName(const QString &name, int *index, QChar *field)
{
    static const QLatin1StringView prefix("app[");
    if (!name.startsWith(prefix) || name.size() < prefix.size() + 5 || !name.endsWith(u']'))
        return false;
    const qsizetype close = name.indexOf(u']', prefix.size());
    if (close != name.size() - 4 || name.at(close + 1) != u'[' || close - prefix.size() > 7)
        return false;
    bool numeric = false;
    *index = QStringView(name).sliced(prefix.size(), close - prefix.size()).toInt(&numeric);
    *field = name.at(close + 2);
    return numeric && name.at(prefix.size()).isDigit() && QStringView(u"tpdvbm").contains(*field);
}

} // namespace

std::optional<AutomatchRequest> AutomatchRequest::parse(const QByteArray &body, QString *error)
{
    const auto form = FormBody::parse(body);
    if (!form) {
        *error = QStringLiteral("bad form encoding");
        return std::nullopt;
    }
    AutomatchRequest request;
    const std::pair<QLatin1StringView, QString *> head[] = {{QLatin1StringView("vld"), &request.clientVersion},
                                                            {QLatin1StringView("c"), &request.serial},
                                                            {QLatin1StringView("uuid"), &request.installation},
                                                            {QLatin1StringView("mid"), &request.memberId},
                                                            {QLatin1StringView("type"), &request.type}};
    int lastIndex = -1;
    AutomatchApp *app = nullptr;
    for (const FormBody::Field &field : form->fields()) {
        int index = 0;
        QChar name;
        if (parseAppFieldName(field.name, &index, &name)) {
            if (index >= maxApps) {
                *error = QStringLiteral("app index out of range: %1").arg(index);
                return std::nullopt;
            }
            // The fields of one app come together; look the app up only when the index changes.
            if (index != lastIndex) {
                app = &request.apps[index];
                lastIndex = index;
            }
            if (!setAppField(*app, name, field.raw)) {
                *error = QStringLiteral("bad encoding in %1").arg(field.name);
                return std::nullopt;
            }
            continue;
        }
        if (field.name.startsWith(QLatin1StringView("app["))) {
            *error = QStringLiteral("unknown app field %1").arg(field.name);
            return std::nullopt;
        }
        for (const auto &[key, target] : head) {
            if (field.name != key)
                continue;
            const auto value = Percent::decode(field.raw, true);
            if (!value) {
                *error = QStringLiteral("bad encoding in %1").arg(field.name);
                return std::nullopt;
            }
            *target = *value;
        }
    }
    return request;
}
