// Modules of each of the library's kinds, filled from plain values: scalars, a
// plain table and a row-status table, whose set handlers fail where told.
#pragma once

#include "tests/support/PlainSet.h"
#include "tests/support/RowStatusProbe.h"
#include "tests/support/ValueText.h"

#include <memory>

namespace VLK {
namespace Test {

constexpr unsigned kPlainCounterHigh = 1;

inline BObjectSyntax SyntaxOf(const SPlainValue& value)
{
    BObjectSyntax syntax;
    if (value.syntax == eAsnInteger)
        syntax.SetInt(std::stoi(value.text));
    else if (value.syntax == eAsnOctetString)
        syntax.SetOctets(BString(value.text.c_str()));
    else if (value.syntax == eAsnCounter64)
        syntax.SetCtr64(
            BCounter64(kPlainCounterHigh, static_cast<unsigned>(std::stoul(value.text))));
    return syntax;
}

inline SPlainValue PlainOf(const BObjectSyntax& value)
{
    if (value.Syntax() == eAsnInteger)
        return {eAsnInteger, std::to_string(value.Int())};
    if (value.Syntax() == eAsnOctetString)
        return {eAsnOctetString, VLKTest::BytesOf(value.Octets())};
    if (value.Syntax() == eAsnCounter64 && value.Ctr64().high == kPlainCounterHigh)
        return {eAsnCounter64, std::to_string(value.Ctr64().low)};
    return {value.Syntax(), ""};
}

// What the modules of an agent are told of a SET, and what they tell of it.
struct SMixedRecord {
    PlainFailing failing;
    int open = 0;        // slots that were taken and not released yet
    std::string trouble; // a slot that was not the binding's own
    std::set<Arcs> timedOut;

    // Throws or gives the status the handler is to fail with.
    int Answer(ESnmpSetOpCode op, const Arcs& name) const
    {
        const auto found = failing.find({op, name});
        if (found == failing.end())
            return eSnmpNoError;
        if (found->second == kPlainThrow)
            throw std::runtime_error(TextOf(name));
        return found->second;
    }
};

// The instances of a module by their whole names. A binding's slot keeps its name
// from phase to phase.
class MixedCells {
public:
    MixedCells(const Arcs& region, SMixedRecord& record) : m_region(region), m_record(record) {}

    Arcs NameOf(unsigned column, const Arcs& index) const
    {
        return Joined(Joined(m_region, {column}), index);
    }
    template <class Value>
    int Get(const Arcs& name, Value& value) const
    {
        const auto found = cells.find(name);
        if (found == cells.end())
            return eSnmpNoSuchName;
        Read(SyntaxOf(found->second), value);
        return eSnmpNoError;
    }
    int Set(const Arcs& name, ESnmpSetOpCode op, const SPlainValue& value, void** slot)
    {
        KeepSlot(name, op, slot);
        if (const int status = m_record.Answer(op, name))
            return status;
        if (op == eSetCommit) {
            m_before.emplace(name, cells.count(name) ? std::optional(cells[name]) : std::nullopt);
            cells[name] = value;
        } else if (op == eSetUndo && m_before.count(name)) {
            cells.erase(name);
            if (m_before[name])
                cells[name] = *m_before[name];
        } else if (op == eSetCleanup) {
            m_before.erase(name);
        }
        return eSnmpNoError;
    }

    PlainValues cells;

private:
    static void Read(const BObjectSyntax& cell, int& value) { value = cell.Int(); }
    static void Read(const BObjectSyntax& cell, BCounter64& value)
    {
        value = BCounter64(cell.Ctr64());
    }
    static void Read(const BObjectSyntax& cell, BString& value)
    {
        value = BString(VLKTest::BytesOf(cell.Octets()).c_str());
    }
    void KeepSlot(const Arcs& name, ESnmpSetOpCode op, void** slot)
    {
        if (op == eSetTest && !*slot) {
            *slot = new Arcs(name);
            ++m_record.open;
        }
        const Arcs* const kept = static_cast<const Arcs*>(*slot);
        if (!kept || *kept != name)
            m_record.trouble += " the slot of " + TextOf(name);
        if (op == eSetCleanup) {
            delete kept;
            *slot = nullptr;
            --m_record.open;
        }
    }

    const Arcs m_region;
    SMixedRecord& m_record;
    std::map<Arcs, std::optional<SPlainValue>> m_before;
};

inline SPlainValue NumberValue(int number) { return {eAsnInteger, std::to_string(number)}; }
inline SPlainValue TextValue(const BString& text) { return {eAsnOctetString, text.c_str()}; }

inline constexpr SConstraintMapEntry kMixedConstraints[] = {
    {eConstraintRange, 1, "number", 0, 9}, {eConstraintRange, 2, "text", 0, 3}, kConstraintEnd};

class MixedScalars : public BMibScalarGroupImpl {
public:
    MixedScalars(const Arcs& region, SMixedRecord& record)
        : BMibScalarGroupImpl("scalars", MakeOid(region)), cells(region, record),
          m_map{ScalarRow<eKindInteger, &MixedScalars::OnGet_Number, &MixedScalars::OnSet_Number>(
                    1, "number", eAsnInteger, eRqReadWrite),
                ScalarRow<eKindDisplayString, &MixedScalars::OnGet_Text, &MixedScalars::OnSet_Text>(
                    2, "text", eAsnOctetString, eRqReadWrite),
                ScalarRow<eKindCounter64, &MixedScalars::OnGet_Counter>(kPlainCounter, "counter",
                                                                        eAsnCounter64, eRqReadOnly),
                kRqEnd}
    {
        Initialize();
    }
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return m_map.data(); }
    const SConstraintMapEntry* GetConstraintMap() const override { return kMixedConstraints; }

