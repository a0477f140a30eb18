#include "install/StagingLeftovers.h"

#include "install/WorkFolder.h"
#include "platform/FolderReader.h"
#include "platform/Log.h"
#include "platform/NativePath.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <cstdio>
#include <sys/stat.h>

namespace StagingLeftovers {

namespace {

constexpr qsizetype kNameBytes = 200;

bool lexists(const QString &path)
{
    struct stat info = {};
    return lstat(NativePath::encode(path).constData(), &info) == 0;
}

} // namespace

bool isStagingName(const QString &name, const QString &itemName)
{
    // velmora-place keeps the first 200 bytes of the item's name.
    static const QRegularExpression tail(QStringLiteral(R"(^\.[0-9a-f]{16}\.(new|old)$)"));
    const QByteArray prefix = '.' + NativePath::encode(itemName).left(kNameBytes);
    const QByteArray encoded = NativePath::encode(name);
    return !itemName.isEmpty() && encoded.startsWith(prefix) &&
           tail.match(QString::fromLatin1(encoded.mid(prefix.size()))).hasMatch();
}

int clearBeside(const QString &item)
{
    const QFileInfo info(item);
    const QString itemName = info.fileName();
    const QString folder = info.path();
    if (itemName.isEmpty() || !info.isAbsolute()) {
        return 0;
    }
    int cleared = 0;
    FolderReader reader(NativePath::encode(folder));
    for (const FolderReader::Entry &entry : reader.entries()) {
        const QString name = NativePath::decode(entry.name);
        if (!isStagingName(name, itemName)) {
            continue;
        }
        const QString leftover = folder + QLatin1Char('/') + name;
        const bool putBack =
            name.endsWith(QLatin1String(".old")) && !lexists(item) &&
            std::rename(NativePath::encode(leftover).constData(), NativePath::encode(item).constData()) == 0;
        if (putBack || WorkFolder::remove(leftover)) {
            vlLog(QStringLiteral("cleared a copy left by an interrupted update: %1").arg(leftover));
            ++cleared;
        }
    }
    return cleared;
}

} // namespace StagingLeftovers
