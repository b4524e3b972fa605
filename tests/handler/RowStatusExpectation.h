// What a SET on row-status tables must do, told from its bindings alone: the order
// of the handler calls, the answer, and the rows and time-outs that are left.
#pragma once

#include "tests/support/RowStatusProbe.h"

#include <algorithm>
#include <set>

namespace VLK {
namespace Test {

// A failing call: its phase, and the position of its binding.
using Fails = std::set<std::pair<ESnmpSetOpCode, int>>;

struct SContent {
    int status = 0;
    std::string name;
    int level = 0;
    bool operator==(const SContent& other) const
    {
        return status == other.status && name == other.name && level == other.level;
    }
};
using Content = std::map<std::string, SContent>; // by table and row, "A1"

inline void PrintTo(const SContent& row, std::ostream* out)
{
    *out << row.status << ":" << row.name << ":" << row.level;
}

// "As1=4" sets the status of row 1 of table A to createAndGo. The other columns
// are the name, "An1=x", and the level, "Al1=7". A and B have a RowStatus column, E
// has an EntryStatus column.
struct SBinding {
    explicit SBinding(const std::string& text)
        : table(text[0]), column(text[1] == 'n'   ? eProbeName
                                 : text[1] == 'l' ? eProbeLevel
                                                  : eProbeStatus),
          row(1, text[2]), value(text.substr(4))
    {
    }
    bool IsStatus() const { return column == eProbeStatus; }
    int Int() const { return std::stoi(value); }
    std::string RowName() const { return table + row; }
    std::string Place() const { return std::to_string(column) + "." + row; }
    std::string Call(ESnmpSetOpCode op) const
    {
        return table + (" " + PhaseName(op)) + " " + Place() + "=" + value;
    }

    char table;
    unsigned column;
    std::string row;
    std::string value;
};

inline bool IsEntryTable(char table) { return table == 'E'; }

inline bool IsInactive(char table, int status)
{
    return status == 3 || (status == 2 && !IsEntryTable(table));
}

inline int FailWith(ESnmpSetOpCode phase)
{
    switch (phase) {
    case eSetTest:
        return eSnmpWrongValue;
    case eSetCommit:
        return eSnmpCommitFailed;
    case eSetUndo:
        return eSnmpUndoFailed;
    default:
        return eSnmpResourceUnavailable;
    }
}

// What a SET must do and answer, told from its bindings alone.
class Expectation {
public:
    Expectation(const std::vector<SBinding>& list, const Content& before, const Fails& fails,
                bool throwing)
        : after(before), m_list(list), m_fails(fails), m_throwing(throwing), m_tested(list.size()),
          m_committed(list.size())
    {
        for (const auto& [row, content] : before) {
            if (IsInactive(row[0], content.status))
                pending.insert(row);
        }
        FormRuns();
        size_t prepared = 0;
        while (prepared < m_runs.size() && Walk(eSetTest, m_runs[prepared++])) {
        }
        if (status == 0) {
            for (size_t i = 0; i < m_runs.size() && Walk(eSetCommit, m_runs[i]); ++i) {
            }
            if (status != 0)
                Undo(before);
        }
        for (size_t i = 0; i < prepared && Walk(eSetCleanup, m_runs[i]); ++i) {
        }
    }

    Log log;
    int status = 0;
    int errorIndex = 0;
    Content after;
    bool undoFailed = false; // then the content is the table's own affair
    std::set<std::string> pending;

private:
    struct SState {
        ESnmpSetOpCode op;
        int undo, becomes, requested;
    };
    // Positions, in the order in which they are worked on.
    using Run = std::vector<int>;

    // A creating binding goes before those of its row that stand right before it.
    void FormRuns()
    {
        for (int k = 0; k < int(m_list.size()); ++k) {
            if (k == 0 || m_list[k].table != m_list[k - 1].table)
                m_runs.emplace_back();
            Run& run = m_runs.back();
            const int first = k - int(run.size());
            run.push_back(k);
            if (!Creates(m_list[k]))
                continue;
            for (int before = k - 1; before >= first; --before) {
                if (m_list[before].row != m_list[k].row || m_list[before].IsStatus())
                    break;
                const auto at = std::find(run.begin(), run.end(), k);
                std::iter_swap(at, at - 1);
            }
        }
    }
    static bool Creates(const SBinding& binding)
    {
        if (!binding.IsStatus())
            return false;
        return IsEntryTable(binding.table) ? binding.Int() == 2
                                           : binding.Int() == 4 || binding.Int() == 5;
    }

