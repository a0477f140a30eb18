#pragma once

// Where --db points: "postgresql://..." (or "postgres://") is a PostgreSQL server, anything else an SQLite file
// ("sqlite:PATH" or a plain path).

#include "storage/SqlDatabase.h"
#include "storage/Storage.h"

#include <chrono>

// Null with a reason when the database cannot be opened; a server is tried again for up to patience.
std::shared_ptr<SqlDatabase> openDatabase(const QString &location, std::chrono::seconds patience, QString *error);
// The stores over one database.
std::unique_ptr<Storage> storageOver(const std::shared_ptr<SqlDatabase> &db);
