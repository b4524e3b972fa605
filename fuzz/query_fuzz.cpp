// Whole requests against plain models of agents, in three modes: GET, GETNEXT and
// SET on nested regions of all kinds behind an access control (MixedRequests.h); GET
// and GETNEXT on trees of lists; and SETs on row-status tables in which handlers fail
// in every phase.
#include "fuzz/MixedRequests.h"
#include "tests/handler/RowStatusAgent.h"

namespace VLK::Fuzz {
namespace {

// What the first three bits of an input's last byte say; otherwise its last bit.
constexpr unsigned kMixed = 4;

Arcs TakeName(CBytes& bytes, size_t atMost, Arcs name = Test::TreeBase())
{
    for (size_t left = bytes.ConsumeIntegralInRange<size_t>(0, atMost); left > 0; --left)
        name.push_back(bytes.PickValueInArray(Test::kTreeArcs));
    return name;
}

// Two deep at most: beyond that the search is not the list's.
std::vector<Arcs> TakeRegions(CBytes& bytes)
{
    std::vector<Arcs> regions;
    for (int left = bytes.ConsumeIntegralInRange<int>(1, 7); left > 0; --left) {
        const Arcs region = TakeName(bytes, 3);
        regions.push_back(region);
        const bool isNew = std::count(regions.begin(), regions.end(), region) == 1;
        if (!isNew || Test::NestingOf(regions) > 2)
            regions.pop_back();
    }
    return regions;
}

// Only instances of innermost regions are refused or Counter64: what ends an outer
// one after such an instance hides those inside it.
bool IsInnermost(const std::vector<Arcs>& regions, const Arcs& region)
{
    return std::none_of(regions.begin(), regions.end(), [&](const Arcs& other) {
        return other != region && Test::IsPrefix(region, other);
    });
}

void Fill(CBytes& bytes, Test::RegionAgent& agent, const std::vector<Arcs>& regions)
{
    for (int left = bytes.ConsumeIntegralInRange<int>(0, 24); left > 0; --left) {
        const size_t region = bytes.ConsumeIntegralInRange<size_t>(0, regions.size() - 1);
        const Arcs name = TakeName(bytes, 3, regions[region]);
        Test::ListHandler& owner = *agent.OwnerOf(name);
        owner.Add(name, left);
        const int kind = bytes.ConsumeIntegralInRange<int>(0, 5);
        if (kind > 2 || !IsInnermost(regions, Test::ArcsOf(owner.Oid())))
            continue;
        if (kind == 2)
            owner.AddCounter64(Test::TextOf(name).c_str());
        else
            agent.access.refused.insert(Test::TextOf(name));
    }
    agent.Settle();
}

void CheckReads(CBytes& bytes)
{
    const std::vector<Arcs> regions = TakeRegions(bytes);
    Test::RegionAgent agent(regions);
    Fill(bytes, agent, regions);
    while (bytes.remaining_bytes() > 0) {
        const bool isV1 = bytes.ConsumeBool();
        std::vector<Arcs> names(bytes.ConsumeIntegralInRange<size_t>(1, 6));
        for (Arcs& name : names)
            name = TakeName(bytes, 6);
        std::string difference = agent.CompareGet(names, isV1);
        if (difference.empty())
            difference = agent.CompareNext(names, isV1);
        if (!difference.empty())
            Differ(difference);
    }
    Require(agent.CompareWalk(false).empty(), agent.CompareWalk(false).c_str());
    Require(agent.CompareWalk(true).empty(), agent.CompareWalk(true).c_str());
}

Test::SBinding TakeBinding(CBytes& bytes)
{
    std::string text;
    text += bytes.PickValueInArray({'A', 'B', 'E'});
    text += bytes.PickValueInArray({'s', 'n', 'l'});
    text += bytes.PickValueInArray({'1', '2', '3'});
    text += '=';
    if (text[1] == 's')
        text += std::to_string(bytes.ConsumeIntegralInRange<int>(1, text[0] == 'E' ? 4 : 6));
    else
        text += bytes.PickValueInArray({'7', '8'});
    return Test::SBinding(text);
}

// Calls are known by what they say: one that is made twice fails twice, which no
// position can tell.
Test::Fails TakeFails(CBytes& bytes, const std::vector<Test::SBinding>& list)
{
    static constexpr ESnmpSetOpCode kPhases[] = {eSetTest, eSetCommit, eSetUndo, eSetCleanup};
    Test::Fails fails;
    for (int left = bytes.ConsumeIntegralInRange<int>(0, 3); left > 0; --left) {
        const size_t position = bytes.ConsumeIntegralInRange<size_t>(0, list.size() - 1);
        const std::string call = list[position].Call(eSetTest);
        const auto isSame = [&](const Test::SBinding& other) {
            return other.Call(eSetTest) == call;
        };
        const ESnmpSetOpCode phase = bytes.PickValueInArray(kPhases);
        if (std::count_if(list.begin(), list.end(), isSame) == 1)
            fails.emplace(phase, static_cast<int>(position));
    }
    return fails;
}

std::string TextOf(const Test::Log& lines)
{
    std::string text;
    for (const std::string& line : lines)
        text += "\n  " + line;
    return text;
}

std::string TextOf(const Test::Content& rows)
{
    std::string text;
    for (const auto& [name, row] : rows)
        text += " " + name + "=" + std::to_string(row.status) + ":" + row.name + ":" +
                std::to_string(row.level);
    return text;
}

template <class Value>
void RequireSame(const char* what, const Value& wanted, const Value& got, const Test::Log& calls)
{
    if (!(wanted == got))
        Differ(std::string(what) + "\nwanted" + TextOf(wanted) + "\ngot" + TextOf(got) + "\ncalls" +
               TextOf(calls));
}

// SETs one after the other; after each the answer, the calls and the rows.
void CheckSets(CBytes& bytes)
{
    Test::RowStatusAgent agent({});
    Test::Content before;
    Test::Log pending;
    while (bytes.remaining_bytes() > 0) {
        std::vector<Test::SBinding> list;
        for (int left = bytes.ConsumeIntegralInRange<int>(1, 6); left > 0; --left)
            list.push_back(TakeBinding(bytes));
        const Test::Fails fails = TakeFails(bytes, list);
        const bool isThrowing = bytes.ConsumeBool();
        const Test::Expectation expected(list, before, fails, isThrowing);
        const int status = agent.Set(list, fails, isThrowing);
        RequireSame("the calls of a SET", expected.log, agent.CallLog(), {});
        Require(status == expected.status, "the status of a SET");
        Require(agent.ErrorIndex() == expected.errorIndex, "its error index");
        Require(agent.States() == 0, "what is left of it");
        if (expected.undoFailed) // the rows are the table's own affair
            return;
        RequireSame("the rows after a SET", expected.after, agent.Rows(), expected.log);
        before = expected.after;
        pending.assign(expected.pending.begin(), expected.pending.end());
    }
    Require(agent.Pending() == pending, "the rows with a time-out");
}

} // namespace
} // namespace VLK::Fuzz

int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size)
{
    VLK::Fuzz::CBytes bytes(data, size);
    const unsigned mode = bytes.ConsumeIntegral<unsigned char>();
    if (mode >> 5 == VLK::Fuzz::kMixed)
        VLK::Fuzz::MixedRequests(bytes).Check();
    else if ((mode & 1) != 0)
        VLK::Fuzz::CheckReads(bytes);
    else
        VLK::Fuzz::CheckSets(bytes);
    return 0;
}
