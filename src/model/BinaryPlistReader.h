#pragma once

// Binary property lists ("bplist00"): a table of objects located through a trailer at the end, containers referring
// to other objects by index. Each object is read once and shared by every container that refers to it, so the time
// grows with the file, not with the copies a shared object stands for; those copies still count against the
// objects PlistBudget allows. Values are those of XmlPlistReader; references to archived objects have no value.

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <optional>

namespace BinaryPlistReader {

// Seconds from 1970-01-01 to 2001-01-01, the epoch of property-list dates.
constexpr qint64 kEpochOffset = 978307200;

// The top object of the list.
std::optional<QVariant> read(const QByteArray &bytes, QString *problem);

} // namespace BinaryPlistReader