    bool Walk(ESnmpSetOpCode op, const Run& run)
    {
        bool done = true;
        for (const int k : run) {
            if ((op == eSetUndo && !m_committed[k]) || (op == eSetCleanup && !m_tested[k]))
                continue;
            if (const int failed = Visit(op, k)) {
                status = failed;
                errorIndex = k + 1;
                done = false;
                break;
            }
        }
        for (const int k : run) {
            if (op == eSetCleanup && m_list[k].IsStatus())
                m_states.erase(m_list[k].RowName());
        }
        return done;
    }
    void Undo(const Content& before)
    {
        const int commitFailed = status;
        const int index = errorIndex;
        for (const Run& run : m_runs) {
            if (*std::min_element(run.begin(), run.end()) >= index)
                break;
            if (!Walk(eSetUndo, run)) {
                undoFailed = true;
                errorIndex = 0;
                return;
            }
        }
        status = commitFailed;
        errorIndex = index;
        after = before;
    }

    int Visit(ESnmpSetOpCode op, int k)
    {
        const SBinding& binding = m_list[k];
        if (binding.IsStatus()) {
            if (const int refused = VisitStatus(op, binding))
                return refused;
        }
        log.push_back(binding.Call(op) + Outcome(op, binding));
        if (op == eSetTest)
            m_tested[k] = true;
        if (op == eSetCommit)
            m_committed[k] = true;
        if (m_fails.count({op, k}))
            return m_throwing ? int(eSnmpGenErr) : FailWith(op);
        if (op == eSetCommit)
            Apply(binding);
        return op == eSetTest && !binding.IsStatus() && !HasRow(binding)
                   ? int(eSnmpInconsistentName)
                   : 0;
    }
    int VisitStatus(ESnmpSetOpCode op, const SBinding& binding)
    {
        const std::string row = binding.RowName();
        if (op == eSetCleanup)
            return 0;
        if (op == eSetTest && !m_states.count(row)) {
            log.push_back(binding.table + (" get " + binding.Place()));
            const int now = after.count(row) ? after[row].status : 0;
            m_states[row] = {op, now, now, 0};
        }
        if (!m_states.count(row))
            return op == eSetCommit ? eSnmpCommitFailed : eSnmpUndoFailed;
        SState& state = m_states[row];
        if (state.op != op)
            state = {op, state.undo, state.undo, 0};
        const int refused = Judge(binding, state);
        const int remains = op == eSetUndo ? state.undo : state.becomes;
        if (op != eSetTest && IsInactive(binding.table, remains))
            pending.insert(row);
        else if (op != eSetTest)
            pending.erase(row);
        return refused;
    }
    static int Judge(const SBinding& binding, SState& state)
    {
        const int wanted = state.requested = binding.Int();
        const bool exists = state.becomes != 0;
        if (IsEntryTable(binding.table)) {
            if (exists == (wanted == 2))
                return exists ? eSnmpBadValue : eSnmpWrongValue;
            state.becomes = wanted == 2 ? 3 : wanted == 4 ? 0 : wanted;
            return 0;
        }
        if (wanted == 3)
            return eSnmpWrongValue;
        const bool creates = wanted == 4 || wanted == 5;
        if (wanted != 6 && exists == creates)
            return eSnmpInconsistentValue;
        state.becomes = wanted == 6 ? 0 : creates ? wanted - 3 : wanted;
        return 0;
    }
    // What the table tells the handler of the status column.
    std::string Outcome(ESnmpSetOpCode op, const SBinding& binding)
    {
        if (!binding.IsStatus() || op == eSetTest || op == eSetCleanup)
            return "";
        const SState& state = m_states[binding.RowName()];
        return op == eSetCommit ? " to " + std::to_string(state.becomes)
                                : " back to " + std::to_string(state.undo);
    }
    void Apply(const SBinding& binding)
    {
        const std::string row = binding.RowName();
        if (binding.IsStatus() && m_states[row].becomes == 0)
            after.erase(row);
        else if (binding.IsStatus())
            after[row].status = m_states[row].becomes;
        else if (after.count(row) && binding.column == eProbeName)
            after[row].name = binding.value;
        else if (after.count(row))
            after[row].level = binding.Int();
    }
    bool HasRow(const SBinding& binding)
    {
        const auto state = m_states.find(binding.RowName());
        const bool creating = state != m_states.end() &&
                              (IsEntryTable(binding.table)
                                   ? state->second.requested == 2
                                   : state->second.requested == 4 || state->second.requested == 5);
        return creating || after.count(binding.RowName());
    }

    const std::vector<SBinding>& m_list;
    const Fails& m_fails;
    const bool m_throwing;
    std::vector<Run> m_runs;
    std::map<std::string, SState> m_states;
    std::vector<bool> m_tested;
    std::vector<bool> m_committed;
};

} // namespace Test
} // namespace VLK
