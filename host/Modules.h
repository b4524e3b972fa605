// The MIB modules that the agent serves beside the system group.
#pragma once

#include "host/EngineIdentity.h"
#include "host/SysUpTime.h"
#include "host/access/Access.h"
#include "modules/SnmpEngine.h"
#include "modules/SnmpGroup.h"
#include "modules/SysORTable.h"
#include "modules/ViewTreeFamily.h"
#include "modules/hostresources/HostResourcesModule.h"
#include "modules/hostresources/ProcHostSource.h"
#include "modules/interfaces/InterfacesModule.h"
#include "modules/rmon/AlarmModule.h"
#include "modules/targets/TargetModule.h"

#include <optional>
#include <vkmibh/agents.h>

namespace VLK::host {

// Tells the operator what is not as the configuration has it.
//
// Ownership: all it is given outlives it; the store may be null. Outlives the
//            handler that it is registered with.
// Errors:    the constructor and Register() throw std::bad_alloc.
class BModules {
public:
    // Without an engine SNMPv3 is not spoken.
    BModules(const SConfiguration& configuration, const std::optional<SEngineIdentity>& engine,
             BAccess& access, modules::SSnmpCounters& counters, BStore* store, ITrapSender& traps);
    // With the handler's own system group, registered in its tree; before any request.
    void Register(IMIBHandler& handler, BMib2System& system, BMibTree& tree);
    // Takes another configuration, as a start does. Not while a SET is at work.
    void Replace(const SConfiguration& configuration);

    const modules::CSnmpGroup& Snmp() const { return m_snmp.Group(); }
    modules::CAlarmModule& Alarms() { return m_alarms; }
    modules::CTargetRows& Targets() { return m_targets.Rows(); }

private:
    void RegisterResources(IMIBHandler& handler, BMib2System& system, BMibTree& tree);

    BSysUpTime m_upTime;
    modules::CSnmpModule m_snmp;
    modules::CViewModule m_views;
    modules::CTargetModule m_targets;
    modules::CInterfacesModule m_interfaces;
    modules::CProcHostSource m_host;
    modules::CHostResourcesModule m_hostResources;
    modules::CAlarmModule m_alarms;
    std::optional<modules::CSnmpEngineModule> m_engine;
    std::optional<modules::CSysORModule> m_resources;
};

} // namespace VLK::host
