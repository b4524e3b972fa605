// Samples the variables of alarms, and raises their notifications.
#pragma once

#include "modules/rmon/EventRows.h"

#include <atomic>
#include <functional>
#include <vkmibh/agents.h>
#include <vkmibh/handler.h>

namespace VLK::modules {

// The sysUpTime that events are dated with; called on the sampling thread.
using FSysUpTime = std::function<unsigned()>;

// In whose name variables are sampled. A manager learns of what he cannot read himself
// by alarms: it should see no more than everybody who may set alarms.
struct SAlarmIdentity {
    BSecurityParams security;
    BString context;
};

// The timer's callback notes that a second has passed and wakes a thread when samples
// are due; the thread asks the agent for each with a GET of its own. While there are no
// alarms neither of them runs.
//
// Ownership: of none of what it is given, which outlives it.
// Threads:   owns one. Begin() and End() belong to one thread, which holds no lock and
//            calls them while no request runs; the rest is for any. Notifications are
//            raised on its own thread. It holds no lock when it asks and when it sends.
// Errors:    Begin() throws std::system_error and std::bad_alloc.
class CAlarmSampler : private TThread, private ITimeSubscriber {
public:
    CAlarmSampler(CAlarmRows& alarms, CEventRows& events, ITrapSender& traps,
                  SAlarmIdentity identity, FSysUpTime sysUpTime);
    ~CAlarmSampler() override;

    void Begin(IMIBHandler& agent);
    void End();
    // Who is asked, without a thread and a timer: samples are taken by SampleDue(), and
    // seconds pass by CAlarmRows::Tick().
    void SetAgent(IMIBHandler* agent) { m_agent = agent; }

    // An alarm is there. False: without memory for the timer. A table calls it in a SET,
    // with the timer's lock before its own.
    bool Watch();
    // Whether the timer calls.
    bool IsWatching() const;
    // Whether that variable can be sampled now: an SNMP error status. Not to be called
    // with the lock of an implementation.
    int Test(const BObjectIdentifier& variable) const;
    // Takes the samples that are due. For the sampling thread, or while there is none.
    void SampleDue();

private:
    enum EAnswer { eSampled, eMissed, eGone };

    void OnTimeout(BTimeInterval& interval) override;
    int Run() override;
    EAnswer Ask(const BObjectIdentifier& variable, SSample& sample) const;
    void SampleOne(unsigned index);
    void Raise(unsigned index, const SAlarmRaised& raised);
    void Raise(unsigned index, const SAlarmRaised& raised, ECrossing crossing);

    CAlarmRows& m_alarms;
    CEventRows& m_events;
    ITrapSender& m_traps;
    const SAlarmIdentity m_identity;
    const FSysUpTime m_sysUpTime;
    std::atomic<IMIBHandler*> m_agent{nullptr};
    bool m_isBegun = false;
    std::atomic<bool> m_isEnding{false};
    TEvent m_wake;
    // Both under the timer's lock.
    bool m_isRunning = false;
    int m_subscription = 0;
};

} // namespace VLK::modules
