// The kill test's victim: continues from the generation the store holds and saves new ones until it is killed.

#include "StoreGenerations.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (argc != 2) {
        std::fputs("usage: store-writer STORE_FILE\n", stderr);
        return 2;
    }
    VLScanData store(QString::fromLocal8Bit(argv[1]));
    int generation = StoreGenerations::stored(store) + 1;
    // The test times its kill from this line, not from the program's start-up.
    std::puts("writing");
    std::fflush(stdout);
    for (;; ++generation) {
        VLScanData::Change change(store);
        store.setApps(StoreGenerations::records(generation));
        store.saveDataToDisk();
    }
}
