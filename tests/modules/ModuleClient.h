// A module in a MIB handler, asked and changed directly, with a neighbour whose
// commit can be made to fail.
#pragma once

#include "tests/support/RecorderHandler.h"
#include "tests/support/Requests.h"

#include <gtest/gtest.h>

namespace VLK {
namespace Test {

inline BObjectSyntax Number(int value)
{
    BObjectSyntax syntax;
    syntax.SetInt(value);
    return syntax;
}

inline BObjectSyntax Bytes(const std::string& bytes)
{
    BObjectSyntax syntax;
    syntax.SetOctets(BOctetString(static_cast<unsigned>(bytes.size()),
                                  reinterpret_cast<const unsigned char*>(bytes.data())));
    return syntax;
}

struct Binding {
    std::string name; // below the module's root
    BObjectSyntax value;
};
using Bindings = std::vector<Binding>;

// The module outlives it.
class ModuleClient {
public:
    ModuleClient(BMibImplGroup& module, const std::string& root)
        : m_module(module), m_root(root + ".")
    {
        EXPECT_TRUE(handler.RegisterGroup(&m_module));
        EXPECT_EQ(m_module.Init(), m_module.GetNumImpls());
        EXPECT_TRUE(handler.RegisterSubtreeHandler(&neighbour));
    }
    ~ModuleClient()
    {
        handler.UnregisterSubtreeHandler(&neighbour);
        handler.UnregisterGroup(&m_module);
    }
    ModuleClient(const ModuleClient&) = delete;
    ModuleClient& operator=(const ModuleClient&) = delete;

    // The status of a SET; errorIndex goes with it.
    int Set(const Bindings& bindings)
    {
        Client client(handler);
        BVarBindList list;
        for (const Binding& binding : bindings)
            list.Append(MakeOid(Whole(binding.name).c_str()), binding.value);
        const int status = client.Query(ePduSet, list);
        errorIndex = client.errorIndex;
        return status;
    }
    // The same SET with a binding at its end whose commit fails.
    int SetInVain(Bindings bindings)
    {
        neighbour.failAt = {{eSetCommit, static_cast<int>(bindings.size())}};
        bindings.push_back({kNeighbour, Number(1)});
        return Set(bindings);
    }
    std::string Get(const std::string& name)
    {
        Client client(handler);
        const int status = client.Get({Whole(name).c_str()});
        return status == 0 ? client.TextAt(0) : "status " + std::to_string(status);
    }
    // "name=value" of each instance of the module.
    std::vector<std::string> Walk()
    {
        std::vector<std::string> all;
        Client client(handler);
        BVarBindList list;
        list.Append(MakeOid(m_root.substr(0, m_root.size() - 1).c_str()));
        while (client.Query(ePduGetNext, list) == 0 && !list[0].Value().IsException() &&
               TextOf(list[0].Name()).compare(0, m_root.size(), m_root) == 0) {
            all.push_back(TextOf(list[0].Name()).substr(m_root.size()) + "=" +
                          list[0].Value().ValToStr().c_str());
            list[0].Value().SetNull();
        }
        return all;
    }

    SetLog log;
    RecorderHandler neighbour{'N', kNeighbourRoot, log};
    BMibHandler handler{nullptr};
    int errorIndex = 0;

private:
    static constexpr const char* kNeighbourRoot = "1.3.6.1.4.1.32473.99";
    static constexpr const char* kNeighbour = ".1.3.6.1.4.1.32473.99.1.0";

    std::string Whole(const std::string& name) const
    {
        return name[0] == '.' ? name.substr(1) : m_root + name;
    }

    BMibImplGroup& m_module;
    std::string m_root;
};

} // namespace Test
} // namespace VLK
