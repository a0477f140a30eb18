#pragma once

// An integer a property list holds that does not fit in qint64 (binary lists write up to 128 bits, XML any number
// of digits). It keeps its decimal digits with their sign: wrapped into 64 bits it would read as some other number.

#include <QMetaType>
#include <QString>

struct PlistWideInteger
{
    QString digits; // "-" then digits for a negative one

    bool operator==(const PlistWideInteger &other) const { return digits == other.digits; }
};

Q_DECLARE_METATYPE(PlistWideInteger)
