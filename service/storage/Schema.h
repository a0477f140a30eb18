#pragma once

// The tables and their versions. A database records the version of its tables in meta.schema_version; a
// database from before versions were kept is version 1. `velmora-service migrate` brings one to the
// program's version; the other commands create the tables in an empty database and refuse any other version.

#include "storage/SqlDatabase.h"

namespace Schema {

int programVersion();
// 0 for an empty database; -1 when it cannot be read (lastError says why).
int version(SqlDatabase &db);
// Applies every step after the database's version, each in a transaction of its own; refuses a newer database.
bool migrate(SqlDatabase &db, QString *error);
// For the commands other than migrate: creates the tables of an empty database, and refuses (with the command
// that fixes it) one whose version is not the program's. location is what --db said, for that message.
bool ensureCurrent(SqlDatabase &db, const QString &location, QString *error);

// Every table with its columns and their kinds ('i' integer, 't' text, 'b' bytes), in an order that copies.
struct Table
{
    const char *name;
    const char *columns;
    const char *kinds;
    const char *identity; // the column a new row numbers itself by, or null
};
const QList<Table> &tables();

} // namespace Schema
