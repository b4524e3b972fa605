// The agents of a configuration with four sinks, over an engine that keeps what it is
// given.
#pragma once

#include "host/agents/HostAgents.h"

#include "host/Options.h"

#include "FakeEngine.h"

#include "tests/support/AllocationSweep.h"
#include "tests/support/Oids.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>

namespace VLK {
namespace Test {

using namespace VLK::host;

constexpr const char* kColdStart = "1.3.6.1.6.3.1.1.5.1";
constexpr const char* kAuthenticationFailure = "1.3.6.1.6.3.1.1.5.5";
constexpr const char* kEnterprise = "1.3.6.1.4.1.32473.5";

inline BTransportAddress AddressOf(const char* text)
{
    BTransportAddress address;
    EXPECT_TRUE(address.Parse(text)) << text;
    return address;
}

// Sinks 0 and 1 are sent everything, in versions 2c and 1; sink 2, for informs, what
// concerns the system group and coldStart; sink 3 has a community without rights.
inline SConfiguration Configured()
{
    SOptions options;
    options.listen = {AddressOf("udp:127.0.0.2:0"), AddressOf("udp:127.0.0.1:1161")};
    options.communities = {{"all", false}};
    SConfiguration configuration = Configure(options);
    SView few{"few", {}};
    few.families.push_back({MakeOid("1.3.6.1.2.1.1"), BOctetString(), eFilterIncluded});
    few.families.push_back({MakeOid(kColdStart), BOctetString(), eFilterIncluded});
    configuration.views.push_back(few);
    AddCommunity(configuration, {"few", "few", "", {}}, {"", "", "few"});
    for (const char* community : {"all", "all", "few", "none"}) {
        STrapSink sink;
        sink.address = AddressOf("udp:192.0.2.1:162");
        sink.community = community;
        sink.protocol = configuration.trapSinks.size() == 1 ? eSnmpV1 : eSnmpV2c;
        sink.isInform = community == std::string("few");
        sink.security = SecurityOf({community, community, "", {}}, sink.protocol);
        configuration.trapSinks.push_back(sink);
    }
    configuration.trapSinks[2].address = AddressOf("udp:192.0.2.2:1162");
    return configuration;
}

inline BVarBindList OneBinding(const char* name, const BObjectSyntax& value = BObjectSyntax())
{
    BVarBindList list;
    list.Append(MakeOid(name), value);
    return list;
}

class HostAgents : public testing::Test {
protected:
    HostAgents() { agents.Open(engine, configuration); }

    // Receivers of what was sent since it was last asked for.
    std::vector<unsigned> Receivers()
    {
        std::vector<unsigned> receivers;
        for (const FakeEngine::SSent& sent : engine.sent)
            receivers.push_back(sent.receiver);
        engine.sent.clear();
        return receivers;
    }
    std::string Parameters(const char* name)
    {
        return agents.Registry()->GetAgent(BString(name))->GetParams().c_str();
    }

    using Numbers = std::vector<unsigned>;
    SConfiguration configuration = Configured();
    BTime time;
    BAccess access{configuration, nullptr};
    BTrapGate gate;
    modules::CTargetRows rows{nullptr};
    BHostAgents agents{time, access, gate, rows};
    FakeEngine engine;
};

} // namespace Test
} // namespace VLK
