// The well-known identifiers of notifications, and the mapping of their forms.
#include <vkmibh/traps.h>

#include <mutex>
#include <new>
#include <utility>

namespace VLK {

namespace {
std::mutex g_creation;
} // namespace

std::atomic<BTrapOIDs*> BTrapOIDs::s_pInstance{nullptr};

BTrapOIDs::BTrapOIDs()
    : m_sysUpTime(BString("1.3.6.1.2.1.1.3.0")), m_snmpGroup(BString("1.3.6.1.2.1.11")),
      m_snmpTrapOid(BString("1.3.6.1.6.3.1.1.4.1.0")),
      m_snmpTrapEnterprise(BString("1.3.6.1.6.3.1.1.4.3.0")),
      m_snmpTraps(BString("1.3.6.1.6.3.1.1.5")),
      m_standard{
          BObjectIdentifier(BString("1.3.6.1.6.3.1.1.5.1")),
          BObjectIdentifier(BString("1.3.6.1.6.3.1.1.5.2")),
          BObjectIdentifier(BString("1.3.6.1.6.3.1.1.5.3")),
          BObjectIdentifier(BString("1.3.6.1.6.3.1.1.5.4")),
          BObjectIdentifier(BString("1.3.6.1.6.3.1.1.5.5")),
          BObjectIdentifier(BString("1.3.6.1.6.3.1.1.5.6")),
      }
{
}

BTrapOIDs::~BTrapOIDs()
{
    BTrapOIDs* self = this;
    s_pInstance.compare_exchange_strong(self, nullptr);
}

void BTrapOIDs::Destroy() { DestroyInstance(); }

// Identifiers without memory would match the wrong traps.
bool BTrapOIDs::IsWhole() const
{
    bool whole = m_sysUpTime.Length() && m_snmpGroup.Length() && m_snmpTrapOid.Length() &&
                 m_snmpTrapEnterprise.Length() && m_snmpTraps.Length();
    for (const BObjectIdentifier& oid : m_standard)
        whole = whole && oid.Length();
    return whole;
}

BTrapOIDs* BTrapOIDs::GetInstance()
{
    BTrapOIDs* instance = s_pInstance.load(std::memory_order_acquire);
    if (instance)
        return instance;
    std::lock_guard<std::mutex> guard(g_creation);
    instance = s_pInstance.load(std::memory_order_relaxed);
    if (!instance) {
        instance = new (std::nothrow) BTrapOIDs;
        if (instance && !instance->IsWhole()) {
            delete instance;
            instance = nullptr;
        }
        s_pInstance.store(instance, std::memory_order_release);
    }
    return instance;
}

void BTrapOIDs::DestroyInstance()
{
    delete s_pInstance.exchange(nullptr, std::memory_order_acq_rel);
}

bool BTrapOIDs::V1ToV2(const BObjectIdentifier& enterprise, const ESNMPv1TrapType& generic,
                       const int& specific, BObjectIdentifier& trapOid) const
{
    if (!IsWhole())
        return false;
    BObjectIdentifier made;
    if (generic >= eTrapColdStart && generic < kStandardTraps) {
        if (!made.Set(m_standard[generic]))
            return false;
    } else {
        if (generic != eTrapEnterpriseSpecific || enterprise.Length() < 2)
            return false;
        if (!made.Set(enterprise) || !made.Append(0u) || !made.Append(unsigned(specific)))
            return false;
    }
    trapOid = std::move(made);
    return true;
}

bool BTrapOIDs::V2ToV1(const BObjectIdentifier& trapOid, const BVarBindList& bindings,
                       BObjectIdentifier& enterprise, ESNMPv1TrapType& generic, int& specific) const
{
    if (!IsWhole())
        return false;
    int standard = 0;
    while (standard < kStandardTraps && m_standard[standard].Compare(trapOid) != 0)
        ++standard;
    generic = static_cast<ESNMPv1TrapType>(standard);
    if (generic != eTrapEnterpriseSpecific) {
        if (!FindEnterprise(bindings, enterprise))
            return false;
        specific = 0;
        return true;
    }
    const unsigned length = trapOid.Length();
    if (length < 2)
        return false;
    const int last = static_cast<int>(trapOid[length - 1]);
    const unsigned kept = trapOid[length - 2] == 0 ? length - 2 : length - 1;
    BObjectIdentifier made;
    if (!made.Set(trapOid, 0, kept))
        return false;
    enterprise = std::move(made);
    specific = last;
    return true;
}

bool BTrapOIDs::FindEnterprise(const BVarBindList& bindings, BObjectIdentifier& enterprise) const
{
    const BObjectIdentifier* found = &m_snmpTraps;
    for (int i = 0; i < static_cast<int>(bindings.Count()); ++i) {
        if (bindings[i].Name().Compare(m_snmpTrapEnterprise) == 0) {
            // CONTRACT: the first one counts whatever its value is; one that is
            // no OBJECT IDENTIFIER reads as the empty one.
            found = &bindings[i].Value().ObjectId();
            break;
        }
    }
    BObjectIdentifier made;
    if (!made.Set(*found))
        return false;
    enterprise = std::move(made);
    return true;
}

} // namespace VLK
