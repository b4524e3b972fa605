#include "host/Modules.h"

#include "host/Log.h"
#include "host/Resources.h"
#include "host/Store.h"

#include <new>

namespace VLK::host {

namespace {

constexpr int kMostOfMessage = 65507; // of UDP over IPv4

modules::EAuthenTraps AuthenTrapsOf(const SConfiguration& configuration)
{
    return configuration.authenTraps.value_or(false) ? modules::eAuthenTrapsEnabled
                                                     : modules::eAuthenTrapsDisabled;
}

void TellOfAuthenTraps(const SConfiguration& configuration, const modules::CSnmpGroup& snmp)
{
    if (configuration.authenTraps.value_or(snmp.AreTrapsEnabled()) != snmp.AreTrapsEnabled())
        LogLine(eLogWarning, "snmpEnableAuthenTraps is as managers have set it, not as in " +
                                 configuration.file + "; --reset-store returns to the file");
}

void AddGroup(IMIBHandler& handler, BMibImplGroup& group)
{
    if (!handler.RegisterGroup(&group) || group.Init() != group.GetNumImpls())
        throw std::bad_alloc();
}

} // namespace

BModules::BModules(const SConfiguration& configuration,
                   const std::optional<SEngineIdentity>& engine, BAccess& access,
                   modules::SSnmpCounters& counters, BStore* store, ITrapSender& traps)
    : m_snmp(counters, store, AuthenTrapsOf(configuration)), m_views(access.Views(), store),
      m_targets(store, counters), m_interfaces(traps, store, {configuration.timeToLive}),
      m_hostResources(m_host, configuration.timeToLive),
      m_alarms(traps, store, {}, [this] { return m_upTime.Ticks(); })
{
    TellOfAuthenTraps(configuration, m_snmp.Group());
    if (engine)
        m_engine.emplace(modules::SSnmpEngine{engine->id, engine->boots, kMostOfMessage}, counters);
}

void BModules::Replace(const SConfiguration& configuration)
{
    m_snmp.Group().SetFirst(AuthenTrapsOf(configuration));
    TellOfAuthenTraps(configuration, m_snmp.Group());
    m_interfaces.SetTimeToLive(configuration.timeToLive);
    m_hostResources.SetTimeToLive(configuration.timeToLive);
}

// In the place of the library's table, which is registered under other names.
void BModules::RegisterResources(IMIBHandler& handler, BMib2System& system, BMibTree& tree)
{
    SetResources(system, Resources(m_engine.has_value()));
    BObjectIdentifier table(lenOidSysORTable, oidSysORTable);
    tree.Unregister(table);
    m_resources.emplace(system, [this] { return m_upTime.Ticks(); });
    AddGroup(handler, *m_resources);
}

void BModules::Register(IMIBHandler& handler, BMib2System& system, BMibTree& tree)
{
    RegisterResources(handler, system, tree);
    AddGroup(handler, m_snmp);
    AddGroup(handler, m_views);
    AddGroup(handler, m_targets);
    AddGroup(handler, m_interfaces);
    AddGroup(handler, m_hostResources);
    AddGroup(handler, m_alarms);
    if (m_engine)
        AddGroup(handler, *m_engine);
    if (!m_interfaces.WatchProblem().empty())
        LogLine(eLogWarning, "interfaces are not watched: " + m_interfaces.WatchProblem());
}

} // namespace VLK::host
