// GETs, GETNEXTs and SETs on one agent of lists, scalars, tables and row-status
// tables, compared with the plain one.
//
// Left out, since the answer is the modules' own affair or another mode has it:
// failing reads, undos and cleanups, EntryStatus, columns that are not readable,
// refused instances and Counter64 in regions around others (docs/behaviour.md).
#pragma once

#include "fuzz/Fuzz.h"
#include "tests/support/MixedAgent.h"
#include "tests/support/RegionTrees.h"

namespace VLK::Fuzz {

using Test::Arcs;

class MixedRequests {
public:
    explicit MixedRequests(CBytes& bytes) : m_bytes(bytes)
    {
        TakeRegions();
        for (int left = Number(0, 20); left > 0; --left)
            TakeInstance();
        for (int left = Number(0, 4); left > 0; --left)
            TakeRefusal();
    }

    void Check()
    {
        Test::MixedAgent agent(m_plain);
        while (m_bytes.remaining_bytes() > 0) {
            const bool isV1 = m_bytes.ConsumeBool();
            switch (Number(0, 3)) {
            case 0:
                Agree(agent.CompareGet(TakeNames(), isV1));
                break;
            case 1: {
                const bool isBulk = m_bytes.ConsumeBool();
                Agree(agent.CompareGetNext(TakeNames(), isV1, isBulk));
                break;
            }
            default:
                CheckSet(agent, isV1);
                Agree(agent.CompareWalk(isV1));
                break;
            }
        }
        Agree(agent.CompareWalk(false));
        Agree(agent.CompareWalk(true));
        Agree(agent.CompareTimed());
    }

private:
    using PlainNames = std::vector<Arcs>;

    static constexpr unsigned kArcs[] = {0, 1, 2, 3, Test::kPlainCounter};
    static constexpr Test::EPlainKind kKinds[] = {Test::ePlainList, Test::ePlainScalars,
                                                  Test::ePlainTable, Test::ePlainRows,
                                                  Test::ePlainRows};
    // Statuses that rows take, and what no column takes.
    static constexpr int kNumbers[] = {1, 4, 5, 6, 2, 1, 4, 6, 0, 9, 3, 7, -1, 10};

    static void Agree(const std::string& difference)
    {
        if (!difference.empty())
            Differ(difference);
    }
    int Number(int from, int to) { return m_bytes.ConsumeIntegralInRange<int>(from, to); }
    size_t Below(size_t count) { return m_bytes.ConsumeIntegralInRange<size_t>(0, count - 1); }
    Arcs TakeMore(Arcs name, int least, int most)
    {
        for (int left = Number(least, most); left > 0; --left)
            name.push_back(m_bytes.PickValueInArray(kArcs));
        return name;
    }

    bool HasRegionInside(const Arcs& region) const
    {
        return std::any_of(m_plain.regions.begin(), m_plain.regions.end(), [&](const auto& other) {
            return other.first != region && Test::IsPrefix(region, other.first);
        });
    }
    // Two deep at most: beyond that the search is not the list's.
    void TakeRegions()
    {
        std::vector<Arcs> regions;
        for (int left = Number(1, 7); left > 0; --left) {
            const Arcs region = TakeMore(Test::TreeBase(), 0, 3);
            const auto kind = m_bytes.PickValueInArray(kKinds);
            if (!m_plain.regions.emplace(region, kind).second)
                continue;
            regions.push_back(region);
            if (Test::NestingOf(regions) > 2) {
                regions.pop_back();
                m_plain.regions.erase(region);
            }
        }
        for (auto& [region, kind] : m_plain.regions) {
            if (HasRegionInside(region))
                kind = Test::ePlainList;
        }
    }
    const std::pair<const Arcs, Test::EPlainKind>& TakeRegion()
    {
        return *std::next(m_plain.regions.begin(), long(Below(m_plain.regions.size())));
    }

    void TakeInstance()
    {
        const auto& [region, kind] = TakeRegion();
        if (kind == Test::ePlainList)
            TakeListed(region);
        else if (kind == Test::ePlainScalars)
            TakeCell(kind, region, {0});
        else if (kind == Test::ePlainTable)
            TakeCell(kind, region, TakeMore({}, 1, 2));
        else
            TakeRow(region);
    }
    void TakeListed(const Arcs& region)
    {
        const Arcs name = TakeMore(region, 0, 3);
        const bool isCounter = Number(0, 3) == 3 && !HasRegionInside(region);
        if (m_plain.OwnerOf(name)->first == region)
            m_plain.values[name] = {isCounter ? eAsnCounter64 : eAsnInteger, TakeNumber()};
    }
    void TakeCell(Test::EPlainKind kind, const Arcs& region, const Arcs& index)
    {
        const unsigned columns[] = {1, 2, Test::kPlainCounter};
        const unsigned column = m_bytes.PickValueInArray(columns);
        if (kind == Test::ePlainTable)
            m_plain.tableRows.emplace(region, index);
        m_plain.values[Test::Joined(Test::Joined(region, {column}), index)] = {
            Test::FindPlainColumn(kind, column)->syntax, TakeNumber()};
    }
    void TakeRow(const Arcs& region)
    {
        const Arcs index = TakeMore({}, 1, 2);
        const auto name = [&](unsigned column) {
            return Test::Joined(Test::Joined(region, {column}), index);
        };
        m_plain.values[name(1)] = {eAsnOctetString, TakeNumber()};
        m_plain.values[name(2)] = {eAsnInteger, TakeNumber()};
        m_plain.values[name(3)] = {eAsnInteger, std::to_string(Number(1, 3))};
    }
    std::string TakeNumber() { return std::to_string(Number(0, 9)); }

