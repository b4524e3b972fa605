// The agent as its own alarms ask it.
#pragma once

#include "host/access/Access.h"

namespace VLK::host {

// Asks in the name that the configuration has for alarms at that time, whatever name it
// is asked in, and under the rights of the same configuration.
//
// Ownership: of neither handler nor access control, which outlive it.
// Threads:   as the handler's Query().
// Errors:    as the handler's.
class BAlarmReader : public IMIBHandler {
public:
    BAlarmReader(IMIBHandler& handler, const BAccess& access) : m_handler(handler), m_access(access)
    {
    }

    int Query(int pduType, int transactionId, const BSecurityParams&, const BString&,
              BVarBindList& list, int& errorIndex) override
    {
        const BRightsOfRequest rights(m_access);
        return m_handler.Query(pduType, transactionId, rights->alarms.security,
                               rights->alarms.context, list, errorIndex);
    }
    bool RegisterSubtreeHandler(BMibSubtreeHandler* added) override
    {
        return m_handler.RegisterSubtreeHandler(added);
    }
    bool RegisterGroup(BMibImplGroup* group) override { return m_handler.RegisterGroup(group); }
    int UnregisterSubtreeHandler(BMibSubtreeHandler* removed) override
    {
        return m_handler.UnregisterSubtreeHandler(removed);
    }
    bool UnregisterGroup(BMibImplGroup* group) override { return m_handler.UnregisterGroup(group); }
    ITransactions* GetITransactions() override { return m_handler.GetITransactions(); }

private:
    IMIBHandler& m_handler;
    const BAccess& m_access;
};

} // namespace VLK::host
