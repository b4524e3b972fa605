// The modules of all examples in one agent that is asked directly, with a neighbour
// whose commit can be made to fail.
#pragma once

#include "examples/entrystatus/MeterTable.h"
#include "examples/row/Fan.h"
#include "examples/rowstatus/DoorTable.h"
#include "examples/scalar/Thermostat.h"
#include "examples/subtree/ParameterTree.h"
#include "examples/table/SensorTable.h"
#include <vkmibh/testing/recorder.h>
#include <vkmibh/testing/requests.h>

#include <sstream>

namespace VLK::Test {

// Names are relative to this.
inline const std::string kExamplesRoot = "1.3.6.1.4.1.32473.2.";

// "3.1.5.7 i 4": a name, a type as snmpset has it, and a value.
inline BVarBind BindingOf(const std::string& text)
{
    std::istringstream words(text);
    std::string name, type, value;
    words >> name >> type >> std::ws;
    std::getline(words, value);
    BObjectSyntax syntax;
    if (type == "i")
        syntax.SetInt(std::stoi(value));
    else if (type == "u")
        syntax.SetGauge(static_cast<unsigned>(std::stoul(value)));
    else
        syntax.SetOctets(BString(value.c_str()));
    return BVarBind(MakeOid((kExamplesRoot + name).c_str()), syntax);
}

class Modules {
public:
    static constexpr int kTimeout = 10000; // of inactive rows

    explicit Modules(int activationTimeout = kTimeout)
        : doors(activationTimeout), meters(activationTimeout)
    {
        parameters.Add("1.0", 5);
        parameters.Add("2.7.1", 40);
        for (BMibImplGroup* group : Groups()) {
            handler.RegisterGroup(group);
            group->Init();
        }
        handler.RegisterSubtreeHandler(&parameters);
        handler.RegisterSubtreeHandler(&neighbour);
    }
    ~Modules()
    {
        for (BMibImplGroup* group : Groups())
            handler.UnregisterGroup(group);
        handler.UnregisterSubtreeHandler(&parameters);
        handler.UnregisterSubtreeHandler(&neighbour);
    }

    std::vector<BMibImplGroup*> Groups() { return {&thermostat, &sensors, &doors, &meters, &fans}; }

    int Set(const std::vector<std::string>& bindings)
    {
        Client client(handler);
        BVarBindList list;
        for (const std::string& binding : bindings)
            list.Append(BindingOf(binding));
        const int status = client.Query(ePduSet, list);
        errorIndex = client.errorIndex;
        return status;
    }

    // "name=value " of all that the examples serve.
    std::string Walk(const std::string& below = "")
    {
        const std::string name = kExamplesRoot + below + (below.empty() ? "0" : "");
        BObjectIdentifier root = MakeOid(name.c_str());
        if (below.empty())
            root.Truncate(root.Length() - 1);
        Client client(handler);
        std::string all;
        BVarBindList list;
        list.Append(root);
        while (client.Query(ePduGetNext, list) == eSnmpNoError && !list[0].Value().IsException() &&
               root.IsStartingSubOidOf(list[0].Name())) {
            all += TextOf(list[0].Name()).substr(kExamplesRoot.size()) + "=" +
                   list[0].Value().ValToStr().c_str() + " ";
            list[0].Value().SetNull();
        }
        return all;
    }

    SetLog log;
    RecorderHandler neighbour{'N', (kExamplesRoot + "99").c_str(), log};
    examples::CThermostatModule thermostat;
    examples::CSensorModule sensors{"/dev/null"};
    examples::CDoorModule doors;
    examples::CMeterModule meters;
    examples::CFanModule fans;
    examples::CParameterTree parameters;
    BMibHandler handler{nullptr};
    int errorIndex = 0;
};

} // namespace VLK::Test
