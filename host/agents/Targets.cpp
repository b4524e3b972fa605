#include "host/agents/Targets.h"

#include <algorithm>
#include <new>

namespace VLK::host {

namespace {

using modules::SAddressRow;
using modules::SNotifyRow;
using modules::SParamsRow;

constexpr unsigned kAllColumns = 0x3ff;
constexpr size_t kPortOctets = 2;
constexpr int kLeastTimeout = 1; // hundredths of a second

BString TextOf(const std::string& text)
{
    BString copy(text.data(), static_cast<unsigned>(text.size()));
    if (copy.length() != text.size())
        throw std::bad_alloc();
    return copy;
}

std::string TextOf(const BString& text) { return std::string(text.c_str(), text.length()); }

template <class TRow>
TRow ReadOnlyRow()
{
    TRow row;
    row.isActive = true;
    row.storage = eStorageReadOnly;
    row.set = kAllColumns;
    return row;
}

SAddressRow AddressRow(const STrapSink& sink, const std::string& name)
{
    auto row = ReadOnlyRow<SAddressRow>();
    const BTransportAddress& to = sink.address;
    row.domain = to.IsV6() ? modules::eDomainUdpIpv6 : modules::eDomainUdp;
    row.address.assign(to.Bytes(), to.Bytes() + AddressLength(row.domain) - kPortOctets);
    row.address += static_cast<char>(to.Port() >> 8);
    row.address += static_cast<char>(to.Port() & 0xff);
    const auto hundredths = (sink.timeout.count() + 5) / 10;
    row.timeout = static_cast<int>(std::clamp<decltype(hundredths)>(hundredths, 1, INT32_MAX));
    row.retries = static_cast<int>(sink.retries);
    row.tags = row.params = name;
    return row;
}

SParamsRow ParamsRow(const STrapSink& sink)
{
    auto row = ReadOnlyRow<SParamsRow>();
    row.mpModel = sink.protocol;
    row.securityModel = sink.security.securityModel;
    row.securityName = TextOf(sink.security.securityName);
    row.level = sink.security.securityLevel;
    row.community = sink.community;
    row.context = TextOf(sink.context);
    return row;
}

SNotifyRow NotifyRow(const STrapSink& sink, const std::string& name)
{
    auto row = ReadOnlyRow<SNotifyRow>();
    row.tag = name;
    row.kind = sink.isInform ? modules::eNotifyInform : modules::eNotifyTrap;
    return row;
}

BTransportAddress AddressOf(const SAddressRow& row)
{
    const auto* octets = reinterpret_cast<const unsigned char*>(row.address.data());
    const size_t length = row.address.size() - kPortOctets;
    const unsigned port = octets[length] * 256u + octets[length + 1];
    return row.domain == modules::eDomainUdpIpv6 ? BTransportAddress::V6(octets, port)
                                                 : BTransportAddress::V4(octets, port);
}

// A message's model and the security model that goes with it.
bool AreModelsOfOne(const SParamsRow& row)
{
    switch (row.mpModel) {
    case modules::eMpV1:
        return row.securityModel == eModelV1;
    case modules::eMpV2c:
        return row.securityModel == eModelV2c;
    default:
        return row.mpModel == modules::eMpV3 && row.securityModel == eModelUsm;
    }
}

// Why nothing can be sent so; "" when it can.
std::string FindUser(const SParamsRow& row, const std::vector<SUser>& users, STrapSink& sink)
{
    const auto user = std::find_if(users.begin(), users.end(), [&](const SUser& candidate) {
        return candidate.name == row.securityName;
    });
    if (user == users.end())
        return "there is no user '" + row.securityName + "'";
    if (user->StrongestLevel() < row.level)
        return "the user '" + row.securityName + "' has no such securityLevel";
    sink.user = row.securityName;
    sink.level = static_cast<ESecurityLevel>(row.level);
    return "";
}

std::string FindCommunity(const SParamsRow& row, const BCommunities& communities, STrapSink& sink)
{
    if (row.level != eNoAuthNoPriv)
        return "SNMPv1 and SNMPv2c have no such securityLevel";
    const std::string* community =
        row.community.empty() ? communities.NameOf(row.securityName) : &row.community;
    if (!community)
        return "no community has the security name '" + row.securityName + "'";
    sink.community = *community;
    sink.context = TextOf(row.context);
    return "";
}

std::string FillIn(const SParamsRow& row, const BCommunities& communities,
                   const std::vector<SUser>& users, STrapSink& sink)
{
    if (!AreModelsOfOne(row))
        return "its securityModel is not that of its messages";
    sink.protocol = static_cast<EProtocol>(row.mpModel);
    if (sink.isInform && sink.protocol == eSnmpV1)
        return "SNMPv1 has no informs";
    sink.security.securityModel = row.securityModel;
    sink.security.securityName = TextOf(row.securityName);
    sink.security.securityLevel = row.level;
    return sink.protocol == eSnmpV3 ? FindUser(row, users, sink)
                                    : FindCommunity(row, communities, sink);
}

// Goes through the tables.
class BSelection {
public:
    BSelection(const modules::STargets& targets, const BCommunities& communities,
               const std::vector<SUser>& users)
        : m_targets(targets), m_communities(communities), m_users(users)
    {
    }

    void SelectBy(const SNotifyRow& notify)
    {
        for (const auto& [name, address] : m_targets.addresses) {
            if (address.isActive && modules::HoldsTag(address.tags, notify.tag))
                Add(notify, address);
        }
    }
    SReceivers Take() { return std::move(m_made); }

private:
    void Add(const SNotifyRow& notify, const SAddressRow& address)
    {
        const auto params = m_targets.params.find(address.params);
        if (params == m_targets.params.end() || !params->second.isActive ||
            !FitsDomain(address.domain, address.address))
            return;
        STrapSink sink;
        sink.address = AddressOf(address);
        sink.isInform = notify.kind == modules::eNotifyInform;
        sink.timeout = std::chrono::milliseconds(10) * std::max(address.timeout, kLeastTimeout);
        sink.retries = static_cast<unsigned>(address.retries);
        std::string why = FillIn(params->second, m_communities, m_users, sink);
        if (why.empty() && address.storage != eStorageReadOnly &&
            ++m_managed > kMostManagedReceivers)
            why = "there are " + std::to_string(kMostManagedReceivers) + " already";
        if (why.empty())
            m_made.sinks.push_back(std::move(sink));
        else
            m_made.problems.push_back("no notification goes to " + sink.address.ToString() + ": " +
                                      why);
    }

    const modules::STargets& m_targets;
    const BCommunities& m_communities;
    const std::vector<SUser>& m_users;
    size_t m_managed = 0;
    SReceivers m_made;
};

} // namespace

modules::STargets RowsOf(const std::vector<STrapSink>& sinks)
{
    modules::STargets rows;
    for (size_t i = 0; i < sinks.size(); ++i) {
        const std::string name =
            modules::kOwnNames + std::string("trapSink.") + std::to_string(i + 1);
        rows.addresses.emplace(name, AddressRow(sinks[i], name));
        rows.params.emplace(name, ParamsRow(sinks[i]));
        rows.notifies.emplace(name, NotifyRow(sinks[i], name));
    }
    return rows;
}

SReceivers ReceiversOf(const modules::STargets& targets, const BCommunities& communities,
                       const std::vector<SUser>& users)
{
    BSelection selection(targets, communities, users);
    for (const auto& [name, notify] : targets.notifies) {
        if (notify.isActive)
            selection.SelectBy(notify);
    }
    return selection.Take();
}

} // namespace VLK::host
