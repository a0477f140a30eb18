#pragma once

#include "cli/Command.h"
#include "scan/AppList.h"

#include <functional>

// Records on stdout: with --json an array of every field of each, else one line of fields (recordLine) each.
void printApps(const AppList &apps, CommandContext &ctx, const std::function<QStringList(const VLApp &)> &fields);
