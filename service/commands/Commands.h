#pragma once

// The subcommands of velmora-service. Each takes its arguments (the first being its own name) and returns
// the exit code: 0 success, 1 failure, 2 bad usage.

#include <QStringList>

struct Command
{
    const char *name;
    const char *summary;
    int (*run)(const QStringList &args);
};

int serveCommand(const QStringList &args);
int importCommand(const QStringList &args);
int reportsCommand(const QStringList &args);
int hitsCommand(const QStringList &args);
int crashesCommand(const QStringList &args);
int addMemberCommand(const QStringList &args);
int blacklistCommand(const QStringList &args);
int migrateCommand(const QStringList &args);
int copyCommand(const QStringList &args);

inline constexpr Command commands[] = {
    {"serve", "Answer the program's requests over HTTP.", serveCommand},
    {"import", "Load catalogue records from JSON files.", importCommand},
    {"reports", "Show the problem and bad-bundle reports received.", reportsCommand},
    {"hits", "Show the analytics hits received.", hitsCommand},
    {"crashes", "Show the crash reports received.", crashesCommand},
    {"add-member", "Create a member account.", addMemberCommand},
    {"blacklist", "List the blacklist, or add or remove a name.", blacklistCommand},
    {"migrate", "Bring the database's tables to this program's version.", migrateCommand},
    {"copy", "Copy every row of one database into another (--from, --to).", copyCommand},
};
