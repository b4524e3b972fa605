#include "host/CommunityAccess.h"

#include <cstring>

namespace VLK::host {

BCommunityAccess::BCommunityAccess(const std::vector<SCommunity>& communities)
    : m_communities(communities), m_loopbackOnly(communities.empty())
{
    if (m_communities.empty())
        m_communities.push_back({"public", false});
}

const SCommunity* BCommunityAccess::Find(const char* name, size_t length) const
{
    for (const SCommunity& community : m_communities) {
        if (community.name.size() == length &&
            std::memcmp(community.name.data(), name, length) == 0)
            return &community;
    }
    return nullptr;
}

bool BCommunityAccess::Admits(const std::string& community, const BTransportAddress& source) const
{
    if (m_loopbackOnly && !source.IsLoopback())
        return false;
    return Find(community.data(), community.size()) != nullptr;
}

bool BCommunityAccess::MayWrite(const std::string& community) const
{
    const SCommunity* found = Find(community.data(), community.size());
    return found && found->writable;
}

int BCommunityAccess::CheckAccess(const BSecurityParams& security, unsigned char accessKind,
                                  const BString&, const BVarBind&)
{
    const BString& name = security.securityName;
    const SCommunity* community = Find(name.c_str(), name.length());
    if (!community)
        return 1;
    return accessKind == eAccessRead || community->writable ? 0 : 1;
}

} // namespace VLK::host
