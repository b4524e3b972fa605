// From a request to its answer.
#pragma once

#include "host/Engine.h"
#include "host/RequestStats.h"
#include "host/access/Access.h"
#include "modules/SnmpCounters.h"

#include <optional>

namespace VLK::host {

// Is told of every request under a community that is unknown, or not answered there.
class IAuthenticationFailures {
public:
    virtual ~IAuthenticationFailures() = default;
    virtual void OnAuthenticationFailure() = 0;
};

// Answers requests from the MIB handler: admits by community, or takes the user that
// a message of SNMPv3 has proved, opens the transaction, asks, and gives the answer the
// form of its protocol version.
//
// Ownership: what it is given outlives it.
// Threads:   only counts after construction; as safe side by side as Query() is.
class BDispatcher : public IRequestHandler {
public:
    // Nobody needs to be told of failures.
    BDispatcher(IMIBHandler& handler, BAccess& access, modules::SSnmpCounters& counters,
                IAuthenticationFailures* failures = nullptr);

    bool Handle(SRequest& request, SResponse& response) override;
    void AnswerInstead(int status, const SRequest& request, SResponse& response) override;
    const BRequestStats& Stats() const { return m_stats; }

private:
    // Who asks, and in which context.
    struct SAsker {
        const BSecurityParams& security;
        const BString& context;
    };

    std::optional<SAsker> Admit(const SRequest& request, const SRights& rights);
    const SRequester* AdmitCommunity(const SRequest& request, const SRights& rights);
    bool Answer(SRequest& request, const SAsker& asker, SResponse& response);
    void CountBadUse(const SRequest& request, const SAsker& asker, const SResponse& response);
    void AnswerList(SRequest& request, const SAsker& asker, SResponse& response);
    void AnswerBulk(const SRequest& request, const SAsker& asker, SResponse& response);
    bool IsContextUnknown(const SRequest& request, const SAsker& asker);
    void AnswerSet(SRequest& request, const SAsker& asker, SResponse& response);
    void AnswerUnfit(const SRequest& request, const SAsker& asker, SResponse& response);

    IMIBHandler& m_handler;
    BAccess& m_access;
    modules::SSnmpCounters& m_counters;
    IAuthenticationFailures* m_failures;
    BRequestStats m_stats;
};

} // namespace VLK::host
