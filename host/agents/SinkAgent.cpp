#include "host/agents/SinkAgent.h"

#include "host/agents/Parameters.h"

#include <new>
#include <utility>

namespace VLK::host {

namespace {

// No message can hold a shorter identifier (X.690 section 8.19).
constexpr unsigned kLeastArcs = 2;

// SNMPv1 has no values of that kind (RFC 3584 section 3.2).
bool HoldsCounter64(const BVarBindList& bindings)
{
    for (int i = 0; i < static_cast<int>(bindings.Count()); ++i) {
        if (bindings[i].Value().Syntax() == eAsnCounter64)
            return true;
    }
    return false;
}

// One that was made without memory has too few bindings, or empty names and values.
bool IsCopy(const BVarBindList& copy, const BVarBindList& original)
{
    bool isCopy = copy.Count() == original.Count();
    for (int i = 0; isCopy && i < static_cast<int>(original.Count()); ++i) {
        const BObjectSyntax& copied = copy[i].Value();
        const BObjectSyntax& value = original[i].Value();
        isCopy = copy[i].Name().Length() == original[i].Name().Length() &&
                 copied.Octets().Length() == value.Octets().Length() &&
                 copied.ObjectId().Length() == value.ObjectId().Length();
    }
    return isCopy;
}

std::string VersionOf(const SReceiver& receiver)
{
    if (receiver.protocol == eSnmpV1)
        return "1";
    return std::string(receiver.protocol == eSnmpV3 ? "3" : "2c") +
           (receiver.isInform ? ", informs" : "");
}

} // namespace

BSinkAgent::BSinkAgent(INotifier& notifier, const STrapSink& sink, BAccess& access,
                       std::function<unsigned()> upTime)
    : m_notifier(notifier), m_sink(sink), m_access(access), m_upTime(std::move(upTime)),
      m_receiver(notifier.AddReceiver(m_sink, m_delivery))
{
}

int BSinkAgent::SendTrap(const BTrap& trap, int)
{
    if (m_delivery->isSuspended)
        return eDone;
    try {
        return PassOn(trap);
    } catch (const std::bad_alloc&) { // no concern of who raises it
        ++m_delivery->failed;
        return eNotWhole;
    }
}

int BSinkAgent::PassOn(const BTrap& trap)
{
    SNotification notification;
    if (!Fill(trap, notification)) {
        ++m_delivery->failed;
        return eNotWhole;
    }
    if (!IsShown(notification)) {
        ++m_notShown;
        return eNotShown;
    }
    m_notifier.Notify(m_receiver, std::move(notification));
    return eDone;
}

// False when the trap does not have the sink's form.
bool BSinkAgent::Fill(const BTrap& trap, SNotification& notification) const
{
    notification.upTime = m_upTime();
    notification.bindings = trap.Bindings();
    if (!trap.IsWhole() || !IsCopy(notification.bindings, trap.Bindings()) ||
        !trap.GetV2TrapOid(notification.trapOid) || notification.trapOid.Length() < kLeastArcs)
        return false;
    return m_sink.protocol != eSnmpV1 ||
           (trap.GetV1TrapParams(notification.enterprise, notification.generic,
                                 notification.specific) &&
            notification.enterprise.Length() >= kLeastArcs &&
            !HoldsCounter64(notification.bindings));
}

bool BSinkAgent::IsShown(const SNotification& notification)
{
    const BRightsOfRequest rights(m_access); // one for all that it asks
    bool isShown = IsShown(notification, notification.trapOid);
    for (int i = 0; isShown && i < static_cast<int>(notification.bindings.Count()); ++i)
        isShown = IsShown(notification, notification.bindings[i].Name());
    return isShown;
}

bool BSinkAgent::IsShown(const SNotification& notification, const BObjectIdentifier& name)
{
    SVacmDecision decision =
        BRightsOfRequest(m_access)->vacm.Decide(m_sink.security, eViewNotify, m_sink.context, name);
    if (decision.answer == eVacmAllowed)
        return true;
    m_access.Refused().Write([&] {
        return std::string("did not send ") + notification.trapOid.ToString().c_str() + " to " +
               m_sink.address.ToString() + ": the notify view of its " +
               (m_sink.protocol == eSnmpV3 ? "user" : "community") + " does not show " +
               name.ToString().c_str();
    });
    return false;
}

int BSinkAgent::Init(int) { return 0; }

int BSinkAgent::Suspend(int)
{
    m_delivery->isSuspended = true;
    return 0;
}

int BSinkAgent::Resume(int)
{
    m_delivery->isSuspended = false;
    return 0;
}

int BSinkAgent::Start(int flag) { return Resume(flag); }

int BSinkAgent::Stop(int flag) { return Suspend(flag); }

// Not the community: it may be a secret.
BString BSinkAgent::GetParams()
{
    BParameters parameters;
    parameters.Add("address", m_sink.address.ToString()).Add("version", VersionOf(m_sink));
    if (m_sink.protocol == eSnmpV3)
        parameters.Add("user", m_sink.user).Add("level", LabelSecurityLevel(m_sink.level));
    else
        parameters.Add("community", "(not shown)");
    parameters.Add("state", m_delivery->isSuspended ? "suspended" : "running")
        .Add("sent", m_delivery->sent)
        .Add("failed", m_delivery->failed)
        .Add("outside the notify view", m_notShown)
        .Add("dropped for want of room", m_delivery->overflowed);
    if (m_sink.isInform)
        parameters.Add("acknowledged", m_delivery->acknowledged)
            .Add("retried", m_delivery->retried)
            .Add("given up", m_delivery->givenUp);
    return parameters.Text(); // cppcheck-suppress returnDanglingLifetime ; it is a copy
}

} // namespace VLK::host
