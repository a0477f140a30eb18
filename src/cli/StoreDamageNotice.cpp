#include "cli/StoreDamageNotice.h"

#include "cli/Command.h"
#include "scan/VLScanData.h"

void reportStoreDamage(const VLScanData &store, QTextStream &err)
{
    const std::optional<ScanStoreFile::Damage> damage = store.damage();
    if (!damage) {
        return;
    }
    err << "warning: " << Cli::tr("the stored scan %1 is damaged (%2)").arg(store.filePath(), damage->reason) << ": "
        << (damage->keptAs.isEmpty() ? Cli::tr("it could not be kept aside")
                                     : Cli::tr("it was kept as %1").arg(damage->keptAs))
        << '\n';
}
