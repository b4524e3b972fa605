// A row-status table whose rows live in a std::map: it logs what its handlers are
// asked, and answers what it is told to.
//
//   CRowProbe table;                       // at 1.3.9; columns name 1, level 2, status 3
//   table.answers["commit 3.7"] = 14;      // the status column of row 7 fails to commit
//   ...
//   EXPECT_EQ((Log{"get 3.7", "test 3.7=4"}), table.log);
#pragma once

#include "tests/support/Oids.h"

#include <functional>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>
#include <vkmibh/impl.h>

namespace VLK {
namespace Test {

using Log = std::vector<std::string>;

// An answer that makes the handler throw.
constexpr int kThrow = -1;

enum EProbeColumn : unsigned { eProbeName = 1, eProbeLevel = 2, eProbeStatus = 3 };

inline std::string PhaseName(ESnmpSetOpCode op)
{
    switch (op) {
    case eSetTest:
        return "test";
    case eSetCommit:
        return "commit";
    case eSetUndo:
        return "undo";
    case eSetCleanup:
        return "cleanup";
    }
    return std::to_string(op);
}

// Base is BMibTableImplEx or BMibTableImplEx2, Status is ERowStatus or
// EEntryStatus. Its fields are guarded by Mutex() once several threads ask it.
template <class Base = BMibTableImplEx, class Status = ERowStatus>
class TRowProbe : public Base {
public:
    struct SRow {
        int status = 0;
        std::string name{};
        int level = 0;
    };

    explicit TRowProbe(const char* entry = "1.3.9") : Base("probe", MakeOid(entry))
    {
        map = {Column<eKindDisplayString, &TRowProbe::OnGet_Name, &TRowProbe::OnSet_Name>(
                   eProbeName, "probeName", eAsnOctetString),
               Column<eKindInteger, &TRowProbe::OnGet_Level, &TRowProbe::OnSet_Level>(
                   eProbeLevel, "probeLevel", eAsnInteger),
               Column<kKind, &TRowProbe::OnGet_Status, &TRowProbe::OnSet_Status>(
                   eProbeStatus, "probeStatus", eAsnInteger),
               kRqEnd};
        this->Initialize();
    }
    ~TRowProbe() override { this->CancelTimeouts(); }

    SRqHndlrMapEntry* GetRqHndlrMap() const override { return map.data(); }
    int NextIndex(unsigned, unsigned, const BObjectIdentifier& index,
                  BObjectIdentifier& nextIndex) override
    {
        const auto row = rows.upper_bound(index);
        return row != rows.end() && nextIndex.Set(row->first);
    }
    void RowActivationTimeout(const BObjectIdentifier& instance) override
    {
        Answer("timeout " + Test::TextOf(instance));
    }

    SRow& Row(const char* index) { return rows[MakeOid(index)]; }
    bool HasRow(const char* index) const { return rows.count(MakeOid(index)) != 0; }
    SRqHndlrMapEntry& Column(unsigned column) { return map[column - 1]; }
    // Rows keep nothing of an earlier SET, whose cleanup may have failed.
    void Forget() { m_kept.clear(); }
    // What was logged since it was last asked for.
    Log TakeLog() { return std::exchange(log, Log()); }

    mutable std::vector<SRqHndlrMapEntry> map;
    std::map<BObjectIdentifier, SRow> rows;
    // "get 3.7", "commit 2.7", "timeout 7" to the status that call returns.
    std::map<std::string, int> answers;
    Log log;
    Status preset{};      // what the last get of a status found in its value
    int flag = -1;        // and its flag
    unsigned id = 0;      // of the last call
    bool logs = true;     // off: nothing is logged nor looked up in `answers`
    bool needsRow = true; // off: columns are set where no row is
    // Called in the middle of every logged call.
    std::function<void(const std::string& what)> during;

protected:
    virtual int Answer(const std::string& what, const std::string& value = "")
    {
        if (!logs)
            return 0;
        log.push_back(what + value);
        if (during)
            during(what);
        const auto told = answers.find(what);
        if (told == answers.end())
            return 0;
        if (told->second == kThrow)
            throw std::runtime_error(what);
        return told->second;
    }

private:
    static constexpr ERqHandlerKind kKind =
        std::is_same_v<Status, ERowStatus> ? eKindRowStatus : eKindEntryStatus;

