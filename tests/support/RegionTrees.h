// Small agents of nested and neighbouring regions, for comparing GETNEXT with
// the naive list.
#pragma once

#include "tests/support/FakeAccess.h"
#include "tests/support/NaiveAgent.h"
#include <vkmibh/testing/requests.h>

#include <algorithm>
#include <memory>

namespace VLK {
namespace Test {

constexpr unsigned kTreeArcs[] = {0, 1, 2, 4294967295u};

inline const Arcs& TreeBase()
{
    static const Arcs base = {1, 3, 99};
    return base;
}

// Every name of at most `depth` arcs under the base, the base included.
inline std::vector<Arcs> NamesUnderBase(unsigned depth)
{
    std::vector<Arcs> names = {TreeBase()};
    for (size_t i = 0; i < names.size(); ++i) {
        if (names[i].size() == TreeBase().size() + depth)
            continue;
        for (unsigned arc : kTreeArcs) {
            Arcs longer = names[i];
            longer.push_back(arc);
            names.push_back(longer);
        }
    }
    return names;
}

inline bool IsPrefix(const Arcs& prefix, const Arcs& name)
{
    return prefix.size() <= name.size() && std::equal(prefix.begin(), prefix.end(), name.begin());
}

// How many of the regions lie inside one another, at most.
inline unsigned NestingOf(const std::vector<Arcs>& regions)
{
    unsigned deepest = 0;
    for (const Arcs& inner : regions) {
        unsigned around = 0;
        for (const Arcs& outer : regions)
            around += IsPrefix(outer, inner) ? 1 : 0;
        deepest = std::max(deepest, around);
    }
    return deepest;
}

// Regions in a handler of their own. An instance belongs to the deepest region
// that holds it, as in an agent whose modules know their limits.
class RegionAgent {
public:
    explicit RegionAgent(const std::vector<Arcs>& regions) : m_handler(&m_tree, &access)
    {
        for (const Arcs& region : regions) {
            m_modules.push_back(std::make_unique<ListHandler>(MakeOid(region)));
            m_modules.back()->keepsLog = false;
            m_handler.RegisterSubtreeHandler(m_modules.back().get());
        }
    }
    ~RegionAgent()
    {
        for (auto& module : m_modules)
            m_handler.UnregisterSubtreeHandler(module.get());
    }

    ListHandler* OwnerOf(const Arcs& name)
    {
        ListHandler* owner = nullptr;
        for (auto& module : m_modules) {
            const Arcs region = ArcsOf(module->Oid());
            if (IsPrefix(region, name) && (!owner || owner->Oid().Length() < region.size()))
                owner = module.get();
        }
        return owner;
    }
    const std::vector<std::unique_ptr<ListHandler>>& Modules() const { return m_modules; }

    // Takes over the modules' instances as the naive list.
    void Settle()
    {
        naive = NaiveAgent();
        for (auto& module : m_modules)
            naive.Take(*module);
        for (const std::string& name : access.refused)
            naive.Refuse(name);
    }

    int GetNext(BVarBindList& list, int& errorIndex, bool isV1)
    {
        return m_handler.QueryGetNext(1, m_security, m_context, list, errorIndex, isV1);
    }

    // Asks for the successor in both ways and says what differs; empty when nothing does.
    std::string Compare(const Arcs& name, bool isV1) { return CompareNext({name}, isV1); }

    // So for the successors of all names in one GETNEXT. Bindings are resolved one by
    // one; in SNMPv1 the first without a successor ends the request, and those after
    // it are as they came.
    std::string CompareNext(const std::vector<Arcs>& names, bool isV1)
    {
        BVarBindList list;
        for (const Arcs& name : names)
            list.Append(MakeOid(name));
        int errorIndex = 0;
        const int status = GetNext(list, errorIndex, isV1);
        int wantedStatus = eSnmpNoError, wantedIndex = 0;
        std::string difference;
        for (size_t i = 0; i < names.size() && difference.empty(); ++i) {
            const Arcs next = wantedStatus ? Arcs() : naive.Next(names[i], isV1);
            if (isV1 && next.empty() && wantedStatus == eSnmpNoError) {
                wantedStatus = eSnmpNoSuchName;
                wantedIndex = static_cast<int>(i) + 1;
            }
            if (!IsAnswer(list[static_cast<int>(i)], names[i], next, isV1))
                difference = " want " + TextOf(next) + " got " +
                             TextOf(list[static_cast<int>(i)].Name()) + " after " +
                             TextOf(names[i]);
        }
        if (difference.empty() && status == wantedStatus && errorIndex == wantedIndex)
            return difference;
        return "GETNEXT" + std::string(isV1 ? " (v1):" : ":") + difference + " status " +
               std::to_string(status) + " at " + std::to_string(errorIndex) + Describe();
    }

