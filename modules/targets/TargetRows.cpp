#include "modules/targets/TargetRows.h"

#include <algorithm>
#include <climits>

namespace VLK::modules {

namespace {

constexpr unsigned kTextMost = 255;

bool IsDelimiter(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

} // namespace

bool FitsDomain(ETargetDomain domain, const std::string& address)
{
    const size_t length = address.size();
    return length == AddressLength(domain) &&
           (address[length - 2] != 0 || address[length - 1] != 0);
}

bool IsTag(const std::string& text) { return std::none_of(text.begin(), text.end(), IsDelimiter); }

bool IsTagList(const std::string& text)
{
    bool wasDelimiter = true; // there is none at the beginning
    for (char c : text) {
        if (wasDelimiter && IsDelimiter(c))
            return false;
        wasDelimiter = IsDelimiter(c);
    }
    return text.empty() || !wasDelimiter;
}

bool HoldsTag(const std::string& list, const std::string& tag)
{
    auto at = list.begin();
    while (!tag.empty() && at != list.end()) {
        const auto end = std::find_if(at, list.end(), IsDelimiter);
        if (std::equal(at, end, tag.begin(), tag.end()))
            return true;
        at = end == list.end() ? end : end + 1;
    }
    return false;
}

void SAddressRow::Load(CEntryReader& reader)
{
    reader.Number(eAddressDomain, domain, eDomainNone, eDomainUdpIpv6);
    reader.Octets(eAddressAddress, address, kTextMost);
    reader.Number(eAddressTimeout, timeout, 0, INT_MAX);
    reader.Number(eAddressRetries, retries, 0, 255);
    reader.Octets(eAddressTags, tags, kTextMost);
    reader.Octets(eAddressParams, params, kRowNameMost);
}

void SAddressRow::Save(CEntryWriter& writer) const
{
    writer.Number(eAddressDomain, domain);
    writer.Octets(eAddressAddress, address);
    writer.Number(eAddressTimeout, timeout);
    writer.Number(eAddressRetries, retries);
    writer.Octets(eAddressTags, tags);
    writer.Octets(eAddressParams, params);
}

void SParamsRow::Load(CEntryReader& reader)
{
    reader.Number(eParamsMpModel, mpModel, 0, INT_MAX);
    reader.Number(eParamsSecurityModel, securityModel, 1, INT_MAX);
    reader.Octets(eParamsSecurityName, securityName, kTextMost);
    reader.Number(eParamsLevel, level, eNoAuthNoPriv, eAuthPriv);
}

void SParamsRow::Save(CEntryWriter& writer) const
{
    writer.Number(eParamsMpModel, mpModel);
    writer.Number(eParamsSecurityModel, securityModel);
    writer.Octets(eParamsSecurityName, securityName);
    writer.Number(eParamsLevel, level);
}

void SNotifyRow::Load(CEntryReader& reader)
{
    reader.Octets(eNotifyTag, tag, kTextMost);
    reader.Number(eNotifyType, kind, eNotifyTrap, eNotifyInform);
}

void SNotifyRow::Save(CEntryWriter& writer) const
{
    writer.Octets(eNotifyTag, tag);
    writer.Number(eNotifyType, kind);
}

void CTargetRows::ReplaceReadOnly(const STargets& rows)
{
    addresses.ReplaceReadOnly(rows.addresses);
    params.ReplaceReadOnly(rows.params);
    notifies.ReplaceReadOnly(rows.notifies);
}

bool CTargetRows::TakeChange()
{
    const bool changes[] = {addresses.TakeChange(), params.TakeChange(), notifies.TakeChange()};
    return changes[0] || changes[1] || changes[2];
}

} // namespace VLK::modules
