// A writable scalar that survives the agent: what a SET has acknowledged is in the
// store, here "build/setpoint.db".
//
//   $ ./dev example stored 127.0.0.1:1161 build/setpoint.db
//
// From a second terminal; then kill the agent, start it again and ask once more:
//
//   $ setpoint=1.3.6.1.4.1.32473.2.8.1.0
//   $ snmpget -v2c -c public -On 127.0.0.1:1161 $setpoint
//   .1.3.6.1.4.1.32473.2.8.1.0 = INTEGER: 20
//   $ snmpset -v2c -c private -On 127.0.0.1:1161 $setpoint i 23
//   .1.3.6.1.4.1.32473.2.8.1.0 = INTEGER: 23
//   $ snmpset -v2c -c private -On 127.0.0.1:1161 $setpoint i 31
//   Error in packet.
//   Reason: wrongValue (The set value is illegal or unsupported in some way)
//   Failed object: .1.3.6.1.4.1.32473.2.8.1.0
//
//   $ snmpget -v2c -c public -On 127.0.0.1:1161 $setpoint
//   .1.3.6.1.4.1.32473.2.8.1.0 = INTEGER: 23
#include "examples/ExampleHost.h"
#include "examples/stored/Setpoint.h"

#include <memory>

// The file may be given after the address; without one nothing is kept.
int main(int argc, char** argv)
{
    using namespace VLK;
    std::unique_ptr<examples::CSetpointModule> module; // outlives the agent
    const examples::SExampleHost host{argc > 2 ? argv[2] : "", ""};
    return examples::ServeExample(argc, argv, host,
                                  [&](INonVolatile* store, ITrapSender&) -> BMibImplGroup& {
                                      module = std::make_unique<examples::CSetpointModule>(store);
                                      return *module;
                                  });
}
