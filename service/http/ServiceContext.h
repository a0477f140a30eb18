#pragma once

// What every request handler may use.

#include "catalogue/CatalogueCache.h"
#include "members/SecretBox.h"
#include "storage/Storage.h"

struct ServiceContext
{
    Storage &storage;
    CatalogueCache &catalogue;
    const SecretBox &secrets;
    QString filesDir;
};
