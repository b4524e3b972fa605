// An implementation with a handler for every kind, in scalar and in column form,
// that gives and takes the value it holds for the kind's type.
#pragma once

#include <initializer_list>
#include <string>
#include <tuple>
#include <vector>
#include <vkmibh/impl.h>
#include <vkmibh/testing/oids.h>
#include <vkmibh/testing/walks.h>

#include <gtest/gtest.h>

namespace VLK {

using Test::TextOf;
using Test::TwoWalks;

inline BObjectIdentifier OidOf(const char* dotted) { return Test::MakeOid(dotted); }

enum EColor : int { eRed = 1, eBlue = 2 };

class CProbe : public BMibImpl {
public:
    CProbe() : BMibImpl("probe", OidOf("1.3.9")) { Initialize(); }

    using BMibImpl::Get;
    using BMibImpl::Set;
    int Get(unsigned, BVarBind&) override { return eSnmpGenErr; }
    int Set(unsigned, ESnmpSetOpCode, void**, const BVarBind&) override { return eSnmpGenErr; }
    int NextInstance(unsigned, BVarBind&) override { return 0; }

    template <class V>
    V& Value()
    {
        return std::get<V>(m_values);
    }

    template <class V>
    int OnGet(unsigned id, V& value)
    {
        Note(id, "get", nullptr);
        m_wasDefault = IsDefault(value);
        value = Value<V>();
        return m_status;
    }
    template <class V>
    int OnGetAt(const BObjectIdentifier& instance, unsigned id, V& value)
    {
        Note(id, "get", &instance);
        m_wasDefault = IsDefault(value);
        value = Value<V>();
        return m_status;
    }
    template <class V>
    int OnGetStatus(const BObjectIdentifier& instance, unsigned id, V& value, int flag)
    {
        m_flag = flag;
        return OnGetAt(instance, id, value);
    }
    template <class V>
    int OnSet(ESnmpSetOpCode op, unsigned id, V value, void** slot)
    {
        Note(id, std::to_string(op), nullptr);
        Value<std::decay_t<V>>() = value;
        Touch(slot);
        return m_status;
    }
    template <class V>
    int OnSetAt(const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned id, V value,
                void** slot)
    {
        Note(id, std::to_string(op), &instance);
        Value<std::decay_t<V>>() = value;
        Touch(slot);
        return m_status;
    }

    // A whole row of that kind, with its first syntax; scalar form but for the
    // status kinds.
    static SRqHndlrMapEntry RowOf(unsigned kind);
    static SRqHndlrMapEntry ColumnOf(unsigned kind);

    int m_status = 0;
    int m_flag = -1;
    bool m_wasDefault = false;
    void* m_scratch = nullptr; // what a set handler leaves in its slot
    std::vector<std::string> m_calls;

private:
    static bool IsDefault(int value) { return value == 0; }
    static bool IsDefault(unsigned value) { return value == 0; }
    static bool IsDefault(ERowStatus value) { return value == 0; }
    static bool IsDefault(EEntryStatus value) { return value == 0; }
    static bool IsDefault(EColor value) { return value == 0; }
    static bool IsDefault(const BString& value) { return value.empty(); }
    static bool IsDefault(const BOctetString& value) { return value.Length() == 0; }
    static bool IsDefault(const BObjectIdentifier& value) { return value.Length() == 0; }
    static bool IsDefault(const BIpAddress& value)
    {
        return value[0] == 0 && value[1] == 0 && value[2] == 0 && value[3] == 0;
    }
    static bool IsDefault(const BCounter64& value) { return value == BCounter64(); }

    void Note(unsigned id, const std::string& what, const BObjectIdentifier* instance)
    {
        m_calls.push_back(what + " id " + std::to_string(id) +
                          (instance ? " at " + TextOf(*instance) : ""));
    }
    void Touch(void** slot)
    {
        if (slot && m_scratch)
            *slot = m_scratch;
    }

