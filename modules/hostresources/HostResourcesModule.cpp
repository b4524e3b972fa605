#include "modules/hostresources/HostResourcesModule.h"

namespace VLK::modules {

CHostResourcesModule::CHostResourcesModule(IHostSource& source, unsigned timeToLive)
    : BMibImplGroup(BString("HOST-RESOURCES-MIB")), m_devices(source, timeToLive),
      m_system(source, timeToLive), m_memorySize(source), m_storage(source, timeToLive),
      m_deviceTable(m_devices), m_processors(m_devices)
{
}

void CHostResourcesModule::SetTimeToLive(unsigned timeToLive)
{
    m_devices.SetTimeToLive(timeToLive);
    m_system.SetTimeToLive(timeToLive);
    m_storage.SetTimeToLive(timeToLive);
}

int CHostResourcesModule::Init()
{
    m_devices.Loads().Start();
    return BMibImplGroup::Init();
}

void CHostResourcesModule::Cleanup()
{
    BMibImplGroup::Cleanup();
    m_devices.Loads().Stop();
}

int CHostResourcesModule::GetNumImpls() { return 5; }

BMibImpl* CHostResourcesModule::GetImplAt(int index)
{
    BMibImpl* const all[] = {&m_system, &m_memorySize, &m_storage, &m_deviceTable, &m_processors};
    return index >= 0 && index < GetNumImpls() ? all[index] : nullptr;
}

} // namespace VLK::modules
