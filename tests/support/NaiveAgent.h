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
            if (IsVisible(it, isV1))
                return it->first;
        }
        return Arcs();
    }
    bool IsVisible(const Arcs& name, bool isV1) const
    {
        const auto found = m_instances.find(name);
        return found != m_instances.end() && IsVisible(found, isV1);
    }
    const BObjectSyntax& ValueOf(const Arcs& name) const { return m_instances.at(name); }

private:
    using Instances = std::map<Arcs, BObjectSyntax>;

    bool IsVisible(Instances::const_iterator it, bool isV1) const
    {
        if (isV1 && it->second.Syntax() == eAsnCounter64)
            return false;
        return m_refused.empty() || !m_refused.count(TextOf(it->first));
    }

    Instances m_instances;
    std::set<std::string> m_refused;
};

} // namespace Test
} // namespace VLK
