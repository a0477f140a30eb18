#include "cli/AppsOutput.h"

#include "cli/RecordLines.h"
#include "model/AppJson.h"

#include <QJsonArray>
#include <QJsonDocument>

void printApps(const AppList &apps, CommandContext &ctx, const std::function<QStringList(const VLApp &)> &fields)
{
    if (ctx.json) {
        QJsonArray array;
        for (const AppRef &app : apps) {
            array.append(appToJson(*app));
        }
        ctx.out << QJsonDocument(array).toJson(QJsonDocument::Indented);
        return;
    }
    for (const AppRef &app : apps) {
        ctx.out << recordLine(fields(*app)) << '\n';
    }
}
