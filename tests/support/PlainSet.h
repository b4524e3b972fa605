// What a SET must answer and leave in an agent of plain maps.
#pragma once

#include "tests/support/PlainAgent.h"

namespace VLK {
namespace Test {

// The statuses of set handlers that fail, by phase and name.
using PlainFailing = std::map<std::pair<ESnmpSetOpCode, Arcs>, int>;

// A set handler that throws; the request then fails with genErr.
constexpr int kPlainThrow = -1;

// The bindings are worked on in runs of one region, as they stand. In a run on a
// row-status table the binding that creates a row goes before the columns of that
// row which stand right before it.
class PlainSet {
public:
    PlainSet(PlainAgent& agent, const PlainList& list, const PlainFailing& failing)
        : m_agent(agent), m_list(list), m_failing(failing)
    {
        if (!IsAllowed() || !TestAll())
            return;
        const PlainValues before = agent.values;
        for (const int k : m_order) {
            if (const int failed = Failing(eSetCommit, k)) {
                agent.values = before;
                Fail(failed, k);
                return;
            }
            Commit(k);
        }
    }

    int status = eSnmpNoError;
    int index = 0;

private:
    struct SRow {
        int current; // what the bindings so far make of its status
        bool isCreated;
    };

    bool Fail(int with, int k)
    {
        status = with;
        index = k + 1;
        return false;
    }
    const Arcs& NameOf(int k) const { return m_list[static_cast<size_t>(k)].name; }
    const SPlainValue& ValueOf(int k) const { return m_list[static_cast<size_t>(k)].value; }
    int Count() const { return static_cast<int>(m_list.size()); }

    bool IsAllowed()
    {
        for (int k = 0; k < Count(); ++k) {
            if (m_agent.unwritable.count(NameOf(k)))
                return Fail(eSnmpAuthorizationError, k);
        }
        return true;
    }

    bool TestAll()
    {
        for (int first = 0; first < Count();) {
            m_owner = m_agent.OwnerOf(NameOf(first));
            if (!m_owner)
                return Fail(eSnmpNoSuchName, first);
            int end = first + 1;
            while (end < Count() && m_agent.OwnerOf(NameOf(end)) == m_owner)
                ++end;
            if (!TestRun(first, end))
                return false;
            first = end;
        }
        return true;
    }
    bool TestRun(int first, int end)
    {
        std::vector<int> run;
        for (int k = first; k < end; ++k)
            run.push_back(k);
        for (int k = first; k < end && m_owner->second == ePlainRows; ++k) {
            if (!Creates(k))
                continue;
            if (IndexOf(k).empty())
                return Fail(eSnmpInconsistentName, k);
            int to = k;
            while (to > first && !IsStatus(to - 1) && IndexOf(to - 1) == IndexOf(k))
                --to;
            std::rotate(run.begin() + (to - first), run.begin() + (k - first),
                        run.begin() + (k - first) + 1);
        }
        for (const int k : run) {
            if (const int failed = Test(k))
                return Fail(failed, k);
        }
        m_order.insert(m_order.end(), run.begin(), run.end());
        return true;
    }
    Arcs IndexOf(int k) const
    {
        const size_t from = m_owner->first.size() + 1;
        const Arcs& name = NameOf(k);
        return name.size() > from ? Arcs(name.begin() + static_cast<long>(from), name.end())
                                  : Arcs();
    }
    bool IsStatus(int k) const
    {
        const size_t at = m_owner->first.size();
        return m_owner->second == ePlainRows && NameOf(k).size() > at &&
               NameOf(k)[at] == kPlainStatus && ValueOf(k).syntax == eAsnInteger;
    }
    bool Creates(int k) const
    {
        return IsStatus(k) && (ValueOf(k).text == "4" || ValueOf(k).text == "5");
    }

