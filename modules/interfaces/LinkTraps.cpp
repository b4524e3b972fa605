#include "modules/interfaces/LinkTraps.h"

#include <new>

namespace VLK::modules {

namespace {

constexpr const char* kSection = "mib-2.ifMIB.ifLinkUpDownTrapEnable";
enum EField { eFieldName = 1, eFieldValue = 2 };

constexpr unsigned kLinkDown[] = {1, 3, 6, 1, 6, 3, 1, 1, 5, 3};
constexpr unsigned kLinkUp[] = {1, 3, 6, 1, 6, 3, 1, 1, 5, 4};
constexpr unsigned kIfEntry[] = {1, 3, 6, 1, 2, 1, 2, 2, 1};
enum EColumn { eIfIndex = 1, eIfAdminStatus = 7, eIfOperStatus = 8 };

constexpr const char* LabelOf(ELinkTraps value)
{
    return value == eLinkTrapsEnabled ? "enabled" : "disabled";
}

template <unsigned count>
BObjectIdentifier OidOf(const unsigned (&arcs)[count])
{
    BObjectIdentifier oid(count, arcs);
    if (oid.Length() != count)
        throw std::bad_alloc();
    return oid;
}

void Bind(BVarBindList& bindings, EColumn column, unsigned index, int value)
{
    BObjectIdentifier name = OidOf(kIfEntry);
    BObjectSyntax syntax;
    syntax.SetInt(value);
    if (!name.Append(static_cast<unsigned>(column)) || !name.Append(index) ||
        !bindings.Append(name, syntax) ||
        bindings[static_cast<int>(bindings.Count()) - 1].Name() != name)
        throw std::bad_alloc();
}

} // namespace

CLinkTrapEnables::CLinkTrapEnables(INonVolatile* store) : m_store(store) { Load(); }

void CLinkTrapEnables::Load()
{
    const int count = m_store ? m_store->GetRecordCount(kSection) : 0;
    for (int position = 0; position < count; ++position)
        LoadAt(position);
}

void CLinkTrapEnables::LoadAt(int position)
{
    BOctetString name;
    int value = 0;
    if (m_store->GetOctetsAt(kSection, position, name, eFieldName) != 0 ||
        m_store->GetIntAt(kSection, position, value, eFieldValue) != 0 ||
        (value != eLinkTrapsEnabled && value != eLinkTrapsDisabled) || name.Length() == 0)
        return;
    TMutexLock lock(m_lock);
    m_values.emplace(std::string(reinterpret_cast<const char*>(name.Data()), name.Length()),
                     static_cast<ELinkTraps>(value));
}

ELinkTraps CLinkTrapEnables::Of(const std::string& name, bool isOnTop) const
{
    return Said(name).value_or(isOnTop ? eLinkTrapsDisabled : eLinkTrapsEnabled);
}

std::optional<ELinkTraps> CLinkTrapEnables::Said(const std::string& name) const
{
    TMutexLock lock(m_lock);
    const auto found = m_values.find(name);
    return found == m_values.end() ? std::nullopt : std::optional<ELinkTraps>(found->second);
}

void CLinkTrapEnables::Say(const std::string& name, std::optional<ELinkTraps> value)
{
    {
        TMutexLock lock(m_lock);
        if (value)
            m_values[name] = *value;
        else
            m_values.erase(name);
    }
    if (m_store)
        m_store->RequestUpdate(this);
}

int CLinkTrapEnables::Update()
{
    Values values;
    {
        TMutexLock lock(m_lock);
        values = m_values;
    }
    m_store->OpenSection(kSection);
    int status = 0;
    int number = 0;
    for (const auto& [name, value] : values) {
        const std::string key = std::to_string(++number);
        const BOctetString octets(static_cast<unsigned>(name.size()),
                                  reinterpret_cast<const unsigned char*>(name.data()));
        if (octets.Length() != name.size())
            throw std::bad_alloc();
        status |= m_store->SetOctets(kSection, key.c_str(), octets, eFieldName, 0);
        status |= m_store->SetInt(kSection, key.c_str(), value, LabelOf(value), eFieldValue, 0);
    }
    return status;
}

void CLinkTraps::Raise(const SLinkTransition& transition)
{
    if (m_enables.Of(transition.name, transition.isOnTop) != eLinkTrapsEnabled)
        return;
    try {
        BVarBindList bindings;
        Bind(bindings, eIfIndex, transition.index, static_cast<int>(transition.index));
        Bind(bindings, eIfAdminStatus, transition.index, transition.admin);
        Bind(bindings, eIfOperStatus, transition.index, transition.other);
        const bool isDown = transition.direction == SLinkTransition::eLinkDown;
        const BTrapV2 trap(isDown ? OidOf(kLinkDown) : OidOf(kLinkUp), bindings);
        if (trap.IsWhole())
            m_sender.SendTrap(trap, nullptr);
    } catch (const std::bad_alloc&) {
        // It is lost like one that the network loses.
    }
}

} // namespace VLK::modules
