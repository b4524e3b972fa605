// The alarm and event groups of RMON-MIB (RFC 2819).
#pragma once

#include "modules/rmon/RmonTables.h"

namespace VLK::modules {

struct SAlarmOptions {
    SAlarmIdentity identity;
    // Milliseconds that a row may stay underCreation.
    int activationTimeout = 600000;
};

// Alarms that managers set on integers of this agent, and the events that they raise.
//
//   CAlarmModule alarms(traps, store, {identity}, [&] { return time.SysUptime(); });
//   handler.RegisterGroup(&alarms);
//   alarms.Init();
//   const CAlarmRun run(alarms, handler);     // samples from here to its end
//
// Ownership: of neither sender nor store, which outlive it; the store may be null, and
//            what managers set is not kept then.
// Threads:   as BMibTableImplEx and CAlarmSampler.
// Errors:    the constructor throws std::bad_alloc, and what the store throws.
class CAlarmModule : public BMibImplGroup {
public:
    CAlarmModule(ITrapSender& traps, INonVolatile* store, const SAlarmOptions& options,
                 FSysUpTime sysUpTime);

    CAlarmRows& Alarms() { return m_alarms; }
    CAlarmSampler& Sampler() { return m_sampler; }

    int GetNumImpls() override { return 3; }
    BMibImpl* GetImplAt(int index) override;

private:
    CAlarmRows m_alarms;
    CEventRows m_events;
    CAlarmSampler m_sampler;
    CAlarmTable m_alarmTable;
    CEventTable m_eventTable;
    CLogTable m_logTable;
};

// Samples as long as it lives. Until then, and after it, alarms are not sampled, and
// none can be given a variable.
//
// Ownership: module and agent outlive it.
// Threads:   made and destroyed while no request runs.
// Errors:    the constructor throws std::system_error and std::bad_alloc.
class CAlarmRun {
public:
    CAlarmRun(CAlarmModule& module, IMIBHandler& agent) : m_sampler(module.Sampler())
    {
        m_sampler.Begin(agent);
    }
    ~CAlarmRun() { m_sampler.End(); }
    CAlarmRun(const CAlarmRun&) = delete;
    CAlarmRun& operator=(const CAlarmRun&) = delete;

private:
    CAlarmSampler& m_sampler;
};

} // namespace VLK::modules
