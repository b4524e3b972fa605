// A table whose rows managers create and destroy with a RowStatus column: defaults,
// a column without default, StorageType, and removal of rows that are left inactive
// for a minute.
//
//   $ ./dev example rowstatus
//
// From a second terminal; columns: 2 name, 3 seconds to stay open, 4 StorageType,
// 5 RowStatus (1 active, 2 notInService, 3 notReady, 4 createAndGo, 5 createAndWait,
// 6 destroy):
//
//   $ door=1.3.6.1.4.1.32473.2.3.1
//   $ snmpset -v2c -c private -On 127.0.0.1:1161 $door.2.7 s "side gate" $door.5.7 i 4
//   .1.3.6.1.4.1.32473.2.3.1.2.7 = STRING: "side gate"
//   .1.3.6.1.4.1.32473.2.3.1.5.7 = INTEGER: 4
//   $ snmpget -v2c -c public -On 127.0.0.1:1161 $door.3.7 $door.4.7 $door.5.7
//   .1.3.6.1.4.1.32473.2.3.1.3.7 = INTEGER: 30
//   .1.3.6.1.4.1.32473.2.3.1.4.7 = INTEGER: 2
//   .1.3.6.1.4.1.32473.2.3.1.5.7 = INTEGER: 1
//   $ snmpset -v2c -c private -On 127.0.0.1:1161 $door.5.8 i 5
//   .1.3.6.1.4.1.32473.2.3.1.5.8 = INTEGER: 5
//   $ snmpset -v2c -c private -On 127.0.0.1:1161 $door.5.8 i 1
//   Error in packet.
//   Reason: inconsistentValue (The set value is illegal or unsupported in some way)
//   Failed object: .1.3.6.1.4.1.32473.2.3.1.5.8
//
//   $ snmpwalk -v2c -c public -On 127.0.0.1:1161 $door.5
//   .1.3.6.1.4.1.32473.2.3.1.5.1 = INTEGER: 1
//   .1.3.6.1.4.1.32473.2.3.1.5.2 = INTEGER: 1
//   .1.3.6.1.4.1.32473.2.3.1.5.7 = INTEGER: 1
//   .1.3.6.1.4.1.32473.2.3.1.5.8 = INTEGER: 3
//   $ snmpset -v2c -c private -On 127.0.0.1:1161 $door.5.8 i 1 $door.2.8 s "back door"
//   .1.3.6.1.4.1.32473.2.3.1.5.8 = INTEGER: 1
//   .1.3.6.1.4.1.32473.2.3.1.2.8 = STRING: "back door"
//   $ snmpset -v2c -c private -On 127.0.0.1:1161 $door.5.7 i 6 $door.5.1 i 6
//   Error in packet.
//   Reason: inconsistentValue (The set value is illegal or unsupported in some way)
//   Failed object: .1.3.6.1.4.1.32473.2.3.1.5.1
//
//   $ snmpset -v2c -c private -On 127.0.0.1:1161 $door.5.7 i 6
//   .1.3.6.1.4.1.32473.2.3.1.5.7 = INTEGER: 6
#include "examples/ExampleHost.h"
#include "examples/rowstatus/DoorTable.h"

// The time-out may be given after the address, in seconds.
int main(int argc, char** argv)
{
    VLK::examples::CDoorModule doors(1000 * (argc > 2 ? VLK::VKStrToInt32(argv[2]) : 60));
    return VLK::examples::ServeExample(argc, argv, doors);
}
