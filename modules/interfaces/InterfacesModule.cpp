#include "modules/interfaces/InterfacesModule.h"

#include <system_error>

namespace VLK::modules {

CInterfacesModule::CInterfacesModule(ITrapSender& traps, INonVolatile* store,
                                     const SInterfacesOptions& options)
    : CInterfacesModule(m_kernel, traps, store, options, HostUptime)
{
    m_watch = std::make_unique<CLinkWatch>(m_kernel, m_history, m_traps, HostUptime);
}

CInterfacesModule::CInterfacesModule(IInterfaces& interfaces, ITrapSender& traps,
                                     INonVolatile* store, const SInterfacesOptions& options,
                                     const FUptime& upTime)
    : BMibImplGroup(BString("IF-MIB")), m_enables(store), m_traps(traps, m_enables),
      m_snapshots(interfaces, m_history, options.timeToLive, upTime), m_number(m_snapshots),
      m_table(m_snapshots), m_xTable(m_snapshots, m_enables), m_lastChange(m_snapshots)
{
}

CInterfacesModule::~CInterfacesModule() = default;

int CInterfacesModule::Init()
{
    m_watchProblem.clear();
    try {
        if (m_watch)
            m_watch->Begin();
    } catch (const std::exception& error) {
        m_watchProblem = error.what();
    }
    return BMibImplGroup::Init();
}

void CInterfacesModule::Cleanup()
{
    if (m_watch)
        m_watch->End();
    BMibImplGroup::Cleanup();
}

// In the order of their identifiers.
BMibImpl* CInterfacesModule::GetImplAt(int index)
{
    BMibImpl* const all[] = {&m_number, &m_table, &m_xTable, &m_lastChange};
    return all[index];
}

} // namespace VLK::modules