    int Test(int k)
    {
        const size_t length = m_owner->first.size();
        const Arcs& name = NameOf(k);
        if (m_owner->second == ePlainList)
            return eSnmpNotWritable;
        if (m_owner->second == ePlainScalars ? name.size() != length + 2 || name[length + 1] != 0
                                             : name.size() <= length + 1)
            return eSnmpNoSuchName;
        const SPlainColumn* const column = FindPlainColumn(m_owner->second, name[length]);
        if (!column || !column->isWritable)
            return eSnmpNotWritable;
        if (const int refused = IsStatus(k) ? TestStatus(k) : TestValue(*column, ValueOf(k)))
            return refused;
        if (const int failed = Failing(eSetTest, k))
            return failed;
        return IsStatus(k) ? int(eSnmpNoError) : TestRow(k);
    }
    static int TestValue(const SPlainColumn& column, const SPlainValue& value)
    {
        if (value.syntax != column.syntax)
            return eSnmpWrongType;
        if (column.limit < 0)
            return eSnmpNoError;
        if (value.syntax == eAsnOctetString)
            return int(value.text.size()) > column.limit ? eSnmpWrongLength : eSnmpNoError;
        const int number = std::stoi(value.text);
        return number < 0 || number > column.limit ? eSnmpWrongValue : eSnmpNoError;
    }
    // The rows of the plain table neither come nor go.
    int TestRow(int k)
    {
        if (m_owner->second == ePlainTable &&
            !m_agent.tableRows.count({m_owner->first, IndexOf(k)}))
            return eSnmpNoCreation;
        if (m_owner->second != ePlainRows)
            return eSnmpNoError;
        const Arcs row = StatusNameOf(k);
        const auto noted = m_rows.find(row);
        const bool isThere = m_agent.values.count(row) != 0;
        return isThere || (noted != m_rows.end() && noted->second.isCreated)
                   ? eSnmpNoError
                   : eSnmpInconsistentName;
    }
    Arcs StatusNameOf(int k) const
    {
        return Joined(Joined(m_owner->first, {kPlainStatus}), IndexOf(k));
    }
    int CurrentStatus(const Arcs& row) const
    {
        const auto found = m_agent.values.find(row);
        return found == m_agent.values.end() ? 0 : std::stoi(found->second.text);
    }

    // RowStatus of RFC 2579, as docs/behaviour.md has it.
    int TestStatus(int k)
    {
        const Arcs row = StatusNameOf(k);
        const int wanted = std::stoi(ValueOf(k).text);
        SRow& state = m_rows.try_emplace(row, SRow{CurrentStatus(row), false}).first->second;
        state.isCreated = Creates(k);
        if (wanted == 3)
            return eSnmpWrongValue;
        if (state.current == 0 && wanted != 6 && !state.isCreated)
            return eSnmpInconsistentValue;
        if (state.current != 0 && state.isCreated)
            return eSnmpInconsistentValue;
        if (wanted < 1 || wanted > 6)
            return eSnmpGenErr;
        state.current = Becomes(wanted);
        return eSnmpNoError;
    }
    static int Becomes(int wanted)
    {
        switch (wanted) {
        case 4:
            return 1;
        case 5:
            return 2;
        case 6:
            return 0;
        default:
            return wanted;
        }
    }

    void Commit(int k)
    {
        m_owner = m_agent.OwnerOf(NameOf(k));
        if (m_owner->second != ePlainRows) {
            m_agent.values[NameOf(k)] = ValueOf(k);
            return;
        }
        const Arcs row = StatusNameOf(k);
        if (!IsStatus(k)) {
            if (m_agent.values.count(row))
                m_agent.values[NameOf(k)] = ValueOf(k);
            return;
        }
        const Arcs name = Joined(Joined(m_owner->first, {1}), IndexOf(k));
        const Arcs level = Joined(Joined(m_owner->first, {2}), IndexOf(k));
        const int becomes = Becomes(std::stoi(ValueOf(k).text));
        if (becomes == 0) {
            for (const Arcs& column : {name, level, row})
                m_agent.values.erase(column);
            return;
        }
        m_agent.values.try_emplace(name, SPlainValue{eAsnOctetString, ""});
        m_agent.values.try_emplace(level, SPlainValue{eAsnInteger, "0"});
        m_agent.values[row] = {eAsnInteger, std::to_string(becomes)};
    }

    int Failing(ESnmpSetOpCode op, int k) const
    {
        const auto found = m_failing.find({op, NameOf(k)});
        if (found == m_failing.end())
            return eSnmpNoError;
        return found->second == kPlainThrow ? int(eSnmpGenErr) : found->second;
    }

    PlainAgent& m_agent;
    const PlainList& m_list;
    const PlainFailing& m_failing;
    const std::pair<const Arcs, EPlainKind>* m_owner = nullptr;
    std::map<Arcs, SRow> m_rows; // by the name of its status
    std::vector<int> m_order;
};

} // namespace Test
} // namespace VLK
