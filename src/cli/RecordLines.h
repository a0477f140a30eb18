#pragma once

#include <QString>
#include <QStringList>

// One line of tab-separated fields for text output: an empty field shows as "-", and tabs and line breaks
// inside a field become spaces so that each record stays one line.
QString recordLine(const QStringList &fields);
