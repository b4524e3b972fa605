// What the tests of row-status tables share: SETs driven phase by phase, and a
// timer that is ticked by hand.
#pragma once

#include "tests/support/RowStatusProbe.h"

#include <gtest/gtest.h>

#include <climits>
#include <memory>

namespace VLK {
namespace Test {

inline BObjectSyntax Number(int value)
{
    BObjectSyntax syntax;
    syntax.SetInt(value);
    return syntax;
}

inline BObjectSyntax Text(const char* value)
{
    BObjectSyntax syntax;
    syntax.SetOctets(BString(value));
    return syntax;
}

// Every value that tells apart where the state machines look at: all statuses,
// what lies around them, and the extremes.
constexpr int kStatusValues[] = {INT_MIN, -2, -1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, INT_MAX};

constexpr ESnmpSetOpCode kPhases[] = {eSetTest, eSetCommit, eSetUndo, eSetCleanup};

// Keeps the timer's own thread out for as long as it lives.
class HandTimer {
public:
    HandTimer() : m_held(std::make_unique<TMutexLock>(BTimer::GetInstance()->Mutex())) {}
    void Tick(int ticks = 1)
    {
        while (ticks-- > 0)
            BTimer::GetInstance()->Timeout(1000);
    }

private:
    std::unique_ptr<TMutexLock> m_held;
};

// The bindings of one SET, in which those of the table stand side by side, and
// their slots.
class RowSet {
public:
    explicit RowSet(BMibTableImplEx& table) : m_table(table) {}

    RowSet& Status(const char* row, int value) { return Add(eProbeStatus, row, Number(value)); }
    RowSet& Level(const char* row, int value) { return Add(eProbeLevel, row, Number(value)); }
    RowSet& Name(const char* row, const char* text) { return Add(eProbeName, row, Text(text)); }
    RowSet& Add(const char* name, const BObjectSyntax& value)
    {
        list.Append(MakeOid(name), value);
        ++m_count;
        return *this;
    }
    // A binding of somebody else, before the table's own or after them.
    RowSet& Foreign(const char* name, const BObjectSyntax& value)
    {
        list.Append(MakeOid(name), value);
        if (m_count == 0)
            ++m_first;
        return *this;
    }
    RowSet& WithoutSlots()
    {
        m_hasSlots = false;
        return *this;
    }

    int Phase(ESnmpSetOpCode op)
    {
        index = m_first;
        slots.resize(list.Count());
        void** const first = m_hasSlots && m_count > 0 ? &slots[m_first].scratch : nullptr;
        return m_table.Set(kId, list, op, first, index, m_count);
    }
    // As a request handler does it: what the SET is answered with.
    int Run()
    {
        int status = Phase(eSetTest);
        failedAt = index;
        if (status == 0) {
            status = Phase(eSetCommit);
            failedAt = index;
            if (status != 0) {
                EXPECT_EQ(0, Phase(eSetUndo));
            }
        }
        EXPECT_EQ(0, Phase(eSetCleanup));
        return status;
    }
    // Which of the table's bindings are marked, "tc" for each or "-".
    std::string Marks() const
    {
        std::string marks;
        for (int k = m_first; k < m_first + m_count; ++k) {
            const SSetSlot& slot = slots[k];
            marks += slot.tested ? "t" : "-";
            marks += slot.committed ? "c" : "-";
        }
        return marks;
    }
    // Their ranks, counted from the start of the list.
    std::vector<int> Ranks() const
    {
        std::vector<int> ranks;
        for (int k = m_first; k < m_first + m_count; ++k)
            ranks.push_back(slots[k].position);
        return ranks;
    }

    static constexpr unsigned kId = 5;
    BVarBindList list;
    std::vector<SSetSlot> slots;
    int index = 0;    // after a phase
    int failedAt = 0; // of Run()

private:
    RowSet& Add(unsigned column, const char* row, const BObjectSyntax& value)
    {
        BObjectIdentifier name(m_table.Oid());
        name.Append(column);
        name.Append(MakeOid(row), true);
        list.Append(name, value);
        ++m_count;
        return *this;
    }

    BMibTableImplEx& m_table;
    int m_first = 0;
    int m_count = 0;
    bool m_hasSlots = true;
};

} // namespace Test
} // namespace VLK
