// Conceptual rows with a fixed index, each served by an object of its own
// (BMibRowImpl): two fans that appear as one table.
//
//   $ ./dev example row
//
// From a second terminal:
//
//   $ fan=1.3.6.1.4.1.32473.2.5.1
//   $ snmpset -v2c -c private -On 127.0.0.1:1161 $fan.3.2 u 75
//   .1.3.6.1.4.1.32473.2.5.1.3.2 = Gauge32: 75
//   $ snmpwalk -v2c -c public -On 127.0.0.1:1161 $fan
//   .1.3.6.1.4.1.32473.2.5.1.2.1 = STRING: "intake"
//   .1.3.6.1.4.1.32473.2.5.1.2.2 = STRING: "exhaust"
//   .1.3.6.1.4.1.32473.2.5.1.3.1 = Gauge32: 0
//   .1.3.6.1.4.1.32473.2.5.1.3.2 = Gauge32: 75
//   $ snmpset -v2c -c private -On 127.0.0.1:1161 $fan.3.1 u 50 $fan.3.2 u 101
//   Error in packet.
//   Reason: wrongValue (The set value is illegal or unsupported in some way)
//   Failed object: .1.3.6.1.4.1.32473.2.5.1.3.2
//
//   $ snmpget -v2c -c public -On 127.0.0.1:1161 $fan.3.1 $fan.3.3
//   .1.3.6.1.4.1.32473.2.5.1.3.1 = Gauge32: 0
//   .1.3.6.1.4.1.32473.2.5.1.3.3 = No Such Instance currently exists at this OID
#include "examples/ExampleHost.h"
#include "examples/row/Fan.h"

int main(int argc, char** argv)
{
    VLK::examples::CFanModule fans;
    return VLK::examples::ServeExample(argc, argv, fans);
}
