#pragma once

// Store contents for the kill test: generation g holds recordCount(g) records, each carrying g as its catalogue id,
// so a file mixing two generations or cut short shows.

#include "scan/VLScanData.h"

namespace StoreGenerations {

inline qsizetype recordCount(int generation)
{
    return 300 + generation % 97;
}

inline AppList records(int generation)
{
    AppList apps;
    for (qsizetype i = 0; i < recordCount(generation); ++i) {
        auto app = std::make_shared<VLApp>();
        app->localPath = QStringLiteral("/Applications/App %1.app").arg(i);
        app->name = QStringLiteral("App %1.app").arg(i);
        app->vlID = QString::number(generation);
        app->bundleID = app->license = app->minOS = QStringLiteral("");
        apps.append(app);
    }
    return apps;
}

// The generation the store holds: 0 when it has none, -1 when its records are not one whole generation.
inline int stored(const VLScanData &store)
{
    const std::optional<AppList> apps = store.apps();
    if (!apps) {
        return 0;
    }
    const int generation = apps->value(0) ? apps->value(0)->vlID.toInt() : -1;
    if (generation < 1 || apps->size() != recordCount(generation)) {
        return -1;
    }
    for (const AppRef &app : *apps) {
        if (app->vlID.toInt() != generation) {
            return -1;
        }
    }
    return generation;
}

} // namespace StoreGenerations
