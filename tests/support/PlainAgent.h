// A whole agent as plain maps, and what it must answer to GET and GETNEXT.
#pragma once

#include "tests/support/Oids.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>
#include <vkmibh/subtree.h>

namespace VLK {
namespace Test {

// A value: its tag, and in decimal or as text what it holds.
struct SPlainValue {
    int syntax;
    std::string text;
    bool operator==(const SPlainValue& other) const
    {
        return syntax == other.syntax && text == other.text;
    }
};
using PlainValues = std::map<Arcs, SPlainValue>;

struct SPlainBinding {
    Arcs name;
    SPlainValue value;
};
using PlainList = std::vector<SPlainBinding>;

// Failing: the bindings have no meaning from the one at the index on.
struct SPlainAnswer {
    int status = eSnmpNoError;
    int index = 0;
    PlainList bindings;
};

enum EPlainKind { ePlainList, ePlainScalars, ePlainTable, ePlainRows };

constexpr unsigned kPlainCounter = 4294967295u;
constexpr unsigned kPlainStatus = 3;

// The columns of the library's regions. Those of scalars and of the table take
// numbers and lengths from 0 to the limit.
struct SPlainColumn {
    EPlainKind kind;
    unsigned arc;
    int syntax;
    bool isWritable;
    int limit; // negative: none
};
constexpr SPlainColumn kPlainColumns[] = {
    {ePlainScalars, 1, eAsnInteger, true, 9},
    {ePlainScalars, 2, eAsnOctetString, true, 3},
    {ePlainScalars, kPlainCounter, eAsnCounter64, false, -1},
    {ePlainTable, 1, eAsnInteger, true, 9},
    {ePlainTable, 2, eAsnOctetString, true, 3},
    {ePlainTable, kPlainCounter, eAsnCounter64, false, -1},
    {ePlainRows, 1, eAsnOctetString, true, -1},
    {ePlainRows, 2, eAsnInteger, true, -1},
    {ePlainRows, kPlainStatus, eAsnInteger, true, -1},
};
inline const SPlainColumn* FindPlainColumn(EPlainKind kind, unsigned arc)
{
    for (const SPlainColumn& column : kPlainColumns) {
        if (column.kind == kind && column.arc == arc)
            return &column;
    }
    return nullptr;
}

inline Arcs Joined(Arcs arcs, const Arcs& more)
{
    arcs.insert(arcs.end(), more.begin(), more.end());
    return arcs;
}

class PlainAgent {
public:
    std::map<Arcs, EPlainKind> regions;
    PlainValues values;
    // Of the tables: the region and the index.
    std::set<std::pair<Arcs, Arcs>> tableRows;
    // What the access control refuses.
    std::set<Arcs> unreadable;
    std::set<Arcs> unwritable;

    // The region that a name belongs to is the deepest; null: none.
    const std::pair<const Arcs, EPlainKind>* OwnerOf(const Arcs& name) const
    {
        const std::pair<const Arcs, EPlainKind>* owner = nullptr;
        for (const auto& region : regions) {
            const Arcs& oid = region.first;
            const bool isAround =
                oid.size() <= name.size() && std::equal(oid.begin(), oid.end(), name.begin());
            if (isAround && (!owner || owner->first.size() < oid.size()))
                owner = &region;
        }
        return owner;
    }

    SPlainAnswer Get(const std::vector<Arcs>& names, bool isV1) const
    {
        SPlainAnswer answer;
        for (const Arcs& name : names) {
            ++answer.index;
            if (unreadable.count(name)) {
                answer.status = eSnmpAuthorizationError;
                return answer;
            }
        }
        answer.index = 0;
        for (const Arcs& name : names) {
            answer.bindings.push_back({name, ValueAt(name)});
            const int syntax = answer.bindings.back().value.syntax;
            if (isV1 && (syntax == eAsnCounter64 || syntax >= eNoSuchObject))
                return Refuse(answer);
        }
        return answer;
    }

    SPlainAnswer GetNext(const std::vector<Arcs>& names, bool isV1) const
    {
        SPlainAnswer answer;
        for (const Arcs& name : names) {
            const auto next = Next(name, isV1);
            if (next != values.end())
                answer.bindings.push_back({next->first, next->second});
            else
                answer.bindings.push_back({name, {eEndOfMibView, ""}});
            if (isV1 && next == values.end())
                return Refuse(answer);
        }
        return answer;
    }

private:
    // The last binding ends a request of SNMPv1.
    static SPlainAnswer Refuse(SPlainAnswer answer)
    {
        answer.status = eSnmpNoSuchName;
        answer.index = static_cast<int>(answer.bindings.size());
        return answer;
    }
    SPlainValue ValueAt(const Arcs& name) const
    {
        const auto* const owner = OwnerOf(name);
        if (!owner)
            return {eNoSuchObject, ""};
        const auto value = values.find(name);
        if (value != values.end())
            return value->second;
        const size_t length = owner->first.size();
        if (owner->second != ePlainScalars)
            return {eNoSuchInstance, ""};
        // A scalar without its 0, or one that is not there now.
        const bool isObject =
            name.size() == length + 1 || (name.size() == length + 2 && name[length + 1] == 0);
        return {isObject && FindPlainColumn(ePlainScalars, name[length]) ? eNoSuchInstance
                                                                         : eNoSuchObject,
                ""};
    }
    PlainValues::const_iterator Next(const Arcs& name, bool isV1) const
    {
        auto next = values.upper_bound(name);
        while (next != values.end() &&
               (unreadable.count(next->first) || (isV1 && next->second.syntax == eAsnCounter64)))
            ++next;
        return next;
    }
};

} // namespace Test
} // namespace VLK
