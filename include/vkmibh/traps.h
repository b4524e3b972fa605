// Notifications in both their forms, and how one becomes the other.
#pragma once

#include <vkmibh/values.h>

namespace VLK {

// Generic trap numbers (RFC 1157 section 4.1.6).
enum ESNMPv1TrapType : int {
    eTrapColdStart = 0,
    eTrapWarmStart = 1,
    eTrapLinkDown = 2,
    eTrapLinkUp = 3,
    eTrapAuthenticationFailure = 4,
    eTrapEgpNeighborLoss = 5,
    eTrapEnterpriseSpecific = 6
};

// The identifiers that notifications are made of, and the mapping between the
// two forms (RFC 3584 sections 3.1 and 3.2).
//
//   const BTrapOIDs* const oids = BTrapOIDs::GetInstance();
//   if (oids && oids->V2ToV1(trapOid, bindings, enterprise, generic, specific))
//       SendAsV1(enterprise, generic, specific, bindings);
//
// Ownership: owns its identifiers; the instance lives until DestroyInstance() or
//            the end of the process.
// Threads:   any; the mapping only reads. DestroyInstance() is for when nobody
//            uses the instance any more.
// Errors:    1/0; what fails leaves its results as they were, but for the generic
//            number of V2ToV1(), which is told first. Without memory for its
//            identifiers an object maps nothing, and GetInstance() is null. A
//            result may be the same object as an argument.
// Contract:  slot order and field order are ABI.
class VKMIBH_API BTrapOIDs : public BSingleton {
public:
    BTrapOIDs();

    // The one instance, made at first use; null without memory.
    static BTrapOIDs* GetInstance();
    static void DestroyInstance();
    static std::atomic<BTrapOIDs*> s_pInstance;

    // An enterprise-specific trap is enterprise.0.specific; its enterprise has two
    // arcs or more.
    bool V1ToV2(const BObjectIdentifier& enterprise, const ESNMPv1TrapType& generic,
                const int& specific, BObjectIdentifier& trapOid) const;
    // The enterprise of a standard notification is the value of the first
    // snmpTrapEnterprise.0 among the bindings (empty when that is no OBJECT
    // IDENTIFIER), or else snmpTraps. Any other notification has two arcs or more,
    // of which the last is the specific number and a 0 before it goes.
    bool V2ToV1(const BObjectIdentifier& trapOid, const BVarBindList& bindings,
                BObjectIdentifier& enterprise, ESNMPv1TrapType& generic, int& specific) const;

    // What every notification starts with (RFC 3416 section 4.2.6).
    const BObjectIdentifier& SysUpTime() const { return m_sysUpTime; }
    const BObjectIdentifier& SnmpTrapOid() const { return m_snmpTrapOid; }
    const BObjectIdentifier& SnmpTrapEnterprise() const { return m_snmpTrapEnterprise; }
    const BObjectIdentifier& SnmpTraps() const { return m_snmpTraps; }
    const BObjectIdentifier& SnmpGroup() const { return m_snmpGroup; }

    // Virtual operations, in slot order. Destroy() deletes the instance.
    ~BTrapOIDs() override;
    void Destroy() override;

private:
    friend struct SLayoutCheck;
    static constexpr int kStandardTraps = 6;

    VKMIBH_LOCAL bool IsWhole() const;
    VKMIBH_LOCAL bool FindEnterprise(const BVarBindList& bindings,
                                     BObjectIdentifier& enterprise) const;

    BObjectIdentifier m_sysUpTime;
    BObjectIdentifier m_snmpGroup;
    BObjectIdentifier m_snmpTrapOid;
    BObjectIdentifier m_snmpTrapEnterprise;
    BObjectIdentifier m_snmpTraps;
    BObjectIdentifier m_standard[kStandardTraps];
};

// A notification on its way out. An agent asks it for the form that it sends.
//
//   BTrapV2 trap(linkDown, bindings);
//   sender.SendTrap(trap, nullptr);
//
// Ownership: owns copies of what it was made from. Belongs to who raises it; an
//            agent that sends it later than in its SendTrap() keeps what it needs.
// Threads:   const calls may run side by side.
// Errors:    1/0, as BTrapOIDs. One that is not whole has neither form.
// Contract:  slot order and field order are ABI.
class VKMIBH_API BTrap {
public:
    BTrap(const BTrap&) = delete;
    BTrap& operator=(const BTrap&) = delete;

    // Those of its own objects: without sysUpTime.0 and snmpTrapOID.0.
    const BVarBindList& Bindings() const { return m_bindings; }
    // False: there was no memory for all that it was made from.
    bool IsWhole() const { return m_isWhole; }

    // Virtual operations, in slot order.
    virtual ~BTrap();
    virtual bool GetV2TrapOid(BObjectIdentifier& trapOid) const = 0;
    virtual bool GetV1TrapParams(BObjectIdentifier& enterprise, ESNMPv1TrapType& generic,
                                 int& specific) const = 0;

protected:
    explicit BTrap(const BVarBindList& bindings);
    // Looks whether a derived class had memory for a further copy.
    void NoteCopy(const BObjectIdentifier& copy, const BObjectIdentifier& original);

private:
    friend struct SLayoutCheck;
    BVarBindList m_bindings;
    bool m_isWhole;
};

// A notification given in the form of SNMPv1. Ownership, Threads, Errors: as BTrap.
class VKMIBH_API BTrapV1 : public BTrap {
public:
    BTrapV1(const BObjectIdentifier& enterprise, ESNMPv1TrapType generic, int specific,
            const BVarBindList& bindings = BVarBindList());

    const BObjectIdentifier& Enterprise() const { return m_enterprise; }
    ESNMPv1TrapType GenericType() const { return m_generic; }
    int SpecificType() const { return m_specific; }

    ~BTrapV1() override;
    bool GetV2TrapOid(BObjectIdentifier& trapOid) const override;
    bool GetV1TrapParams(BObjectIdentifier& enterprise, ESNMPv1TrapType& generic,
                         int& specific) const override;

private:
    friend struct SLayoutCheck;
    BObjectIdentifier m_enterprise;
    ESNMPv1TrapType m_generic;
    int m_specific;
};

// A notification given in the form of SNMPv2. Ownership, Threads, Errors: as BTrap.
class VKMIBH_API BTrapV2 : public BTrap {
public:
    explicit BTrapV2(const BObjectIdentifier& trapOid,
                     const BVarBindList& bindings = BVarBindList());

    const BObjectIdentifier& TrapOid() const { return m_trapOid; }

    ~BTrapV2() override;
    bool GetV2TrapOid(BObjectIdentifier& trapOid) const override;
    bool GetV1TrapParams(BObjectIdentifier& enterprise, ESNMPv1TrapType& generic,
                         int& specific) const override;

private:
    friend struct SLayoutCheck;
    BObjectIdentifier m_trapOid;
};

} // namespace VLK
