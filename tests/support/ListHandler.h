// A subtree handler over a sorted list of instances, which can misbehave.
#pragma once

#include "tests/support/Oids.h"

#include <vkmibh/subtree.h>

#include <functional>
#include <map>
#include <set>
#include <stdexcept>

namespace VLK {
namespace Test {

class ListHandler : public BMibSubtreeHandler {
public:
    using BMibSubtreeHandler::GetNext;

    explicit ListHandler(const char* oid) : ListHandler(MakeOid(oid)) {}
    explicit ListHandler(const BObjectIdentifier& oid) : BMibSubtreeHandler(BString("list"), oid) {}
    ListHandler(const char* oid, unsigned rangePosition, unsigned rangeUpperBound)
        : BMibSubtreeHandler(BString("range"), MakeOid(oid), rangePosition, rangeUpperBound)
    {
    }

    void Add(const char* oid, int value) { Add(ArcsOf(MakeOid(oid)), value); }
    void Add(const Arcs& arcs, int value)
    {
        BObjectSyntax syntax;
        syntax.SetInt(value);
        instances[arcs] = syntax;
    }
    void AddCounter64(const char* oid)
    {
        BObjectSyntax syntax;
        syntax.SetCtr64(BCounter64(1, 2));
        instances[ArcsOf(MakeOid(oid))] = syntax;
    }

    int Get(unsigned, BVarBindList& list, int& index, int count) override
    {
        if (keepsLog)
            runs.emplace_back(index, count);
        const int first = index;
        for (int i = first; i < first + count; ++i) {
            if (onGet) {
                index = i;
                if (const int status = onGet(list[i]))
                    return status;
                continue;
            }
            const auto found = instances.find(ArcsOf(list[i].Name()));
            if (found == instances.end())
                list[i].Value().SetV2Exception(eNoSuchInstance);
            else
                list[i].Value() = found->second;
        }
        index = first;
        return eSnmpNoError;
    }

    int GetNext(unsigned, BVarBind& binding) override
    {
        if (keepsLog)
            asked.push_back(TextOf(binding.Name()));
        if (onGetNext) {
            const int status = onGetNext(binding);
            if (status != kGoOn)
                return status;
        }
        const auto next = instances.upper_bound(ArcsOf(binding.Name()));
        if (next == instances.end())
            return eSnmpNoSuchName;
        binding.Name().Set(static_cast<unsigned>(next->first.size()), next->first.data());
        binding.Value() = next->second;
        return eSnmpNoError;
    }

    int Set(unsigned, const BVarBindList&, ESnmpSetOpCode, void**, int&, int) override
    {
        return eSnmpNotWritable;
    }

    bool HandlesInstance(const BObjectIdentifier& oid) override
    {
        if (throwWhenAsked)
            throw std::runtime_error("asked for an instance");
        return alsoHandles.count(TextOf(oid)) > 0;
    }

    // What onGetNext returns to let the list answer.
    static constexpr int kGoOn = -1;

    std::map<Arcs, BObjectSyntax> instances;
    std::function<int(BVarBind&)> onGet;
    std::function<int(BVarBind&)> onGetNext;
    std::set<std::string> alsoHandles;
    bool throwWhenAsked = false;
    bool keepsLog = true;
    std::vector<std::pair<int, int>> runs; // index and count of every Get
    std::vector<std::string> asked;        // the name in every GetNext
};

} // namespace Test
} // namespace VLK
