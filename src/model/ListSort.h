#pragma once

// The order of the app lists the user sees (the window, the panel's Update All): by the record field the list's sort
// key ("listSort") names.

#include "model/VLApp.h"

#include <QList>
#include <QString>

#include <memory>

// Sorted by the record field named key as text: dates ("sortDate") newest first, every other key A to Z.
QList<std::shared_ptr<VLApp>> sortedByListSort(const QList<std::shared_ptr<VLApp>> &apps, const QString &key);
