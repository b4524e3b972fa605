#include "modules/rmon/AlarmModule.h"

namespace VLK::modules {

CAlarmModule::CAlarmModule(ITrapSender& traps, INonVolatile* store, const SAlarmOptions& options,
                           FSysUpTime sysUpTime)
    : BMibImplGroup(BString("RMON-MIB")), m_alarms(store), m_events(store),
      m_sampler(m_alarms, m_events, traps, options.identity, std::move(sysUpTime)),
      m_alarmTable(m_alarms, m_sampler, options.activationTimeout),
      m_eventTable(m_events, options.activationTimeout), m_logTable(m_events)
{
}

// In the order of their identifiers.
BMibImpl* CAlarmModule::GetImplAt(int index)
{
    BMibImpl* const all[] = {&m_alarmTable, &m_eventTable, &m_logTable};
    return all[index];
}

} // namespace VLK::modules
