#include "scan/VLDataFileLoader.h"

void VLDataFileLoader::loadFile()
{
    m_scanData = std::make_shared<VLScanData>();
    m_isLoading.store(false, std::memory_order_release);
}
