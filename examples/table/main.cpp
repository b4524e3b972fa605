// A read-only table over changing data: the lines of a file that another program
// writes, here "build/sensors". Every request sees the file as it is.
//
//   $ ./dev example table
//
// From a second terminal, in the same directory:
//
//   $ sensors=1.3.6.1.4.1.32473.2.2.1
//   $ printf '3 21 kitchen\n7 -18 cold store\n' >build/sensors
//   $ snmpwalk -v2c -c public -On 127.0.0.1:1161 $sensors
//   .1.3.6.1.4.1.32473.2.2.1.2.3 = STRING: "kitchen"
//   .1.3.6.1.4.1.32473.2.2.1.2.7 = STRING: "cold store"
//   .1.3.6.1.4.1.32473.2.2.1.3.3 = INTEGER: 21
//   .1.3.6.1.4.1.32473.2.2.1.3.7 = INTEGER: -18
//   $ echo '7 -16 cold store' >build/sensors
//   $ snmpget -v2c -c public -On 127.0.0.1:1161 $sensors.3.3 $sensors.3.7
//   .1.3.6.1.4.1.32473.2.2.1.3.3 = No Such Instance currently exists at this OID
//   .1.3.6.1.4.1.32473.2.2.1.3.7 = INTEGER: -16
//   $ snmpset -v2c -c private -On 127.0.0.1:1161 $sensors.3.7 i 0
//   Error in packet.
//   Reason: notWritable (That object does not support modification)
//   Failed object: .1.3.6.1.4.1.32473.2.2.1.3.7
//
#include "examples/ExampleHost.h"
#include "examples/table/SensorTable.h"

// The file may be given after the address.
int main(int argc, char** argv)
{
    VLK::examples::CSensorModule sensors(argc > 2 ? argv[2] : "build/sensors");
    return VLK::examples::ServeExample(argc, argv, sensors);
}
