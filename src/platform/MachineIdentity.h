#pragma once

#include <QString>

// The hardware serial number the matching request sends: the firmware's product serial when it can be read,
// otherwise an id derived from /etc/machine-id by a keyed hash (never the raw id), 32 hexadecimal digits.
// "" when neither exists.
QString newStringWithMachineSerialNumber();
