// HOST-RESOURCES-MIB (RFC 2790): its system, storage and device groups, as far as
// docs/modules.md says.
#pragma once

#include "modules/hostresources/HrDevice.h"
#include "modules/hostresources/HrStorage.h"
#include "modules/hostresources/HrSystem.h"

namespace VLK::modules {

// Processes, storage and devices are shown as they were at most the time to live
// ago, in milliseconds; with 0 as they are at each request.
//
// Ownership: not of the source, which outlives it.
// Threads:   as BMibImplGroup. From Init() to Cleanup() or its end the timer has it
//            sample the processors every five seconds.
// Errors:    as BMibImplGroup. Without a timer there are no processor loads.
// Contract:  no request waits for another host.
class CHostResourcesModule : public BMibImplGroup {
public:
    static constexpr unsigned kTimeToLive = 1000;

    explicit CHostResourcesModule(IHostSource& source, unsigned timeToLive = kTimeToLive);
    // On any thread, also while requests run.
    void SetTimeToLive(unsigned timeToLive);

    int Init() override;
    void Cleanup() override;
    int GetNumImpls() override;
    BMibImpl* GetImplAt(int index) override;

private:
    CHostDevices m_devices;
    CHrSystem m_system;
    CHrMemorySize m_memorySize;
    CHrStorageTable m_storage;
    CHrDeviceTable m_deviceTable;
    CHrProcessorTable m_processors;
};

} // namespace VLK::modules