    template <ERqHandlerKind Kind, auto Get, auto Set>
    static constexpr SRqHndlrMapEntry Column(unsigned column, const char* name, EAsnSyntax syntax)
    {
        return ColumnRow<Kind, Get, Set>(column, name, syntax, eRqReadCreate);
    }

    static std::string Place(unsigned column, const BObjectIdentifier& instance)
    {
        return " " + std::to_string(column) + "." + Test::TextOf(instance);
    }

    template <class Read>
    int OnGet(unsigned column, const BObjectIdentifier& instance, unsigned asked, Read read)
    {
        id = asked;
        const int status = Answer("get" + Place(column, instance));
        const auto row = rows.find(instance);
        if (row == rows.end())
            return status != 0 ? status : int(eSnmpNoSuchName);
        read(row->second);
        return status;
    }
    int OnGet_Name(const BObjectIdentifier& instance, unsigned asked, BString& value)
    {
        return OnGet(eProbeName, instance, asked,
                     [&](const SRow& row) { value = BString(row.name.c_str()); });
    }
    int OnGet_Level(const BObjectIdentifier& instance, unsigned asked, int& value)
    {
        return OnGet(eProbeLevel, instance, asked, [&](const SRow& row) { value = row.level; });
    }
    int OnGet_Status(const BObjectIdentifier& instance, unsigned asked, Status& value, int told)
    {
        preset = value;
        flag = told;
        return OnGet(eProbeStatus, instance, asked,
                     [&](const SRow& row) { value = static_cast<Status>(row.status); });
    }

    // Commits by `write`; takes it back, and forgets how, by what commit kept.
    template <class Write>
    int OnSet(unsigned column, const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned asked,
              const std::string& value, Write write)
    {
        id = asked;
        const int status = Answer(PhaseName(op) + Place(column, instance), "=" + value);
        const auto row = rows.find(instance);
        if (status != 0)
            return status;
        if (op == eSetCommit) {
            m_kept.try_emplace(instance, row == rows.end() ? std::optional<SRow>()
                                                           : std::optional<SRow>(row->second));
            write();
        } else if (op == eSetUndo && m_kept.count(instance) != 0) {
            rows.erase(instance);
            if (m_kept[instance])
                rows[instance] = *m_kept[instance];
        } else if (op == eSetCleanup) {
            m_kept.erase(instance);
        }
        return eSnmpNoError;
    }
    int OnSet_Name(const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned asked,
                   const BString& value, void**)
    {
        const int status = OnSet(eProbeName, instance, op, asked, value.c_str(), [&] {
            if (rows.count(instance) != 0)
                rows[instance].name = value.c_str();
        });
        return status != 0 ? status : MissingRow(instance, op);
    }
    int OnSet_Level(const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned asked, int value,
                    void**)
    {
        const int status = OnSet(eProbeLevel, instance, op, asked, std::to_string(value), [&] {
            if (rows.count(instance) != 0)
                rows[instance].level = value;
        });
        return status != 0 ? status : MissingRow(instance, op);
    }
    // A column is set where its row is or is made.
    int MissingRow(const BObjectIdentifier& instance, ESnmpSetOpCode op) const
    {
        const bool missing = needsRow && op == eSetTest && rows.count(instance) == 0 &&
                             !this->IsRowCreation(instance);
        return missing ? eSnmpInconsistentName : eSnmpNoError;
    }
    int OnSet_Status(const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned asked,
                     Status value, void**)
    {
        return OnSet(eProbeStatus, instance, op, asked, std::to_string(value), [&] {
            const int status = this->GetRowState(instance);
            if (status == 0)
                rows.erase(instance);
            else
                rows[instance].status = status;
        });
    }

    std::map<BObjectIdentifier, std::optional<SRow>> m_kept;
};

using CRowProbe = TRowProbe<>;
using CEntryProbe = TRowProbe<BMibTableImplEx, EEntryStatus>;

// With the hook before rows are made or destroyed, which logs "index 7".
class CIndexProbe : public TRowProbe<BMibTableImplEx2> {
public:
    using TRowProbe::TRowProbe;
    int PreIxAllocOrDealloc(const BObjectIdentifier& instance, BVarBindList&) override
    {
        return Answer("index " + Test::TextOf(instance));
    }
};

} // namespace Test
} // namespace VLK
