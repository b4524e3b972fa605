#include "modules/interfaces/IfTables.h"

#include <algorithm>
#include <new>

namespace VLK::modules {

namespace {

constexpr std::size_t kAliasMost = 64;
constexpr std::uint64_t kGauge32Most = 4294967295u;
constexpr unsigned kInteger32Most = 2147483647u;
constexpr std::uint64_t kMegabit = 1000000;

enum ETruthValue : int { eTrue = 1, eFalse = 2 };

// DisplayString is ASCII, and the kernel takes any bytes.
bool TakeText(const std::string& bytes, BString& text)
{
    std::string shown = bytes;
    for (char& c : shown) {
        if (static_cast<unsigned char>(c) < ' ' || static_cast<unsigned char>(c) > '~')
            c = '?';
    }
    text = BString(shown.data(), static_cast<unsigned>(shown.size()));
    if (text.length() != shown.size())
        throw std::bad_alloc();
    return true;
}

bool TakeTruth(const std::optional<bool>& truth, ETruthValue& value)
{
    value = truth.value_or(false) ? eTrue : eFalse;
    return truth.has_value();
}

bool TakeTicks(const std::optional<std::uint64_t>& upTime, unsigned& value)
{
    value = TicksOf(upTime.value_or(0));
    return upTime.has_value();
}

bool ReadIndex(const SIfRow& row, int& value)
{
    value = static_cast<int>(row.index);
    return true;
}

bool ReadName(const SIfRow& row, BString& value) { return TakeText(row.name, value); }

bool ReadType(const SIfRow& row, EIfType& value)
{
    value = row.type;
    return true;
}

bool ReadMtu(const SIfRow& row, int& value)
{
    value = static_cast<int>(std::min(row.mtu.value_or(0), kInteger32Most));
    return row.mtu.has_value();
}

bool ReadSpeed(const SIfRow& row, unsigned& value)
{
    value = static_cast<unsigned>(std::min(row.speed.value_or(0), kGauge32Most));
    return row.speed.has_value();
}

bool ReadHighSpeed(const SIfRow& row, unsigned& value)
{
    const std::uint64_t speed = row.speed.value_or(0);
    const std::uint64_t rounded = speed / kMegabit + (speed % kMegabit >= kMegabit / 2 ? 1 : 0);
    value = static_cast<unsigned>(std::min(rounded, kGauge32Most));
    return row.speed.has_value();
}

bool ReadAddress(const SIfRow& row, BOctetString& value)
{
    const auto length = static_cast<unsigned>(row.address.size());
    if (length > 0 &&
        !value.Assign(length, reinterpret_cast<const unsigned char*>(row.address.data())))
        throw std::bad_alloc();
    return true;
}

template <EIfStatus SInterface::*status>
bool ReadStatus(const SIfRow& row, EIfStatus& value)
{
    value = row.*status;
    return true;
}

template <std::optional<std::uint64_t> SIfRow::*upTime>
bool ReadTicks(const SIfRow& row, unsigned& value)
{
    return TakeTicks(row.*upTime, value);
}

// The low 32 bits of the whole counter.
template <CCounter SIfCounters::*counter>
bool ReadLow(const SIfRow& row, unsigned& value)
{
    value = static_cast<unsigned>((row.counters.*counter).value_or(0));
    return (row.counters.*counter).has_value();
}

template <CCounter SIfCounters::*counter>
bool ReadWhole(const SIfRow& row, BCounter64& value)
{
    const std::uint64_t whole = (row.counters.*counter).value_or(0);
    value.Set(static_cast<unsigned>(whole >> 32), static_cast<unsigned>(whole));
    return (row.counters.*counter).has_value();
}

template <std::optional<bool> SInterface::*truth>
bool ReadTruth(const SIfRow& row, ETruthValue& value)
{
    return TakeTruth(row.*truth, value);
}

bool ReadAlias(const SIfRow& row, BString& value)
{
    return TakeText(row.alias.substr(0, kAliasMost), value);
}

// What a SET of ifLinkUpDownTrapEnable keeps between its phases.
struct SSaid {
    std::string name;
    std::optional<ELinkTraps> before;
};

} // namespace

CInterfaceTable::CInterfaceTable(const char* name, const char* oid, CSnapshots& snapshots)
    : BMibTableImpl(BString(name), BObjectIdentifier(BString(oid))), m_snapshots(snapshots)
{
}

int CInterfaceTable::NextIndex(unsigned id, unsigned, const BObjectIdentifier& index,
                               BObjectIdentifier& nextIndex)
{
    const std::shared_ptr<const SSnapshot> snapshot = Snapshot(id);
    const SIfRow* const row = index.Length() == 0 ? snapshot->First() : snapshot->After(index[0]);
    if (!row)
        return 0;
    if (!nextIndex.Set(row->index))
        throw std::bad_alloc();
    return 1;
}

const SIfRow* CInterfaceTable::RowIn(const SSnapshot& snapshot, const BObjectIdentifier& index)
{
    return index.Length() == 1 ? snapshot.Find(index[0]) : nullptr;
}

using Row = SIfRow;
using Counters = SIfCounters;
using Table = CIfTable;
using XTable = CIfXTable;

VKMIBH_CONSTINIT SRqHndlrMapEntry CIfTable::s_map[] = {
    ColumnRow<eKindInteger, &Table::OnGet<int, ReadIndex>>(1, "ifIndex", eAsnInteger, eRqReadOnly),
    ColumnRow<eKindDisplayString, &Table::OnGet<BString, ReadName>>(2, "ifDescr", eAsnOctetString,
                                                                    eRqReadOnly),
    ColumnRow<eKindEnumerated, &Table::OnGet<EIfType, ReadType>>(3, "ifType", eAsnInteger,
                                                                 eRqReadOnly),
    ColumnRow<eKindInteger, &Table::OnGet<int, ReadMtu>>(4, "ifMtu", eAsnInteger, eRqReadOnly),
    ColumnRow<eKindUnsigned, &Table::OnGet<unsigned, ReadSpeed>>(5, "ifSpeed", eAsnGauge32,
                                                                 eRqReadOnly),
    ColumnRow<eKindOctetString, &Table::OnGet<BOctetString, ReadAddress>>(
        6, "ifPhysAddress", eAsnOctetString, eRqReadOnly),
    ColumnRow<eKindEnumerated, &Table::OnGet<EIfStatus, ReadStatus<&Row::admin>>>(
        7, "ifAdminStatus", eAsnInteger, eRqReadOnly),
    ColumnRow<eKindEnumerated, &Table::OnGet<EIfStatus, ReadStatus<&Row::oper>>>(
        8, "ifOperStatus", eAsnInteger, eRqReadOnly),
    ColumnRow<eKindUnsigned, &Table::OnGet<unsigned, ReadTicks<&Row::lastChange>>>(
        9, "ifLastChange", eAsnTimeTicks, eRqReadOnly),
    ColumnRow<eKindUnsigned, &Table::OnGet<unsigned, ReadLow<&Counters::inOctets>>>(
        10, "ifInOctets", eAsnCounter32, eRqReadOnly),
    ColumnRow<eKindUnsigned, &Table::OnGet<unsigned, ReadLow<&Counters::inUcastPkts>>>(
        11, "ifInUcastPkts", eAsnCounter32, eRqReadOnly),
    ColumnRow<eKindUnsigned, &Table::OnGet<unsigned, ReadLow<&Counters::inDiscards>>>(
        13, "ifInDiscards", eAsnCounter32, eRqReadOnly),
    ColumnRow<eKindUnsigned, &Table::OnGet<unsigned, ReadLow<&Counters::inErrors>>>(
        14, "ifInErrors", eAsnCounter32, eRqReadOnly),
    ColumnRow<eKindUnsigned, &Table::OnGet<unsigned, ReadLow<&Counters::outOctets>>>(
        16, "ifOutOctets", eAsnCounter32, eRqReadOnly),
    ColumnRow<eKindUnsigned, &Table::OnGet<unsigned, ReadLow<&Counters::outUcastPkts>>>(
        17, "ifOutUcastPkts", eAsnCounter32, eRqReadOnly),
    ColumnRow<eKindUnsigned, &Table::OnGet<unsigned, ReadLow<&Counters::outDiscards>>>(
        19, "ifOutDiscards", eAsnCounter32, eRqReadOnly),
    ColumnRow<eKindUnsigned, &Table::OnGet<unsigned, ReadLow<&Counters::outErrors>>>(
        20, "ifOutErrors", eAsnCounter32, eRqReadOnly),
    kRqEnd};

const SConstraintMapEntry CIfTable::s_constraints[] = {
    {eConstraintConvention, 2, cszDisplayString, 0, 0},
    {eConstraintEnumeration, 7, nullptr, 0, 0},
    {eConstraintItem, 7, "up", eIfUp, 0},
    {eConstraintItem, 7, "down", eIfDown, 0},
    {eConstraintItem, 7, "testing", eIfTesting, 0},
    {eConstraintEnumeration, 8, nullptr, 0, 0},
    {eConstraintItem, 8, "up", eIfUp, 0},
    {eConstraintItem, 8, "down", eIfDown, 0},
    {eConstraintItem, 8, "testing", eIfTesting, 0},
    {eConstraintItem, 8, "unknown", eIfUnknown, 0},
    {eConstraintItem, 8, "dormant", eIfDormant, 0},
    {eConstraintItem, 8, "notPresent", eIfNotPresent, 0},
    {eConstraintItem, 8, "lowerLayerDown", eIfLowerLayerDown, 0},
    kConstraintEnd};

CIfTable::CIfTable(CSnapshots& snapshots)
    : CInterfaceTable("IF-MIB.ifEntry", "1.3.6.1.2.1.2.2.1", snapshots)
{
}

VKMIBH_CONSTINIT SRqHndlrMapEntry CIfXTable::s_map[] = {
    ColumnRow<eKindDisplayString, &XTable::OnGet<BString, ReadName>>(1, "ifName", eAsnOctetString,
                                                                     eRqReadOnly),
    ColumnRow<eKindUnsigned, &XTable::OnGet<unsigned, ReadLow<&Counters::inMulticastPkts>>>(
        2, "ifInMulticastPkts", eAsnCounter32, eRqReadOnly),
    ColumnRow<eKindCounter64, &XTable::OnGet<BCounter64, ReadWhole<&Counters::inOctets>>>(
        6, "ifHCInOctets", eAsnCounter64, eRqReadOnly),
    ColumnRow<eKindCounter64, &XTable::OnGet<BCounter64, ReadWhole<&Counters::inUcastPkts>>>(
        7, "ifHCInUcastPkts", eAsnCounter64, eRqReadOnly),
    ColumnRow<eKindCounter64, &XTable::OnGet<BCounter64, ReadWhole<&Counters::inMulticastPkts>>>(
        8, "ifHCInMulticastPkts", eAsnCounter64, eRqReadOnly),
    ColumnRow<eKindCounter64, &XTable::OnGet<BCounter64, ReadWhole<&Counters::outOctets>>>(
        10, "ifHCOutOctets", eAsnCounter64, eRqReadOnly),
    ColumnRow<eKindCounter64, &XTable::OnGet<BCounter64, ReadWhole<&Counters::outUcastPkts>>>(
        11, "ifHCOutUcastPkts", eAsnCounter64, eRqReadOnly),
    ColumnRow<eKindEnumerated, &XTable::OnGet_Enable, &XTable::OnSet_Enable>(
        14, "ifLinkUpDownTrapEnable", eAsnInteger, eRqReadWrite),
    ColumnRow<eKindUnsigned, &XTable::OnGet<unsigned, ReadHighSpeed>>(15, "ifHighSpeed",
                                                                      eAsnGauge32, eRqReadOnly),
    ColumnRow<eKindEnumerated, &XTable::OnGet<ETruthValue, ReadTruth<&Row::isPromiscuous>>>(
        16, "ifPromiscuousMode", eAsnInteger, eRqReadOnly),
    ColumnRow<eKindEnumerated, &XTable::OnGet<ETruthValue, ReadTruth<&Row::hasConnector>>>(
        17, "ifConnectorPresent", eAsnInteger, eRqReadOnly),
    ColumnRow<eKindDisplayString, &XTable::OnGet<BString, ReadAlias>>(18, "ifAlias",
                                                                      eAsnOctetString, eRqReadOnly),
    ColumnRow<eKindUnsigned, &XTable::OnGet<unsigned, ReadTicks<&Row::discontinuity>>>(
        19, "ifCounterDiscontinuityTime", eAsnTimeTicks, eRqReadOnly),
    kRqEnd};

const SConstraintMapEntry CIfXTable::s_constraints[] = {
    {eConstraintConvention, 1, cszDisplayString, 0, 0},
    {eConstraintEnumeration, 14, nullptr, 0, 0},
    {eConstraintItem, 14, "enabled", eLinkTrapsEnabled, 0},
    {eConstraintItem, 14, "disabled", eLinkTrapsDisabled, 0},
    {eConstraintConvention, 16, cszTruthValue, 0, 0},
    {eConstraintConvention, 17, cszTruthValue, 0, 0},
    {eConstraintRange, 18, nullptr, 0, static_cast<int>(kAliasMost)},
    kConstraintEnd};

CIfXTable::CIfXTable(CSnapshots& snapshots, CLinkTrapEnables& enables)
    : CInterfaceTable("IF-MIB.ifXEntry", "1.3.6.1.2.1.31.1.1.1", snapshots), m_enables(enables)
{
}

int CIfXTable::OnGet_Enable(const BObjectIdentifier& index, unsigned id, ELinkTraps& value)
{
    const std::shared_ptr<const SSnapshot> snapshot = Snapshot(id);
    const SIfRow* const row = RowIn(*snapshot, index);
    if (!row)
        return eSnmpNoSuchName;
    value = m_enables.Of(row->name, row->isOnTop);
    return eSnmpNoError;
}

// The slot keeps the interface's name, for it may be gone at the next phase, and what
// was there before the first commit, so that undo is right for several bindings too.
int CIfXTable::OnSet_Enable(const BObjectIdentifier& index, ESnmpSetOpCode op, unsigned id,
                            ELinkTraps value, void** slot)
{
    if (op == eSetTest)
        return TestEnable(index, id, slot);
    auto* const said = slot ? static_cast<SSaid*>(*slot) : nullptr;
    if (!said)
        return op == eSetCommit ? eSnmpCommitFailed : eSnmpNoError;
    if (op == eSetCommit) {
        m_enables.Say(said->name, value);
    } else if (op == eSetUndo) {
        m_enables.Say(said->name, said->before);
    } else {
        delete said;
        *slot = nullptr;
    }
    return eSnmpNoError;
}

int CIfXTable::TestEnable(const BObjectIdentifier& index, unsigned id, void** slot)
{
    const std::shared_ptr<const SSnapshot> snapshot = Snapshot(id);
    const SIfRow* const row = RowIn(*snapshot, index);
    if (!row)
        return eSnmpNoCreation;
    if (!slot)
        return eSnmpResourceUnavailable;
    *slot = new SSaid{row->name, m_enables.Said(row->name)};
    return eSnmpNoError;
}

VKMIBH_CONSTINIT SRqHndlrMapEntry CIfNumber::s_map[] = {
    ScalarRow<eKindInteger, &CIfNumber::OnGet>(1, "ifNumber", eAsnInteger, eRqReadOnly), kRqEnd};

CIfNumber::CIfNumber(CSnapshots& snapshots)
    : BMibScalarImpl(BString("IF-MIB.ifNumber"), BObjectIdentifier(BString("1.3.6.1.2.1.2.1"))),
      m_snapshots(snapshots)
{
}

int CIfNumber::OnGet(unsigned id, int& value)
{
    value = static_cast<int>(m_snapshots.Of(id)->rows.size());
    return eSnmpNoError;
}

VKMIBH_CONSTINIT SRqHndlrMapEntry CIfTableLastChange::s_map[] = {
    ScalarRow<eKindUnsigned, &CIfTableLastChange::OnGet>(5, "ifTableLastChange", eAsnTimeTicks,
                                                         eRqReadOnly),
    kRqEnd};

CIfTableLastChange::CIfTableLastChange(CSnapshots& snapshots)
    : BMibScalarImpl(BString("IF-MIB.ifTableLastChange"),
                     BObjectIdentifier(BString("1.3.6.1.2.1.31.1.5"))),
      m_snapshots(snapshots)
{
}

int CIfTableLastChange::Get(unsigned id, BVarBind& binding)
{
    const int status = BMibScalarImpl::Get(id, binding);
    if (status != eSnmpNoSuchName)
        return status;
    binding.Value().SetV2Exception(eNoSuchInstance);
    return eSnmpNoError;
}

int CIfTableLastChange::OnGet(unsigned id, unsigned& value)
{
    return TakeTicks(m_snapshots.Of(id)->tableLastChange, value) ? eSnmpNoError : eSnmpNoSuchName;
}

} // namespace VLK::modules
