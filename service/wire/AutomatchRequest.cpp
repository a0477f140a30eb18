#include "wire/AutomatchRequest.h"

#include "wire/FormBody.h"

#include <QRegularExpression>

namespace {

constexpr int maxApps = 1000000;

// Sets one field of an app group; false when a URL-encoded value is malformed.
bool setAppField(AutomatchApp &app, QChar field, const QByteArray &raw)
{
    if (field == u'p' || field == u'v') {
        (field == u'p' ? app.digest : app.installedVersion) = QString::fromUtf8(raw);
        return true;
    }
    const auto value = Percent::decode(raw, true);
    if (!value)
        return false;
    switch (field.unicode()) {
    case 't': app.description.bundleName = *value; break;
    case 'd': app.description.displayName = *value; break;
    case 'b': app.description.bundleId = *value; break;
    default: app.lastOpened = *value; break;
    }
    return true;
}

} // namespace

std::optional<AutomatchRequest> AutomatchRequest::parse(const QByteArray &body, QString *error)
{
    const auto form = FormBody::parse(body);
    if (!form) {
        *error = QStringLiteral("bad form encoding");
        return std::nullopt;
    }
    static const QRegularExpression appField(QStringLiteral("^app\\[(\\d{1,7})\\]\\[([tpdvbm])\\]$"));
    AutomatchRequest request;
    for (const FormBody::Field &field : form->fields()) {
        const auto match = appField.match(field.name);
        if (match.hasMatch()) {
            const int index = match.captured(1).toInt();
            if (index >= maxApps) {
                *error = QStringLiteral("app index out of range: %1").arg(index);
                return std::nullopt;
            }
            if (!setAppField(request.apps[index], match.captured(2).at(0), field.raw)) {
                *error = QStringLiteral("bad encoding in %1").arg(field.name);
                return std::nullopt;
            }
            continue;
        }
        if (field.name.startsWith(QLatin1StringView("app["))) {
            *error = QStringLiteral("unknown app field %1").arg(field.name);
            return std::nullopt;
        }
    }
    const std::pair<const char *, QString *> head[] = {{"vld", &request.clientVersion}, {"c", &request.serial},
                                                       {"uuid", &request.installation}, {"mid", &request.memberId},
                                                       {"type", &request.type}};
    for (const auto &[name, target] : head) {
        const QString key = QString::fromLatin1(name);
        if (!form->contains(key))
            continue;
        const auto value = form->decoded(key);
        if (!value) {
            *error = QStringLiteral("bad encoding in %1").arg(key);
            return std::nullopt;
        }
        *target = *value;
    }
    return request;
}