    MixedCells cells;

private:
    int OnGet_Number(unsigned, int& value) { return cells.Get(cells.NameOf(1, {0}), value); }
    int OnGet_Text(unsigned, BString& value) { return cells.Get(cells.NameOf(2, {0}), value); }
    int OnGet_Counter(unsigned, BCounter64& value)
    {
        return cells.Get(cells.NameOf(kPlainCounter, {0}), value);
    }
    int OnSet_Number(ESnmpSetOpCode op, unsigned, int value, void** slot)
    {
        return cells.Set(cells.NameOf(1, {0}), op, NumberValue(value), slot);
    }
    int OnSet_Text(ESnmpSetOpCode op, unsigned, const BString& value, void** slot)
    {
        return cells.Set(cells.NameOf(2, {0}), op, TextValue(value), slot);
    }

    mutable std::vector<SRqHndlrMapEntry> m_map;
};

// Its rows are fixed; a cell may be missing until it is set.
class MixedTable : public BMibTableImpl {
public:
    MixedTable(const Arcs& region, SMixedRecord& record)
        : BMibTableImpl("table", MakeOid(region)), cells(region, record),
          m_map{ColumnRow<eKindInteger, &MixedTable::OnGet_Number, &MixedTable::OnSet_Number>(
                    1, "number", eAsnInteger, eRqReadWrite),
                ColumnRow<eKindDisplayString, &MixedTable::OnGet_Text, &MixedTable::OnSet_Text>(
                    2, "text", eAsnOctetString, eRqReadWrite),
                ColumnRow<eKindCounter64, &MixedTable::OnGet_Counter>(kPlainCounter, "counter",
                                                                      eAsnCounter64, eRqReadOnly),
                kRqEnd}
    {
        Initialize();
    }
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return m_map.data(); }
    const SConstraintMapEntry* GetConstraintMap() const override { return kMixedConstraints; }
    int NextIndex(unsigned, unsigned, const BObjectIdentifier& index,
                  BObjectIdentifier& nextIndex) override
    {
        const auto row = rows.upper_bound(ArcsOf(index));
        return row != rows.end() && nextIndex.Set(MakeOid(*row));
    }

    MixedCells cells;
    std::set<Arcs> rows;

private:
    int Write(unsigned column, const BObjectIdentifier& instance, ESnmpSetOpCode op,
              const SPlainValue& value, void** slot)
    {
        const int status = cells.Set(cells.NameOf(column, ArcsOf(instance)), op, value, slot);
        const bool isMissing = op == eSetTest && !rows.count(ArcsOf(instance));
        return status == eSnmpNoError && isMissing ? int(eSnmpNoCreation) : status;
    }
    int OnGet_Number(const BObjectIdentifier& instance, unsigned, int& value)
    {
        return cells.Get(cells.NameOf(1, ArcsOf(instance)), value);
    }
    int OnGet_Text(const BObjectIdentifier& instance, unsigned, BString& value)
    {
        return cells.Get(cells.NameOf(2, ArcsOf(instance)), value);
    }
    int OnGet_Counter(const BObjectIdentifier& instance, unsigned, BCounter64& value)
    {
        return cells.Get(cells.NameOf(kPlainCounter, ArcsOf(instance)), value);
    }
    int OnSet_Number(const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned, int value,
                     void** slot)
    {
        return Write(1, instance, op, NumberValue(value), slot);
    }
    int OnSet_Text(const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned,
                   const BString& value, void** slot)
    {
        return Write(2, instance, op, TextValue(value), slot);
    }

    mutable std::vector<SRqHndlrMapEntry> m_map;
};

class MixedRows : public CRowProbe {
public:
    static constexpr int kForEver = 3600000; // milliseconds

    MixedRows(const Arcs& region, SMixedRecord& record)
        : CRowProbe(TextOf(region).c_str()), m_region(region), m_record(record)
    {
        SetActivationTimeout(kForEver);
    }
    ~MixedRows() override { CancelTimeouts(); }

    void Fill(const Arcs& name, const SPlainValue& value)
    {
        const size_t at = m_region.size();
        const BObjectIdentifier index = MakeOid(Arcs(name.begin() + long(at) + 1, name.end()));
        SRow& row = rows[index];
        if (name[at] == eProbeName)
            row.name = value.text;
        else
            (name[at] == eProbeLevel ? row.level : row.status) = std::stoi(value.text);
        if (name[at] == eProbeStatus && row.status != eRowActive)
            AddToTimeoutList(index);
    }
    PlainValues Cells() const
    {
        PlainValues values;
        for (const auto& [index, row] : rows) {
            values[NameOf(eProbeName, index)] = {eAsnOctetString, row.name};
            values[NameOf(eProbeLevel, index)] = NumberValue(row.level);
            values[NameOf(eProbeStatus, index)] = NumberValue(row.status);
        }
        return values;
    }
    void RowActivationTimeout(const BObjectIdentifier& index) override
    {
        m_record.timedOut.insert(NameOf(eProbeStatus, index));
    }

protected:
    // Calls are called "commit 3.7".
    int Answer(const std::string& what, const std::string&) override
    {
        const Arcs place = ArcsOf(MakeOid(what.substr(what.find(' ') + 1).c_str()));
        for (const ESnmpSetOpCode op : {eSetTest, eSetCommit}) {
            if (what.compare(0, what.find(' '), PhaseName(op)) == 0)
                return m_record.Answer(op, Joined(m_region, place));
        }
        return eSnmpNoError;
    }

private:
    Arcs NameOf(unsigned column, const BObjectIdentifier& index) const
    {
        return Joined(Joined(m_region, {column}), ArcsOf(index));
    }

    const Arcs m_region;
    SMixedRecord& m_record;
};

} // namespace Test
} // namespace VLK
