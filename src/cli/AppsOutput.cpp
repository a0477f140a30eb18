#include "cli/AppsOutput.h"

#include "cli/RecordLines.h"
#include "model/AppJson.h"

#include <QJsonDocument>

namespace {

// The array as QJsonDocument writes it, one record at a time, so that a long list never stands as a whole document.
void writeJsonArray(const AppList &apps, QTextStream &out)
{
    out << "[\n";
    for (qsizetype index = 0; index < apps.size(); ++index) {
        QByteArray object = QJsonDocument(appToJson(*apps.at(index))).toJson(QJsonDocument::Indented);
        object.chop(1); // its closing line break
        // One level in; line breaks inside values are escaped, so every break is the writer's.
        object.replace("\n", "\n    ");
        out << "    " << QString::fromUtf8(object) << (index + 1 < apps.size() ? ",\n" : "\n");
    }
    out << "]\n";
}

} // namespace

void printApps(const AppList &apps, CommandContext &ctx, const std::function<QStringList(const VLApp &)> &fields)
{
    if (ctx.json) {
        writeJsonArray(apps, ctx.out);
        return;
    }
    for (const AppRef &app : apps) {
        ctx.out << recordLine(fields(*app)) << '\n';
    }
}
