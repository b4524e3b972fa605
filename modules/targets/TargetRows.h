// What managers set of the receivers of notifications (RFC 3413 sections 4.1 and 4.2).
#pragma once

#include "modules/targets/NamedRows.h"

namespace VLK::modules {

enum EAddressColumn : unsigned {
    eAddressDomain = 2,
    eAddressAddress = 3,
    eAddressTimeout = 4,
    eAddressRetries = 5,
    eAddressTags = 6,
    eAddressParams = 7,
    eAddressStorage = 8,
    eAddressStatus = 9
};
enum EParamsColumn : unsigned {
    eParamsMpModel = 2,
    eParamsSecurityModel = 3,
    eParamsSecurityName = 4,
    eParamsLevel = 5,
    eParamsStorage = 6,
    eParamsStatus = 7
};
enum ENotifyColumn : unsigned {
    eNotifyTag = 2,
    eNotifyType = 3,
    eNotifyStorage = 4,
    eNotifyStatus = 5
};

// The domains that there is a transport for: snmpUDPDomain (RFC 3417),
// transportDomainUdpIpv4 and transportDomainUdpIpv6 (RFC 3419).
enum ETargetDomain : int {
    eDomainNone = 0,
    eDomainUdp = 1,
    eDomainUdpIpv4 = 2,
    eDomainUdpIpv6 = 3
};

// Octets of an address in that domain: of IP, and two of the port.
constexpr unsigned AddressLength(ETargetDomain domain) { return domain == eDomainUdpIpv6 ? 18 : 6; }
// Whether it has that length, and a port.
bool FitsDomain(ETargetDomain domain, const std::string& address);

enum EMpModel : int { eMpV1 = 0, eMpV2c = 1, eMpV3 = 3 };
enum ENotifyKind : int { eNotifyTrap = 1, eNotifyInform = 2 };

// A row of snmpTargetAddrTable.
struct SAddressRow : SNamedRow {
    static constexpr unsigned kNeeded = Bits(eAddressDomain, eAddressAddress, eAddressParams);
    static constexpr unsigned kFixed = Bits(eAddressDomain, eAddressAddress); // while active
    static const char* Section() { return "snmpTargetAddrTable"; }

    ETargetDomain domain = eDomainNone;
    std::string address;
    int timeout = 1500; // hundredths of a second
    int retries = 3;
    std::string tags;
    std::string params;

    void Load(CEntryReader& reader);
    void Save(CEntryWriter& writer) const;
};

// A row of snmpTargetParamsTable.
struct SParamsRow : SNamedRow {
    static constexpr unsigned kNeeded =
        Bits(eParamsMpModel, eParamsSecurityModel, eParamsSecurityName, eParamsLevel);
    static constexpr unsigned kFixed = kNeeded;
    static const char* Section() { return "snmpTargetParamsTable"; }

    int mpModel = eMpV1;
    int securityModel = 1;
    std::string securityName;
    int level = eNoAuthNoPriv;
    // Of a row of the configuration: its community, and the context that stands for;
    // empty, and the community is found by the security name.
    std::string community;
    std::string context;

    void Load(CEntryReader& reader);
    void Save(CEntryWriter& writer) const;
};

// A row of snmpNotifyTable.
struct SNotifyRow : SNamedRow {
    static constexpr unsigned kNeeded = 0;
    static constexpr unsigned kFixed = 0;
    static const char* Section() { return "snmpNotifyTable"; }

    std::string tag;
    ENotifyKind kind = eNotifyTrap;

    void Load(CEntryReader& reader);
    void Save(CEntryWriter& writer) const;
};

// SnmpTagValue and SnmpTagList: tags without delimiters, one delimiter between two.
bool IsTag(const std::string& text);
bool IsTagList(const std::string& text);
// Whether the list holds the tag; an empty one is in none.
bool HoldsTag(const std::string& list, const std::string& tag);

// All three tables at one time.
struct STargets {
    TNamedRows<SAddressRow>::Rows addresses;
    TNamedRows<SParamsRow>::Rows params;
    TNamedRows<SNotifyRow>::Rows notifies;
};

// Ownership, Threads, Errors: as TNamedRows.
struct CTargetRows {
    explicit CTargetRows(INonVolatile* store) : addresses(store), params(store), notifies(store) {}

    STargets Copy() const { return {addresses.Copy(), params.Copy(), notifies.Copy()}; }
    void ReplaceReadOnly(const STargets& rows);
    bool TakeChange();

    TNamedRows<SAddressRow> addresses;
    TNamedRows<SParamsRow> params;
    TNamedRows<SNotifyRow> notifies;
};

} // namespace VLK::modules
