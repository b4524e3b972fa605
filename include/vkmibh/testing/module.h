// A module in a MIB handler of its own, asked and changed by requests, with a
// neighbour whose commit can be made to fail.
#pragma once

#include <string>
#include <vector>
#include <vkmibh/testing/recorder.h>
#include <vkmibh/testing/requests.h>

namespace VLK {
namespace Test {

// Names are below the module's root; one that begins with '.' is whole.
//
//   CDoorModule doors;
//   ModuleClient client(doors, "1.3.6.1.4.1.32473.2.3.1");
//   EXPECT_EQ(client.Set({{"3.1", Number(9999)}}), eSnmpWrongValue);
//   EXPECT_EQ(client.CheckUndo({{"3.1", Number(60)}}), "");
//
// A single implementation, or a subtree handler written by hand, is a module too;
// its root is where it is registered.
//
// Ownership: the module is the test's and outlives it.
// Threads:   one at a time.
// Errors:    SNMP error status, or as said. What is wrong with the registration,
//            Problem() tells.
class ModuleClient {
public:
    ModuleClient(BMibImplGroup& module, const std::string& root);
    explicit ModuleClient(BMibSubtreeHandler& module);
    ~ModuleClient();
    ModuleClient(const ModuleClient&) = delete;
    ModuleClient& operator=(const ModuleClient&) = delete;

    // Empty when the module is registered and all of it has started.
    const std::string& Problem() const { return m_problem; }

    // The status of a SET; errorIndex goes with it.
    int Set(const Bindings& bindings);
    // The same SET with a binding at its end whose commit, or test, fails.
    int SetInVain(Bindings bindings, ESnmpSetOpCode phase = eSetCommit);
    // The value as text, or "status n".
    std::string Get(const std::string& name);
    // "name=value" of each instance of the module.
    std::vector<std::string> Walk();

    // Whether a SET that fails behind the module's own test, and one that fails behind
    // its commit, leave it as it was. Then the same SET has to succeed and to change
    // something: what changes nothing proves no undo. What is wrong with it, or empty;
    // the values stay set.
    std::string CheckUndo(const Bindings& bindings);

    SetLog log; // the neighbour's
    RecorderHandler neighbour;
    BMibHandler handler{nullptr};
    int errorIndex = 0;

private:
    void AddNeighbour();
    std::string Whole(const std::string& name) const;

    BMibImplGroup* m_group = nullptr; // one of these two
    BMibSubtreeHandler* m_alone = nullptr;
    std::string m_root;
    std::string m_problem;
};

} // namespace Test
} // namespace VLK
