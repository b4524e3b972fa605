#include "examples/notification/LeakAlarm.h"

#include <unistd.h>
#include <vkmibh/agents.h>

namespace VLK::examples {

VKMIBH_CONSTINIT SRqHndlrMapEntry CLeakAlarm::s_map[] = {
    ScalarRow<eKindEnumerated, &CLeakAlarm::OnGet_State>(1, "leakState", eAsnInteger, eRqReadOnly),
    kRqEnd};

CLeakAlarm::CLeakAlarm(const std::string& path, ITrapSender& traps)
    : BMibScalarGroupImpl("EXAMPLE-MIB.leak", BObjectIdentifier("1.3.6.1.4.1.32473.2.9")),
      m_path(path), m_traps(traps)
{
}

// After this no OnTimeout() comes, which uses the members. Not GetInstance(): the timer
// may be gone already.
CLeakAlarm::~CLeakAlarm()
{
    if (BTimer* timer = BTimer::s_pInstance)
        timer->Unsubscribe(this);
}

// Not from Initialize(), which holds Mutex(): the timer's lock comes before it.
int CLeakModule::Init()
{
    const int count = BMibImplGroup::Init();
    m_alarm.Watch();
    return count;
}

void CLeakAlarm::Watch()
{
    m_state = Look();
    if (BTimer* timer = BTimer::GetInstance())
        timer->Subscribe(this, 1000, -1);
}

CLeakAlarm::EState CLeakAlarm::Look() const
{
    return access(m_path.c_str(), F_OK) == 0 ? eStateLeaking : eStateDry;
}

// On the timer's thread. The bindings are the objects of the notification; sysUpTime.0
// and snmpTrapOID.0 are added by the agent that sends it.
void CLeakAlarm::OnTimeout(BTimeInterval&)
{
    const EState state = Look();
    if (m_state.exchange(state) == state)
        return;
    BObjectSyntax value;
    value.SetInt(state);
    BVarBindList objects;
    objects.Append(BVarBind(BObjectIdentifier("1.3.6.1.4.1.32473.2.9.1.0"), value));
    const BTrapV2 leakChanged(BObjectIdentifier("1.3.6.1.4.1.32473.2.9.0.1"), objects);
    m_traps.SendTrap(leakChanged, nullptr);
}

int CLeakAlarm::OnGet_State(unsigned, EState& value)
{
    value = m_state;
    return eSnmpNoError;
}

} // namespace VLK::examples
