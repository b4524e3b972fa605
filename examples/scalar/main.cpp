// Two writable scalars: a range, an enumeration, and a SET that changes both or
// nothing.
//
//   $ ./dev example scalar
//
// From a second terminal (-v1 in place of -v2c does, too):
//
//   $ target=1.3.6.1.4.1.32473.2.1.1.0 mode=1.3.6.1.4.1.32473.2.1.2.0
//   $ snmpget -v2c -c public -On 127.0.0.1:1161 $target $mode
//   .1.3.6.1.4.1.32473.2.1.1.0 = INTEGER: 20
//   .1.3.6.1.4.1.32473.2.1.2.0 = INTEGER: 1
//   $ snmpset -v2c -c private -On 127.0.0.1:1161 $target i 23 $mode i 2
//   .1.3.6.1.4.1.32473.2.1.1.0 = INTEGER: 23
//   .1.3.6.1.4.1.32473.2.1.2.0 = INTEGER: 2
//   $ snmpset -v2c -c private -On 127.0.0.1:1161 $target i 18 $mode i 4
//   Error in packet.
//   Reason: wrongValue (The set value is illegal or unsupported in some way)
//   Failed object: .1.3.6.1.4.1.32473.2.1.2.0
//
//   $ snmpget -v2c -c public -On 127.0.0.1:1161 $target
//   .1.3.6.1.4.1.32473.2.1.1.0 = INTEGER: 23
#include "examples/ExampleHost.h"
#include "examples/scalar/Thermostat.h"

int main(int argc, char** argv)
{
    VLK::examples::CThermostatModule thermostat;
    return VLK::examples::ServeExample(argc, argv, thermostat);
}
