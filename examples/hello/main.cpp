// The smallest module: one scalar that answers.
//
//   $ ./dev example hello
//
// From a second terminal:
//
//   $ snmpwalk -v2c -c public -On 127.0.0.1:1161 1.3.6.1.4.1.32473.2.7
//   .1.3.6.1.4.1.32473.2.7.1.0 = STRING: "hello, world"
//   $ snmpget -v1 -c public -On 127.0.0.1:1161 1.3.6.1.4.1.32473.2.7.1.0
//   .1.3.6.1.4.1.32473.2.7.1.0 = STRING: "hello, world"
//   $ snmpget -v2c -c public -On 127.0.0.1:1161 1.3.6.1.4.1.32473.2.7.2.0
//   .1.3.6.1.4.1.32473.2.7.2.0 = No Such Object available on this agent at this OID
//   $ snmpset -v2c -c private -On 127.0.0.1:1161 1.3.6.1.4.1.32473.2.7.1.0 s "bye"
//   Error in packet.
//   Reason: notWritable (That object does not support modification)
//   Failed object: .1.3.6.1.4.1.32473.2.7.1.0
//
#include "examples/ExampleHost.h"
using namespace VLK;

struct CHello : BMibScalarGroupImpl {
    CHello() : BMibScalarGroupImpl("HELLO-MIB.hello", BObjectIdentifier("1.3.6.1.4.1.32473.2.7")) {}
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    int OnGet(unsigned, BString& value)
    {
        value = "hello, world";
        return eSnmpNoError;
    }
    static SRqHndlrMapEntry s_map[];
};
VKMIBH_CONSTINIT SRqHndlrMapEntry CHello::s_map[] = {
    ScalarRow<eKindDisplayString, &CHello::OnGet>(1, "text", eAsnOctetString, eRqReadOnly), kRqEnd};

int main(int argc, char** argv) { return VLK::examples::ServeExample<CHello>(argc, argv); }
