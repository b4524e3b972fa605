// An access control that refuses what it is told to, and remembers its questions.
#pragma once

#include "tests/support/Oids.h"

#include <vkmibh/handler.h>

#include <set>
#include <stdexcept>

namespace VLK {
namespace Test {

class FakeAccess : public IAccessControl {
public:
    int CheckAccess(const BSecurityParams& security, unsigned char accessKind,
                    const BString& context, const BVarBind& binding) override
    {
        const std::string name = TextOf(binding.Name());
        asked.push_back(name);
        kinds.insert(accessKind);
        lastSecurity = security;
        lastContext = context;
        if (throwing.count(name))
            throw std::runtime_error("access control");
        return refused.count(name) ? 7 : 0;
    }

    std::set<std::string> refused;
    std::set<std::string> throwing;
    std::vector<std::string> asked;
    std::set<int> kinds;
    BSecurityParams lastSecurity;
    BString lastContext;
};

} // namespace Test
} // namespace VLK
