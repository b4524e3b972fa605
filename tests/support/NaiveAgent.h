// What GETNEXT should answer, from one sorted list of everything there is.
#pragma once

#include "tests/support/ListHandler.h"

#include <set>

namespace VLK {
namespace Test {

class NaiveAgent {
public:
    void Take(const ListHandler& module)
    {
        for (const auto& instance : module.instances)
            m_instances[instance.first] = instance.second;
    }
    void Refuse(const std::string& name) { m_refused.insert(name); }

    // The successor's name; empty when there is none.
    Arcs Next(const Arcs& after, bool isV1) const
    {
        for (auto it = m_instances.upper_bound(after); it != m_instances.end(); ++it) {
            if (isV1 && it->second.Syntax() == eAsnCounter64)
                continue;
            if (m_refused.empty() || !m_refused.count(TextOf(it->first)))
                return it->first;
        }
        return Arcs();
    }
    const BObjectSyntax& ValueOf(const Arcs& name) const { return m_instances.at(name); }

private:
    std::map<Arcs, BObjectSyntax> m_instances;
    std::set<std::string> m_refused;
};

} // namespace Test
} // namespace VLK
