#pragma once

// Copies every row of every table from one database to another, as stored: ids, encrypted passwords and the
// catalogue's revision stay what they were, so members sign in with the same key file afterwards.

#include "storage/SqlDatabase.h"

#include <QPair>

// Both databases must have the program's tables; the target must hold no rows yet. The target is written in one
// transaction. Fills counts with (table, rows copied), in copy order.
bool copyDatabase(SqlDatabase &from, SqlDatabase &to, QList<QPair<QString, qint64>> *counts, QString *error);
