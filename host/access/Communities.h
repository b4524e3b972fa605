// Who asks, by community name and source address (RFC 3584 section 5).
#pragma once

#include "host/Request.h"
#include "host/access/Network.h"

#include <optional>
#include <string>
#include <vector>
#include <vkmibh/transactions.h>

namespace VLK::host {

// A row of the snmpCommunityTable: a community, and what stands for it in the
// view-based access control.
struct SCommunity {
    std::string name;
    std::string securityName;
    std::string context;
    std::vector<BNetwork> sources;
};

// The security parameters of the community's requests (RFC 3584 section 5.2).
BSecurityParams SecurityOf(const SCommunity& community, EProtocol protocol);

// What a request runs under.
struct SRequester {
    BSecurityParams v1;
    BSecurityParams v2c;
    BString context;

    const BSecurityParams& Security(EProtocol protocol) const
    {
        return protocol == eSnmpV1 ? v1 : v2c;
    }
};

// Finds the requester behind a community. Names are compared as bytes in full
// length; of two communities of one name the first counts.
//
// Threads: unchanging after construction. Nothing is allocated by a question.
class BCommunities {
public:
    enum EAdmission { eAdmitted, eUnknownCommunity, eForeignSource };

    explicit BCommunities(const std::vector<SCommunity>& communities);

    // The community of that security name in the default context (RFC 3584 section
    // 5.2.3), of several the first by name; null for none.
    const std::string* NameOf(const std::string& securityName) const;
    // The requester, or null, and why.
    const SRequester* Admit(const std::string& community, const BTransportAddress& source,
                            EAdmission& admission) const;

    // As it was configured; nothing when there is none of the name.
    std::optional<SCommunity> Find(const std::string& name) const;

private:
    struct SKnown {
        std::string name;
        std::vector<BNetwork> sources;
        SRequester requester;
    };
    const SKnown* KnownAs(const std::string& name) const;

    std::vector<SKnown> m_known; // by name
};

} // namespace VLK::host
