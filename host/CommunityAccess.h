// Who may read and write, by community name; the security name of a request
// is its community.
//
// Without any community given: `public` reads, nothing writes, and only
// requests from this machine are answered. With communities given, requests
// may come from anywhere.
//
// Threads: unchanging after construction.
// Errors:  CheckAccess() returns 0 to allow, 1 to refuse.
#pragma once

#include "host/TransportAddress.h"

#include <string>
#include <vector>
#include <vkmibh/handler.h>

namespace VLK::host {

struct SCommunity {
    std::string name;
    bool writable = false;
};

class BCommunityAccess : public IAccessControl {
public:
    explicit BCommunityAccess(const std::vector<SCommunity>& communities);

    // Whether a request under this name from there is answered at all.
    bool Admits(const std::string& community, const BTransportAddress& source) const;
    bool MayWrite(const std::string& community) const;

    int CheckAccess(const BSecurityParams& security, unsigned char accessKind,
                    const BString& context, const BVarBind& binding) override;

private:
    const SCommunity* Find(const char* name, size_t length) const;

    std::vector<SCommunity> m_communities;
    bool m_loopbackOnly;
};

} // namespace VLK::host
