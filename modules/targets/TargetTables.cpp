#include "modules/targets/TargetTables.h"

#include <climits>

namespace VLK::modules {

namespace {

struct SDomain {
    ETargetDomain domain;
    const char* oid;
};
constexpr SDomain kDomains[] = {{eDomainUdp, "1.3.6.1.6.1.1"},
                                {eDomainUdpIpv4, "1.3.6.1.2.1.100.1.1"},
                                {eDomainUdpIpv6, "1.3.6.1.2.1.100.1.2"}};

ETargetDomain DomainOf(const BObjectIdentifier& oid)
{
    for (const SDomain& known : kDomains) {
        if (oid == BObjectIdentifier(BString(known.oid)))
            return known.domain;
    }
    return eDomainNone;
}

int CheckTagList(const std::string& text)
{
    return IsTagList(text) ? eSnmpNoError : eSnmpWrongValue;
}
int CheckTag(const std::string& text) { return IsTag(text) ? eSnmpNoError : eSnmpWrongValue; }

// RFC 3413 lets an agent refuse the models that it does not have.
int CheckMpModel(int model)
{
    if (model < 0)
        return eSnmpWrongValue;
    return model == eMpV1 || model == eMpV2c || model == eMpV3 ? eSnmpNoError
                                                               : eSnmpInconsistentValue;
}

int CheckSecurityModel(int model)
{
    if (model < 1)
        return eSnmpWrongValue;
    return model <= 3 ? eSnmpNoError : eSnmpInconsistentValue;
}

} // namespace

using Addr = CTargetAddrTable;

VKMIBH_CONSTINIT SRqHndlrMapEntry CTargetAddrTable::s_map[] = {
    ColumnRow<eKindOctetString>(1, "snmpTargetAddrName", eAsnOctetString, eRqNotAccessible),
    ColumnRow<eKindObjectId, &Addr::OnGet_Domain, &Addr::OnSet_Domain>(
        eAddressDomain, "snmpTargetAddrTDomain", eAsnObjectId, eRqReadCreate),
    ColumnRow<eKindOctetString, &Addr::OnGetText<eAddressAddress, &SAddressRow::address>,
              &Addr::OnSet_Address>(eAddressAddress, "snmpTargetAddrTAddress", eAsnOctetString,
                                    eRqReadCreate),
    ColumnRow<eKindInteger, &Addr::OnGetNumber<eAddressTimeout, &SAddressRow::timeout, int>,
              &Addr::OnSetNumber<eAddressTimeout, &SAddressRow::timeout, &AnyNumber, int>>(
        eAddressTimeout, "snmpTargetAddrTimeout", eAsnInteger, eRqReadCreate),
    ColumnRow<eKindInteger, &Addr::OnGetNumber<eAddressRetries, &SAddressRow::retries, int>,
              &Addr::OnSetNumber<eAddressRetries, &SAddressRow::retries, &AnyNumber, int>>(
        eAddressRetries, "snmpTargetAddrRetryCount", eAsnInteger, eRqReadCreate),
    ColumnRow<eKindOctetString, &Addr::OnGetText<eAddressTags, &SAddressRow::tags>,
              &Addr::OnSetText<eAddressTags, &SAddressRow::tags, &CheckTagList>>(
        eAddressTags, "snmpTargetAddrTagList", eAsnOctetString, eRqReadCreate),
    ColumnRow<eKindOctetString, &Addr::OnGetText<eAddressParams, &SAddressRow::params>,
              &Addr::OnSetText<eAddressParams, &SAddressRow::params, &AnyText>>(
        eAddressParams, "snmpTargetAddrParams", eAsnOctetString, eRqReadCreate),
    ColumnRow<eKindEnumerated, &Addr::OnGet_Storage, &Addr::OnSet_Storage>(
        eAddressStorage, "snmpTargetAddrStorageType", eAsnInteger, eRqReadCreate),
    ColumnRow<eKindRowStatus, &Addr::OnGet_Status, &Addr::OnSet_Status>(
        eAddressStatus, "snmpTargetAddrRowStatus", eAsnInteger, eRqReadCreate),
    kRqEnd};

const SConstraintMapEntry CTargetAddrTable::s_constraints[] = {
    {eConstraintRange, eAddressAddress, nullptr, 1, 255},
    {eConstraintRange, eAddressTimeout, nullptr, 0, INT_MAX},
    {eConstraintRange, eAddressRetries, nullptr, 0, 255},
    {eConstraintRange, eAddressTags, nullptr, 0, 255},
    {eConstraintRange, eAddressParams, nullptr, 1, kRowNameMost},
    {eConstraintConvention, eAddressStorage, cszStorageType, 0, 0},
    {eConstraintConvention, eAddressStatus, cszRowStatus, 0, 0},
    kConstraintEnd};

CTargetAddrTable::CTargetAddrTable(CRows& rows)
    : TNamedTable("SNMP-TARGET-MIB.snmpTargetAddrEntry", "1.3.6.1.6.3.12.1.2.1", rows,
                  eAddressStorage, eAddressStatus)
{
}

int CTargetAddrTable::OnGet_Domain(const BObjectIdentifier& row, unsigned, BObjectIdentifier& value)
{
    ETargetDomain domain = eDomainNone;
    Look(row, [&](const SAddressRow& found) { domain = found.domain; });
    const char* oid = nullptr;
    for (const SDomain& known : kDomains) {
        if (known.domain == domain)
            oid = known.oid;
    }
    if (!oid)
        return eSnmpNoSuchName;
    value = BObjectIdentifier(BString(oid));
    return value.Length() != 0 ? eSnmpNoError : eSnmpGenErr;
}

int CTargetAddrTable::OnSet_Domain(const BObjectIdentifier& row, ESnmpSetOpCode op, unsigned,
                                   const BObjectIdentifier& value, void** slot)
{
    const ETargetDomain domain = op == eSetTest || op == eSetCommit ? DomainOf(value) : eDomainNone;
    if (op == eSetCommit && domain == eDomainNone) // for want of memory
        return eSnmpCommitFailed;
    if (op != eSetTest)
        return CommitOrLeave(row, op, eAddressDomain, slot,
                             [&](SAddressRow& made) { made.domain = domain; });
    if (domain == eDomainNone)
        return eSnmpWrongValue;
    std::string address;
    if (AddressAfterSet(row, address) && !FitsDomain(domain, address))
        return eSnmpInconsistentValue;
    return Test(row, eAddressDomain, slot);
}

int CTargetAddrTable::OnSet_Address(const BObjectIdentifier& row, ESnmpSetOpCode op, unsigned id,
                                    const BOctetString& value, void** slot)
{
    if (op == eSetTest) {
        const ETargetDomain domain = DomainAfterSet(row);
        if (domain != eDomainNone && !FitsDomain(domain, TextOf(value)))
            return eSnmpInconsistentValue;
    }
    return OnSetText<eAddressAddress, &SAddressRow::address, &AnyText>(row, op, id, value, slot);
}

ETargetDomain CTargetAddrTable::DomainAfterSet(const BObjectIdentifier& row) const
{
    if (const BObjectSyntax* const requested = Requested(eAddressDomain, row))
        return DomainOf(requested->ObjectId());
    ETargetDomain domain = eDomainNone;
    Look(row, [&](const SAddressRow& found) { domain = found.domain; });
    return domain;
}

// False: there is none.
bool CTargetAddrTable::AddressAfterSet(const BObjectIdentifier& row, std::string& address) const
{
    if (const BObjectSyntax* const requested = Requested(eAddressAddress, row))
        address = TextOf(requested->Octets());
    else
        Look(row, [&](const SAddressRow& found) { address = found.address; });
    return !address.empty();
}

using Params = CTargetParamsTable;

VKMIBH_CONSTINIT SRqHndlrMapEntry CTargetParamsTable::s_map[] = {
    ColumnRow<eKindOctetString>(1, "snmpTargetParamsName", eAsnOctetString, eRqNotAccessible),
    ColumnRow<eKindInteger, &Params::OnGetNumber<eParamsMpModel, &SParamsRow::mpModel, int>,
              &Params::OnSetNumber<eParamsMpModel, &SParamsRow::mpModel, &CheckMpModel, int>>(
        eParamsMpModel, "snmpTargetParamsMPModel", eAsnInteger, eRqReadCreate),
    ColumnRow<eKindInteger,
              &Params::OnGetNumber<eParamsSecurityModel, &SParamsRow::securityModel, int>,
              &Params::OnSetNumber<eParamsSecurityModel, &SParamsRow::securityModel,
                                   &CheckSecurityModel, int>>(
        eParamsSecurityModel, "snmpTargetParamsSecurityModel", eAsnInteger, eRqReadCreate),
    ColumnRow<eKindOctetString, &Params::OnGetText<eParamsSecurityName, &SParamsRow::securityName>,
              &Params::OnSetText<eParamsSecurityName, &SParamsRow::securityName, &AnyText>>(
        eParamsSecurityName, "snmpTargetParamsSecurityName", eAsnOctetString, eRqReadCreate),
    ColumnRow<eKindInteger, &Params::OnGetNumber<eParamsLevel, &SParamsRow::level, int>,
              &Params::OnSetNumber<eParamsLevel, &SParamsRow::level, &AnyNumber, int>>(
        eParamsLevel, "snmpTargetParamsSecurityLevel", eAsnInteger, eRqReadCreate),
    ColumnRow<eKindEnumerated, &Params::OnGet_Storage, &Params::OnSet_Storage>(
        eParamsStorage, "snmpTargetParamsStorageType", eAsnInteger, eRqReadCreate),
    ColumnRow<eKindRowStatus, &Params::OnGet_Status, &Params::OnSet_Status>(
        eParamsStatus, "snmpTargetParamsRowStatus", eAsnInteger, eRqReadCreate),
    kRqEnd};

const SConstraintMapEntry CTargetParamsTable::s_constraints[] = {
    {eConstraintRange, eParamsLevel, nullptr, eNoAuthNoPriv, eAuthPriv},
    {eConstraintRange, eParamsSecurityName, nullptr, 0, 255},
    {eConstraintConvention, eParamsStorage, cszStorageType, 0, 0},
    {eConstraintConvention, eParamsStatus, cszRowStatus, 0, 0},
    kConstraintEnd};

CTargetParamsTable::CTargetParamsTable(CRows& rows)
    : TNamedTable("SNMP-TARGET-MIB.snmpTargetParamsEntry", "1.3.6.1.6.3.12.1.3.1", rows,
                  eParamsStorage, eParamsStatus)
{
}

using Notify = CNotifyTable;

VKMIBH_CONSTINIT SRqHndlrMapEntry CNotifyTable::s_map[] = {
    ColumnRow<eKindOctetString>(1, "snmpNotifyName", eAsnOctetString, eRqNotAccessible),
    ColumnRow<eKindOctetString, &Notify::OnGetText<eNotifyTag, &SNotifyRow::tag>,
              &Notify::OnSetText<eNotifyTag, &SNotifyRow::tag, &CheckTag>>(
        eNotifyTag, "snmpNotifyTag", eAsnOctetString, eRqReadCreate),
    ColumnRow<eKindEnumerated, &Notify::OnGetNumber<eNotifyType, &SNotifyRow::kind, ENotifyKind>,
              &Notify::OnSetNumber<eNotifyType, &SNotifyRow::kind, &AnyNumber, ENotifyKind>>(
        eNotifyType, "snmpNotifyType", eAsnInteger, eRqReadCreate),
    ColumnRow<eKindEnumerated, &Notify::OnGet_Storage, &Notify::OnSet_Storage>(
        eNotifyStorage, "snmpNotifyStorageType", eAsnInteger, eRqReadCreate),
    ColumnRow<eKindRowStatus, &Notify::OnGet_Status, &Notify::OnSet_Status>(
        eNotifyStatus, "snmpNotifyRowStatus", eAsnInteger, eRqReadCreate),
    kRqEnd};

const SConstraintMapEntry CNotifyTable::s_constraints[] = {
    {eConstraintRange, eNotifyTag, nullptr, 0, 255},
    {eConstraintEnumeration, eNotifyType, nullptr, 0, 0},
    {eConstraintItem, eNotifyType, "trap", eNotifyTrap, 0},
    {eConstraintItem, eNotifyType, "inform", eNotifyInform, 0},
    {eConstraintConvention, eNotifyStorage, cszStorageType, 0, 0},
    {eConstraintConvention, eNotifyStatus, cszRowStatus, 0, 0},
    kConstraintEnd};

CNotifyTable::CNotifyTable(CRows& rows)
    : TNamedTable("SNMP-NOTIFICATION-MIB.snmpNotifyEntry", "1.3.6.1.6.3.13.1.1.1", rows,
                  eNotifyStorage, eNotifyStatus)
{
}

} // namespace VLK::modules