    void TakeRefusal()
    {
        const Arcs name = TakeName();
        const auto* const owner = m_plain.OwnerOf(name);
        const int kinds = Number(1, 3);
        if ((kinds & 1) != 0 && !(owner && HasRegionInside(owner->first)))
            m_plain.unreadable.insert(name);
        if ((kinds & 2) != 0)
            m_plain.unwritable.insert(name);
    }

    // One that is there, one near that, one in a region, any.
    Arcs TakeName()
    {
        const int way = Number(0, 7);
        if (way == 7)
            return TakeMore(Test::TreeBase(), 0, 6);
        if (way >= 5 || m_plain.values.empty())
            return TakePlace();
        Arcs name = std::next(m_plain.values.begin(), long(Below(m_plain.values.size())))->first;
        if (way == 4 && m_bytes.ConsumeBool())
            name.pop_back();
        else if (way == 4)
            name.push_back(m_bytes.PickValueInArray(kArcs));
        return name;
    }
    Arcs TakePlace()
    {
        const auto& [region, kind] = TakeRegion();
        const Arcs object = Test::Joined(region, {m_bytes.PickValueInArray(kArcs)});
        return kind == Test::ePlainScalars ? Test::Joined(object, {0}) : TakeMore(object, 0, 2);
    }
    std::vector<Arcs> TakeNames()
    {
        std::vector<Arcs> names(Below(6) + 1);
        for (Arcs& name : names)
            name = TakeName();
        return names;
    }

    // Null: not a column's.
    const Test::SPlainColumn* ColumnOf(const Arcs& name) const
    {
        const auto* const owner = m_plain.OwnerOf(name);
        return owner && name.size() > owner->first.size()
                   ? Test::FindPlainColumn(owner->second, name[owner->first.size()])
                   : nullptr;
    }

    // Mostly one that suits the column.
    Test::SPlainValue TakeValue(const Arcs& name)
    {
        const auto* const column = ColumnOf(name);
        const int kind = Number(0, 15);
        int syntax = column ? column->syntax : int(eAsnInteger);
        if (kind >= 13)
            syntax = kind == 13 ? eAsnInteger : kind == 14 ? eAsnOctetString : eAsnCounter64;
        if (syntax == eAsnOctetString)
            return {syntax, std::string("abcd", Below(5))};
        if (syntax == eAsnCounter64)
            return {syntax, TakeNumber()};
        return {syntax, std::to_string(m_bytes.PickValueInArray(kNumbers))};
    }
    // Mostly one that a region of the library may take.
    Arcs TakeTarget()
    {
        const auto& [region, kind] = TakeRegion();
        if (kind == Test::ePlainList || Number(0, 7) == 7)
            return TakeName();
        const unsigned last = kind == Test::ePlainRows ? 3 : 2;
        const Arcs object =
            Test::Joined(region, {m_bytes.ConsumeIntegralInRange<unsigned>(1, last)});
        return kind == Test::ePlainScalars ? Test::Joined(object, {0}) : TakeMore(object, 1, 2);
    }
    // What a SET may well set: to end in a commit all of its bindings must be such.
    PlainNames Settable() const
    {
        PlainNames names;
        for (const auto& [name, value] : m_plain.values) {
            const auto* const column = ColumnOf(name);
            if (column && column->isWritable && !m_plain.unwritable.count(name))
                names.push_back(name);
        }
        return names;
    }
    Test::SPlainBinding TakeSound(const PlainNames& settable)
    {
        const Arcs& name = settable[Below(settable.size())];
        const auto* const column = ColumnOf(name);
        const bool isStatus = column->arc == Test::kPlainStatus;
        if (column->syntax == eAsnOctetString)
            return {name, {eAsnOctetString, std::string("abcd", Below(4))}};
        return {name,
                {eAsnInteger,
                 isStatus ? std::to_string(m_bytes.PickValueInArray({1, 2, 6})) : TakeNumber()}};
    }
    Test::PlainList TakeList()
    {
        Test::PlainList list(Below(6) + 1);
        const PlainNames settable = m_bytes.ConsumeBool() ? Settable() : PlainNames();
        for (Test::SPlainBinding& binding : list) {
            if (!settable.empty() && Number(0, 7) != 7) {
                binding = TakeSound(settable);
                continue;
            }
            binding.name = TakeTarget();
            binding.value = TakeValue(binding.name);
        }
        return list;
    }
    Test::PlainFailing TakeFailing(const Test::PlainList& list)
    {
        Test::PlainFailing failing;
        for (int left = Number(0, 5) - 2; left > 0; --left) {
            const Arcs& name = list[Below(list.size())].name;
            const ESnmpSetOpCode op = m_bytes.ConsumeBool() ? eSetTest : eSetCommit;
            const int status = Number(0, eSnmpInconsistentName);
            failing[{op, name}] = status == 0 ? Test::kPlainThrow : status;
        }
        return failing;
    }
    void CheckSet(Test::MixedAgent& agent, bool isV1)
    {
        const Test::PlainList list = TakeList();
        const Test::PlainFailing failing = TakeFailing(list);
        const Test::PlainSet wanted(m_plain, list, failing);
        Agree(agent.CompareSet(list, failing, isV1, wanted));
    }

    CBytes& m_bytes;
    Test::PlainAgent m_plain;
};

} // namespace VLK::Fuzz
