#include "host/access/Communities.h"

#include "host/access/Vacm.h"

#include <algorithm>
#include <new>

namespace VLK::host {

namespace {

// Not a shorter one for want of memory: it would be another's.
BString TextOf(const std::string& text)
{
    BString made(text.data(), static_cast<unsigned>(text.size()));
    if (made.length() != text.size())
        throw std::bad_alloc();
    return made;
}

} // namespace

BSecurityParams SecurityOf(const SCommunity& community, EProtocol protocol)
{
    BSecurityParams security;
    security.securityModel = protocol == eSnmpV1 ? eModelV1 : eModelV2c;
    security.securityName = TextOf(community.securityName);
    security.securityLevel = eNoAuthNoPriv;
    return security;
}

BCommunities::BCommunities(const std::vector<SCommunity>& communities)
{
    m_known.reserve(communities.size()); // not to copy names, which may fail without a word
    for (const SCommunity& community : communities) {
        m_known.push_back({community.name,
                           community.sources,
                           {SecurityOf(community, eSnmpV1), SecurityOf(community, eSnmpV2c),
                            TextOf(community.context)}});
    }
    std::stable_sort(m_known.begin(), m_known.end(),
                     [](const SKnown& a, const SKnown& b) { return a.name < b.name; });
}

const BCommunities::SKnown* BCommunities::KnownAs(const std::string& name) const
{
    auto isBefore = [](const SKnown& known, const std::string& wanted) {
        return known.name < wanted;
    };
    auto found = std::lower_bound(m_known.begin(), m_known.end(), name, isBefore);
    return found == m_known.end() || found->name != name ? nullptr : &*found;
}

std::optional<SCommunity> BCommunities::Find(const std::string& name) const
{
    const SKnown* known = KnownAs(name);
    if (!known)
        return std::nullopt;
    const BString& security = known->requester.v1.securityName;
    const BString& context = known->requester.context;
    return SCommunity{name, std::string(security.c_str(), security.length()),
                      std::string(context.c_str(), context.length()), known->sources};
}

const std::string* BCommunities::NameOf(const std::string& securityName) const
{
    const BString wanted = TextOf(securityName);
    auto found = std::find_if(m_known.begin(), m_known.end(), [&](const SKnown& known) {
        return known.requester.context.empty() && known.requester.v2c.securityName == wanted;
    });
    return found == m_known.end() || securityName.empty() ? nullptr : &found->name;
}

const SRequester* BCommunities::Admit(const std::string& community, const BTransportAddress& source,
                                      EAdmission& admission) const
{
    const SKnown* found = KnownAs(community);
    if (!found) {
        admission = eUnknownCommunity;
        return nullptr;
    }
    bool isNear = std::any_of(found->sources.begin(), found->sources.end(),
                              [&](const BNetwork& network) { return network.Holds(source); });
    admission = isNear ? eAdmitted : eForeignSource;
    return isNear ? &found->requester : nullptr;
}

} // namespace VLK::host
