// Telling managers of requests that failed their authentication.
#pragma once

#include "host/Dispatcher.h"
#include "host/Mutex.h"
#include "host/RateLimit.h"
#include "modules/SnmpGroup.h"

#include <vkmibh/agents.h>

namespace VLK::host {

// Raises authenticationFailure, as long as snmpEnableAuthenTraps is enabled, and no
// more often than a BRateLimit allows: requests cost their sender nothing.
//
// Ownership: the group and the sender outlive it.
// Threads:   any.
// Errors:    none are told.
class BAuthenticationTraps : public IAuthenticationFailures {
public:
    BAuthenticationTraps(const modules::CSnmpGroup& group, ITrapSender& sender,
                         BRateLimit limit = BRateLimit())
        : m_group(group), m_sender(sender), m_limit(std::move(limit))
    {
    }

    void OnAuthenticationFailure() override
    {
        const BTrapOIDs* oids = BTrapOIDs::GetInstance();
        if (oids && m_group.AreTrapsEnabled() && IsAllowed())
            m_sender.SendTrap(BTrapV1(oids->SnmpTraps(), eTrapAuthenticationFailure, 0), nullptr);
    }

private:
    bool IsAllowed()
    {
        const BLock lock(m_lock);
        return m_limit.Take();
    }

    const modules::CSnmpGroup& m_group;
    ITrapSender& m_sender;
    BMutex m_lock;
    BRateLimit m_limit VKMIBH_TSA(guarded_by(m_lock));
};

} // namespace VLK::host
