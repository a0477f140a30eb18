#pragma once

// The updates of one velmora-cli command: the records are updated at most three at once, with a progress bar each
// on a terminal and the questions asked there (or answered by --yes); then what the updates learnt goes into the
// stored scan. Each update that ends without its new version in place prints its reason on stderr.

#include "cli/Command.h"
#include "install/VLAppDownload.h"
#include "scan/AppList.h"

#include <QHash>

class VLScanData;

class UpdateRun
{
public:
    UpdateRun(CommandContext &ctx, VLScanData &store, bool answerYes);

    // Updates apps (records of store, or catalogue records it does not hold), prints one line per installed app
    // (display name, installed version, path), one "skipped:" line per app left out on purpose (by the queue's
    // rule, or kept running by the user) and returns the exit code: failure when an update that ran failed.
    int run(const AppList &apps, bool asUpdateAll);

private:
    // Puts the new paths into the store's records (found by digest, as the store may have been reloaded) and saves.
    bool applyToStore(const QHash<VLApp *, UpdateOutcome> &outcomes, const AppList &apps);

    CommandContext &m_ctx;
    VLScanData &m_store;
    bool m_answerYes;
};