    // Asks for the values of all names in one GET and says what differs.
    std::string CompareGet(const std::vector<Arcs>& names, bool isV1)
    {
        BVarBindList list;
        for (const Arcs& name : names)
            list.Append(MakeOid(name));
        int errorIndex = 0;
        const int status = m_handler.QueryGet(1, m_security, m_context, list, errorIndex, isV1);
        const auto [wantedStatus, wantedIndex] = GetFailure(names, isV1);
        std::string difference;
        if (status != wantedStatus || errorIndex != wantedIndex)
            difference = "status " + std::to_string(status) + " at " + std::to_string(errorIndex) +
                         ", want " + std::to_string(wantedStatus) + " at " +
                         std::to_string(wantedIndex);
        for (size_t i = 0; status == eSnmpNoError && i < names.size(); ++i) {
            const BObjectSyntax& got = list[static_cast<int>(i)].Value();
            const BObjectSyntax wanted = ValueAt(names[i]);
            if (got.Syntax() != wanted.Syntax() || got.Int() != wanted.Int())
                difference += " value of " + TextOf(names[i]);
        }
        return difference.empty()
                   ? difference
                   : "GET" + std::string(isV1 ? " (v1): " : ": ") + difference + Describe();
    }

    // Walks from the base to the end and says what differs.
    std::string CompareWalk(bool isV1)
    {
        Arcs name = TreeBase();
        for (Arcs next = name; !next.empty();) {
            std::string difference = Compare(name, isV1);
            if (!difference.empty())
                return difference;
            next = naive.Next(name, isV1);
            if (!next.empty() && !(name < next))
                return "a walk that does not go on after " + TextOf(name);
            name = next.empty() ? name : next;
        }
        return std::string();
    }

    std::string Describe() const
    {
        std::string text = "\nregions:";
        for (const auto& module : m_modules) {
            text += "\n  " + TextOf(module->Oid()) + " {";
            for (const auto& instance : module->instances)
                text += " " + TextOf(instance.first);
            text += " }";
        }
        for (const std::string& name : access.refused)
            text += "\nrefused " + name;
        return text;
    }

    FakeAccess access;
    NaiveAgent naive;

private:
    // What has no successor keeps its name.
    bool IsAnswer(const BVarBind& got, const Arcs& asked, const Arcs& next, bool isV1) const
    {
        if (next.empty())
            return ArcsOf(got.Name()) == asked && (isV1 || got.Value().Syntax() == eEndOfMibView);
        const BObjectSyntax& value = naive.ValueOf(next);
        return ArcsOf(got.Name()) == next && got.Value().Syntax() == value.Syntax() &&
               got.Value().Int() == value.Int();
    }
    BObjectSyntax ValueAt(const Arcs& name)
    {
        BObjectSyntax value;
        const ListHandler* owner = OwnerOf(name);
        if (!owner)
            value.SetV2Exception(eNoSuchObject);
        else if (!owner->instances.count(name))
            value.SetV2Exception(eNoSuchInstance);
        else
            value = owner->instances.at(name);
        return value;
    }
    // The status and the one-based index of the first binding that fails a GET.
    std::pair<int, int> GetFailure(const std::vector<Arcs>& names, bool isV1)
    {
        for (size_t i = 0; i < names.size(); ++i) {
            if (access.refused.count(TextOf(names[i])))
                return {eSnmpAuthorizationError, static_cast<int>(i) + 1};
        }
        for (size_t i = 0; isV1 && i < names.size(); ++i) {
            const BObjectSyntax value = ValueAt(names[i]);
            if (value.Syntax() == eAsnCounter64 || (value.Syntax() & 0x80) != 0)
                return {eSnmpNoSuchName, static_cast<int>(i) + 1};
        }
        return {eSnmpNoError, 0};
    }

    BMibTree m_tree;
    BMibHandler m_handler;
    std::vector<std::unique_ptr<ListHandler>> m_modules;
    BSecurityParams m_security;
    BString m_context;
};

// Which of its instances a region keeps.
enum EPattern { ePatternNone, ePatternFirst, ePatternLast, ePatternAll };

inline void FillRegion(RegionAgent& agent, size_t module, EPattern pattern,
                       const std::vector<Arcs>& names)
{
    ListHandler& handler = *agent.Modules()[module];
    handler.instances.clear();
    if (pattern == ePatternNone)
        return;
    for (const Arcs& name : names)
        if (agent.OwnerOf(name) == &handler)
            handler.Add(name, static_cast<int>(handler.instances.size()));
    if (pattern != ePatternAll && handler.instances.size() > 1) {
        const auto kept =
            pattern == ePatternFirst ? *handler.instances.begin() : *handler.instances.rbegin();
        handler.instances.clear();
        handler.instances.insert(kept);
    }
}

} // namespace Test
} // namespace VLK
