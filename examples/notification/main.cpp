// A notification, and the timer: a file that another program makes, here "build/leak",
// is looked for once a second; when it comes or goes, receivers are told.
//
//   $ ./dev example notification 127.0.0.1:1161 127.0.0.1:1162
//
// The second address is that of the receiver. From a second terminal, in the same
// directory; leakState is 1 leaking, 2 dry:
//
//   $ leak=1.3.6.1.4.1.32473.2.9.1.0
//   $ snmpget -v2c -c public -On 127.0.0.1:1161 $leak
//   .1.3.6.1.4.1.32473.2.9.1.0 = INTEGER: 2
//   $ touch build/leak
//   $ until snmpget -v2c -c public -Oqv 127.0.0.1:1161 $leak | grep -q 1; do sleep 0.2; done
//   $ snmpget -v2c -c public -On 127.0.0.1:1161 $leak
//   .1.3.6.1.4.1.32473.2.9.1.0 = INTEGER: 1
#include "examples/ExampleHost.h"
#include "examples/notification/LeakAlarm.h"

#include <memory>

// The receiver and the file may be given after the address.
int main(int argc, char** argv)
{
    using namespace VLK;
    std::unique_ptr<examples::CLeakModule> module; // outlives the agent
    const examples::SExampleHost host{"", argc > 2 ? argv[2] : ""};
    const char* const file = argc > 3 ? argv[3] : "build/leak";
    return examples::ServeExample(argc, argv, host,
                                  [&](INonVolatile*, ITrapSender& traps) -> BMibImplGroup& {
                                      module = std::make_unique<examples::CLeakModule>(file, traps);
                                      return *module;
                                  });
}
