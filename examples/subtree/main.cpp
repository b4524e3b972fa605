// A subtree served by hand (BMibSubtreeHandler): names that are known at run time
// only, here from the command line, with GET, GETNEXT and SET of their own.
//
//   $ ./dev example subtree 127.0.0.1:1161 1.0=5 2.7.1=40
//
// From a second terminal:
//
//   $ tree=1.3.6.1.4.1.32473.2.6
//   $ snmpwalk -v2c -c public -On 127.0.0.1:1161 $tree
//   .1.3.6.1.4.1.32473.2.6.1.0 = INTEGER: 5
//   .1.3.6.1.4.1.32473.2.6.2.7.1 = INTEGER: 40
//   $ snmpset -v2c -c private -On 127.0.0.1:1161 $tree.1.0 i 6 $tree.2.7.1 s many
//   Error in packet.
//   Reason: wrongType (The set datatype does not match the data type the agent expects)
//   Failed object: .1.3.6.1.4.1.32473.2.6.2.7.1
//
//   $ snmpget -v2c -c public -On 127.0.0.1:1161 $tree.1.0 $tree.2
//   .1.3.6.1.4.1.32473.2.6.1.0 = INTEGER: 5
//   .1.3.6.1.4.1.32473.2.6.2 = No Such Instance currently exists at this OID
//   $ snmpset -v2c -c private -On 127.0.0.1:1161 $tree.1.0 i 6
//   .1.3.6.1.4.1.32473.2.6.1.0 = INTEGER: 6
#include "examples/ExampleHost.h"
#include "examples/subtree/ParameterTree.h"

#include <string>

int main(int argc, char** argv)
{
    VLK::examples::CParameterTree parameters;
    for (int i = 2; i < argc; ++i) {
        const std::string argument = argv[i];
        const size_t equals = argument.find('=');
        if (equals != argument.npos)
            parameters.Add(argument.substr(0, equals).c_str(),
                           VLK::VKStrToInt32(argument.substr(equals + 1).c_str()));
    }
    return VLK::examples::ServeExample(argc, argv, parameters);
}
