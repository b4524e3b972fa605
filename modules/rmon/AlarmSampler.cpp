#include "modules/rmon/AlarmSampler.h"

#include <cerrno>
#include <system_error>

namespace VLK::modules {

namespace {

constexpr int kProtocol = 1; // SNMPv2c: absent variables are exceptions
constexpr int kTick = 1000;

constexpr unsigned kAlarmEntry[] = {1, 3, 6, 1, 2, 1, 16, 3, 1, 1};
constexpr unsigned kNotifications[] = {1, 3, 6, 1, 2, 1, 16, 0};
constexpr unsigned kRisingAlarm = 1;
constexpr unsigned kFallingAlarm = 2;

class BOpenTransaction {
public:
    BOpenTransaction() : m_registry(BTransactions::GetInstance()), m_transaction(kProtocol)
    {
        if (!m_registry)
            throw std::bad_alloc();
        m_id = m_registry->StartTransaction(&m_transaction);
    }
    ~BOpenTransaction() { m_registry->EndTransaction(m_id); }
    BOpenTransaction(const BOpenTransaction&) = delete;
    BOpenTransaction& operator=(const BOpenTransaction&) = delete;
    int Id() const { return static_cast<int>(m_id); }

private:
    BTransactions* const m_registry;
    BTransaction m_transaction;
    unsigned m_id = 0;
};

template <unsigned count>
BObjectIdentifier OidOf(const unsigned (&arcs)[count], unsigned last)
{
    BObjectIdentifier oid(count, arcs);
    if (oid.Length() != count || !oid.Append(last))
        throw std::bad_alloc();
    return oid;
}

BObjectSyntax Integer(int value)
{
    BObjectSyntax syntax;
    syntax.SetInt(value);
    return syntax;
}

BObjectSyntax Name(const BObjectIdentifier& value)
{
    BObjectSyntax syntax;
    syntax.SetObjectId(value);
    if (syntax.ObjectId() != value)
        throw std::bad_alloc();
    return syntax;
}

void Bind(BVarBindList& bindings, EAlarmColumn column, unsigned index, const BObjectSyntax& value)
{
    BObjectIdentifier name = OidOf(kAlarmEntry, column);
    if (!name.Append(index) || !bindings.Append(name, value) || bindings.Last().Name() != name ||
        bindings.Last().Value().ObjectId() != value.ObjectId())
        throw std::bad_alloc();
}

std::string TextOfEvent(unsigned index, const SAlarmRaised& raised, ECrossing crossing)
{
    const bool rises = crossing == eCrossRising;
    return "alarm " + std::to_string(index) + ": " + raised.alarm.variable.ToString().c_str() +
           (raised.alarm.sampleType == eDeltaValue ? " changed by " : " is ") +
           std::to_string(raised.value) +
           (rises ? ", at or above the rising threshold "
                  : ", at or below the falling threshold ") +
           std::to_string(rises ? raised.alarm.rising : raised.alarm.falling);
}

// What a retry may mend, such as missing memory or a file that cannot be read, says
// nothing of whether there is such a variable.
bool SaysGone(int status)
{
    return status == eSnmpNoSuchName || status == eSnmpNoAccess ||
           status == eSnmpAuthorizationError;
}

} // namespace

CAlarmSampler::CAlarmSampler(CAlarmRows& alarms, CEventRows& events, ITrapSender& traps,
                             SAlarmIdentity identity, FSysUpTime sysUpTime)
    : TThread(false), m_alarms(alarms), m_events(events), m_traps(traps),
      m_identity(std::move(identity)), m_sysUpTime(std::move(sysUpTime))
{
}

CAlarmSampler::~CAlarmSampler() { End(); }

void CAlarmSampler::Begin(IMIBHandler& agent)
{
    if (m_isBegun)
        return;
    BTimer* const timer = BTimer::GetInstance();
    if (!timer)
        throw std::bad_alloc();
    m_isEnding = false;
    m_wake.Reset();
    SetAgent(&agent);
    if (!Start(0, eThreadBlockSignals)) {
        SetAgent(nullptr);
        throw std::system_error(EAGAIN, std::generic_category(), "thread");
    }
    m_isBegun = true;
    {
        TMutexLock lock(timer->Mutex());
        m_isRunning = true;
    }
    if (!m_alarms.IsIdle() && !Watch()) {
        End();
        throw std::bad_alloc();
    }
}

void CAlarmSampler::End()
{
    if (!m_isBegun)
        return;
    if (BTimer* const timer = BTimer::GetInstance()) {
        TMutexLock lock(timer->Mutex());
        m_isRunning = false;
        if (m_subscription != 0)
            timer->Unsubscribe(m_subscription);
        m_subscription = 0;
    }
    m_isEnding = true;
    m_wake.Set();
    Stop(kWaitForever);
    SetAgent(nullptr);
    m_isBegun = false;
}

bool CAlarmSampler::Watch()
{
    BTimer* const timer = BTimer::GetInstance();
    if (!timer)
        return false;
    TMutexLock lock(timer->Mutex());
    if (!m_isRunning || m_subscription != 0)
        return true;
    m_subscription = timer->Subscribe(this, kTick, -1);
    return m_subscription != 0;
}

bool CAlarmSampler::IsWatching() const
{
    BTimer* const timer = BTimer::GetInstance();
    if (!timer)
        return false;
    TMutexLock lock(timer->Mutex());
    return m_subscription != 0;
}

void CAlarmSampler::OnTimeout(BTimeInterval& interval)
{
    const CAlarmRows::ETick tick = m_alarms.Tick();
    if (tick == CAlarmRows::eTickDue) {
        m_wake.Set();
    } else if (tick == CAlarmRows::eTickIdle) {
        interval.count = 0;
        m_subscription = 0;
    }
}

int CAlarmSampler::Run()
{
    while (!m_isEnding) {
        m_wake.Wait(kWaitForever);
        m_wake.Reset();
        if (!m_isEnding)
            SampleDue();
    }
    return 0;
}

int CAlarmSampler::Test(const BObjectIdentifier& variable) const
{
    SSample sample;
    const EAnswer answer = Ask(variable, sample);
    if (answer == eMissed)
        return eSnmpResourceUnavailable;
    return answer == eSampled ? eSnmpNoError : eSnmpWrongValue;
}

CAlarmSampler::EAnswer CAlarmSampler::Ask(const BObjectIdentifier& variable, SSample& sample) const
{
    IMIBHandler* const agent = m_agent;
    const BOpenTransaction transaction;
    BVarBindList list;
    if (!agent || !list.Append(variable) || list[0].Name() != variable)
        return eMissed;
    int errorIndex = 0;
    const int status = agent->Query(ePduGet, transaction.Id(), m_identity.security,
                                    m_identity.context, list, errorIndex);
    if (status != eSnmpNoError)
        return SaysGone(status) ? eGone : eMissed;
    const std::optional<SSample> taken = SampleOf(list[0].Value());
    sample = taken.value_or(sample);
    return taken ? eSampled : eGone;
}

void CAlarmSampler::SampleDue()
{
    try {
        for (unsigned index : m_alarms.Due()) {
            if (m_isEnding)
                return;
            SampleOne(index);
        }
    } catch (const std::exception&) {
        // Without memory for the list nothing was looked at.
    }
}

void CAlarmSampler::SampleOne(unsigned index)
{
    std::optional<SDueSample> due;
    try {
        if (!(due = m_alarms.Begin(index)))
            return;
        SSample sample;
        const EAnswer answer = Ask(due->variable, sample);
        if (answer == eMissed) {
            m_alarms.Miss(*due);
        } else if (answer == eGone) {
            if (m_alarms.Drop(*due))
                m_alarms.RequestSave();
        } else if (const std::optional<SAlarmRaised> raised = m_alarms.Take(*due, sample)) {
            Raise(index, *raised);
        }
    } catch (const std::exception&) {
        if (due)
            m_alarms.Miss(*due);
    }
}

void CAlarmSampler::Raise(unsigned index, const SAlarmRaised& raised)
{
    for (ECrossing crossing : {eCrossRising, eCrossFalling}) {
        if (raised.crossed & crossing)
            Raise(index, raised, crossing);
    }
}

void CAlarmSampler::Raise(unsigned index, const SAlarmRaised& raised, ECrossing crossing)
{
    const SAlarm& alarm = raised.alarm;
    const bool rises = crossing == eCrossRising;
    const int event = rises ? alarm.risingEvent : alarm.fallingEvent;
    if (!m_events.Happen(static_cast<unsigned>(event), m_sysUpTime(),
                         TextOfEvent(index, raised, crossing)))
        return;
    BVarBindList bindings;
    Bind(bindings, eAlarmIndex, index, Integer(static_cast<int>(index)));
    Bind(bindings, eAlarmVariable, index, Name(alarm.variable));
    Bind(bindings, eAlarmSampleType, index, Integer(alarm.sampleType));
    Bind(bindings, eAlarmValue, index, Integer(raised.value));
    Bind(bindings, rises ? eAlarmRisingThreshold : eAlarmFallingThreshold, index,
         Integer(rises ? alarm.rising : alarm.falling));
    const BTrapV2 trap(OidOf(kNotifications, rises ? kRisingAlarm : kFallingAlarm), bindings);
    if (trap.IsWhole())
        m_traps.SendTrap(trap, nullptr);
}

} // namespace VLK::modules
