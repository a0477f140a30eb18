#pragma once

// Tells the user on stderr when the stored scan was found damaged: its records are gone from the lists, and the
// damaged file was kept aside for a look.

#include <QTextStream>

class VLScanData;

void reportStoreDamage(const VLScanData &store, QTextStream &err);