    std::tuple<int, unsigned, BOctetString, BObjectIdentifier, BString, BIpAddress, BCounter64,
               ERowStatus, EEntryStatus, EColor>
        m_values;
};

template <ERqHandlerKind Kind, class V, class Passed = V>
SRqHndlrMapEntry ProbeScalar(EAsnSyntax syntax)
{
    return ScalarRow<Kind, &CProbe::OnGet<V>, &CProbe::OnSet<Passed>>(1, "x", syntax, eRqReadWrite);
}

template <ERqHandlerKind Kind, class V, class Passed = V>
SRqHndlrMapEntry ProbeColumn(EAsnSyntax syntax)
{
    return ColumnRow<Kind, &CProbe::OnGetAt<V>, &CProbe::OnSetAt<Passed>>(1, "x", syntax,
                                                                          eRqReadWrite);
}

template <ERqHandlerKind Kind, class V, class Passed = V>
SRqHndlrMapEntry ProbeStatus()
{
    return ColumnRow<Kind, &CProbe::OnGetStatus<V>, &CProbe::OnSetAt<Passed>>(1, "x", eAsnInteger,
                                                                              eRqReadCreate);
}

inline SRqHndlrMapEntry CProbe::RowOf(unsigned kind)
{
    switch (kind) {
    case 1:
        return ProbeScalar<eKindInteger, int>(eAsnInteger);
    case 2:
        return ProbeScalar<eKindOctetString, BOctetString, const BOctetString&>(eAsnOctetString);
    case 3:
        return ProbeScalar<eKindObjectId, BObjectIdentifier, const BObjectIdentifier&>(
            eAsnObjectId);
    case 4:
        return ProbeScalar<eKindUnsigned, unsigned>(eAsnGauge32);
    case 5:
        return ProbeScalar<eKindDisplayString, BString, const BString&>(eAsnOctetString);
    case 6:
        return ProbeScalar<eKindIpAddress, BIpAddress, const BIpAddress&>(eAsnIpAddress);
    case 7:
        return ProbeScalar<eKindCounter64, BCounter64, const BCounter64&>(eAsnCounter64);
    case 8:
        return ProbeStatus<eKindRowStatus, ERowStatus, const ERowStatus&>();
    case 9:
        return ProbeStatus<eKindEntryStatus, EEntryStatus, const EEntryStatus&>();
    default:
        return ProbeScalar<eKindEnumerated, EColor>(eAsnInteger);
    }
}

inline SRqHndlrMapEntry CProbe::ColumnOf(unsigned kind)
{
    switch (kind) {
    case 1:
        return ProbeColumn<eKindInteger, int>(eAsnInteger);
    case 2:
        return ProbeColumn<eKindOctetString, BOctetString>(eAsnOctetString);
    case 3:
        return ProbeColumn<eKindObjectId, BObjectIdentifier>(eAsnObjectId);
    case 4:
        return ProbeColumn<eKindUnsigned, unsigned>(eAsnGauge32);
    case 5:
        return ProbeColumn<eKindDisplayString, BString>(eAsnOctetString);
    case 6:
        return ProbeColumn<eKindIpAddress, BIpAddress>(eAsnIpAddress);
    case 7:
        return ProbeColumn<eKindCounter64, BCounter64>(eAsnCounter64);
    case 8:
        return ProbeStatus<eKindRowStatus, ERowStatus>();
    case 9:
        return ProbeStatus<eKindEntryStatus, EEntryStatus>();
    default:
        return ProbeColumn<eKindEnumerated, int>(eAsnInteger);
    }
}

// A value of any tag.
inline BObjectSyntax ValueOf(int tag)
{
    BObjectSyntax value;
    switch (tag) {
    case eAsnInteger:
        value.SetInt(1);
        break;
    case eAsnOctetString:
        value.SetOctets(BString("text"));
        break;
    case eAsnObjectId:
        value.SetObjectId(OidOf("1.3.6"));
        break;
    case eAsnIpAddress:
        value.SetIpAddress(BIpAddress(10, 0, 0, 1));
        break;
    case eAsnCounter32:
        value.SetCounter(4000000000u);
        break;
    case eAsnGauge32:
        value.SetGauge(4000000000u);
        break;
    case eAsnTimeTicks:
        value.SetTimeTicks(4000000000u);
        break;
    case eAsnOpaque:
        value.SetOpaque(BOctetString("blob", 4));
        break;
    case eAsnCounter64:
        value.SetCtr64(BCounter64(1, 2));
        break;
    default:
        break;
    }
    return value;
}

inline BObjectSyntax TextValue(const std::string& text)
{
    BObjectSyntax value;
    value.SetOctets(BOctetString(text.data(), static_cast<unsigned>(text.size())));
    return value;
}

inline BObjectSyntax IntValue(int number)
{
    BObjectSyntax value;
    value.SetInt(number);
    return value;
}

constexpr int kAllTags[] = {eAsnInteger,   eAsnOctetString, eAsnNull,      eAsnObjectId,
                            eAsnIpAddress, eAsnCounter32,   eAsnGauge32,   eAsnTimeTicks,
                            eAsnOpaque,    eAsnCounter64,   eNoSuchObject, eNoSuchInstance,
                            eEndOfMibView};
constexpr ESnmpSetOpCode kAllPhases[] = {eSetTest, eSetCommit, eSetUndo, eSetCleanup};

// The table of the kinds, written down once more.
inline bool Suits(unsigned kind, int tag)
{
    static const std::vector<int> kTags[] = {{},   {2},  {4, 68}, {6}, {65, 66, 67}, {4},
                                             {64}, {70}, {2},     {2}, {2}};
    for (int suited : kTags[kind])
        if (suited == tag)
            return true;
    return false;
}

} // namespace VLK
