// A table with the older EntryStatus column (RFC 1757) and an OwnerString: rows are
// created, filled in while they are underCreation, and set valid.
//
//   $ ./dev example entrystatus
//
// From a second terminal; columns: 2 interval, 3 owner, 4 EntryStatus (1 valid,
// 2 createRequest, 3 underCreation, 4 invalid):
//
//   $ meter=1.3.6.1.4.1.32473.2.4.1
//   $ snmpset -v2c -c private -On 127.0.0.1:1161 $meter.3.5 s "night shift" $meter.4.5 i 2
//   .1.3.6.1.4.1.32473.2.4.1.3.5 = STRING: "night shift"
//   .1.3.6.1.4.1.32473.2.4.1.4.5 = INTEGER: 2
//   $ snmpwalk -v2c -c public -On 127.0.0.1:1161 $meter
//   .1.3.6.1.4.1.32473.2.4.1.2.5 = INTEGER: 1800
//   .1.3.6.1.4.1.32473.2.4.1.3.5 = STRING: "night shift"
//   .1.3.6.1.4.1.32473.2.4.1.4.5 = INTEGER: 3
//   $ snmpset -v2c -c private -On 127.0.0.1:1161 $meter.2.5 i 60 $meter.4.5 i 1
//   .1.3.6.1.4.1.32473.2.4.1.2.5 = INTEGER: 60
//   .1.3.6.1.4.1.32473.2.4.1.4.5 = INTEGER: 1
//   $ snmpset -v2c -c private -On 127.0.0.1:1161 $meter.2.5 i 90
//   Error in packet.
//   Reason: inconsistentValue (The set value is illegal or unsupported in some way)
//   Failed object: .1.3.6.1.4.1.32473.2.4.1.2.5
//
//   $ snmpset -v2c -c private -On 127.0.0.1:1161 $meter.4.5 i 2
//   Error in packet.
//   Reason: wrongValue (The set value is illegal or unsupported in some way)
//   Failed object: .1.3.6.1.4.1.32473.2.4.1.4.5
//
//   $ snmpset -v2c -c private -On 127.0.0.1:1161 $meter.4.5 i 4
//   .1.3.6.1.4.1.32473.2.4.1.4.5 = INTEGER: 4
//   $ snmpget -v2c -c public -On 127.0.0.1:1161 $meter.4.5
//   .1.3.6.1.4.1.32473.2.4.1.4.5 = No Such Instance currently exists at this OID
#include "examples/ExampleHost.h"
#include "examples/entrystatus/MeterTable.h"

// How long a row may stay underCreation may be given after the address, in seconds.
int main(int argc, char** argv)
{
    VLK::examples::CMeterModule meters(1000 * (argc > 2 ? VLK::VKStrToInt32(argv[2]) : 60));
    return VLK::examples::ServeExample(argc, argv, meters);
}
