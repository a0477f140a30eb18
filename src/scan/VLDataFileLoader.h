#pragma once

// Loads the scan store off the caller's thread at start: call loadFile() on a worker, wait until isLoading()
// turns false, then take scanData().

#include "scan/VLScanData.h"

#include <atomic>
#include <memory>

class VLDataFileLoader
{
public:
    VLDataFileLoader() = default;

    void loadFile();
    bool isLoading() const { return m_isLoading.load(std::memory_order_acquire); }
    // Null until loadFile() has finished.
    std::shared_ptr<VLScanData> scanData() const { return isLoading() ? nullptr : m_scanData; }

private:
    std::shared_ptr<VLScanData> m_scanData;
    std::atomic<bool> m_isLoading{true};
};
