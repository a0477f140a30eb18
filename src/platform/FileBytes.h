#pragma once

// Reading a small file whole with the fewest system calls: the scan reads several per bundle, thousands of
// bundles at a time. A file larger than the limit is not read (a bundle may hold a link to a device or a huge
// file where a property list belongs).

#include "platform/FileStamp.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace FileBytes {

enum class Failure { Missing, TooLarge, Unreadable };

struct Result
{
    std::optional<QByteArray> bytes; // absent on failure
    Failure failure = Failure::Missing;
    QString reason;  // the system's words for Unreadable
    FileStamp stamp; // of the very file that was opened (whatever the name holds by now), if one was
};

Result read(const QString &path, qint64 limit);

} // namespace FileBytes
