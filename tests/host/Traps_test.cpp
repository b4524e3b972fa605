// Notifications as the installed receiver logs them, and what becomes of the agent
// when nobody receives them.
#include "PipedAgent.h"
#include "TrapDaemon.h"
#include "UdpClient.h"

#include "Ber.h"

#include <chrono>

namespace {

const std::string kEnable = ".1.3.6.1.2.1.11.30.0";
const std::string kTrapper = ".1.3.6.1.4.1.32473.5.1.0";
const std::string kUpTime = ".1.3.6.1.2.1.1.3.0";
const std::string kTrapOid = ".1.3.6.1.6.3.1.1.4.1.0 = OID: ";
const std::string kSnmpTraps = ".1.3.6.1.6.3.1.1.5";

// `public` reads, `private` writes, `traps` is for notifications only.
std::string Communities(const std::string& notify = "everything")
{
    return "agentAddress = \"udp:127.0.0.1:0\"\n"
           "[[community]]\nname = \"public\"\nread = \"everything\"\n"
           "[[community]]\nname = \"private\"\nread = \"everything\"\nwrite = \"everything\"\n"
           "[[community]]\nname = \"traps\"\nsources = []\nnotify = \"" +
           notify + "\"\n";
}

std::string Sink(const std::string& address, const std::string& more = "")
{
    return "[[trapSink]]\naddress = \"" + address + "\"\ncommunity = \"traps\"\n" + more;
}

const std::string kV1 = "version = \"1\"\n";
const std::string kInform = "inform = true\ntimeout = 5\nretries = 1\n";

// A notification as the daemon logs it, its time apart.
struct SLogged {
    explicit SLogged(const std::string& line)
    {
        // v2: "... = Timeticks: (123) 0:00:01.23<tab>..."; v1: the fifth part.
        const std::string ticks = "Timeticks: (";
        size_t at = line.find(ticks);
        if (at != line.npos) {
            upTime = std::stoul(line.substr(at + ticks.size()));
            size_t end = line.find('\t', at);
            text = line.substr(0, at) + "TIME" + line.substr(end == line.npos ? line.size() : end);
            return;
        }
        for (int part = 0; part < 4 && at != 0; ++part)
            at = line.find('|', at == line.npos ? 0 : at) + 1;
        size_t end = line.find('|', at);
        if (end == line.npos)
            return;
        upTime = std::stoul(line.substr(at));
        text = line.substr(0, at) + "TIME" + line.substr(end);
    }
    std::string text;
    unsigned long upTime = 0;
};

std::string V2(const std::string& kind, const std::string& trapOid, const std::string& more = "")
{
    return "0.0.0.0|.|0|0|0|" + kind + ", SNMP v2c, community traps|" + kUpTime + " = TIME\t" +
           kTrapOid + trapOid + more;
}

std::string V1(const std::string& enterprise, int generic, int specific,
               const std::string& more = "")
{
    return "127.0.0.1|" + enterprise + "|" + std::to_string(generic) + "|" +
           (generic == 6 ? "." : "") + std::to_string(specific) +
           "|TIME|TRAP, SNMP v1, community traps|" + more;
}

class Traps : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(daemon.IsReady()); }

    // The agent with a module that raises notifications.
    static Arguments Trapper(const std::string& store, const ConfigFile& file)
    {
        return {TRAPPING_AGENT, "--store", store, "--config", file.Name()};
    }
    std::string Next() { return SLogged(daemon.Next()).text; }

    TempDir directory;
    std::string store = directory.File("store.db");
    TrapDaemon daemon;
};

} // namespace

TEST_F(Traps, AColdStartIsReceivedInTheFormOfEachSink)
{
    struct {
        std::string more;
        std::string expected;
    } sinks[] = {{"", V2("TRAP2", kSnmpTraps + ".1")},
                 {kV1, V1(kSnmpTraps, 0, 0)},
                 {kInform, V2("INFORM", kSnmpTraps + ".1")}};
    for (const auto& sink : sinks) {
        ConfigFile file(Communities() + Sink(daemon.Address(), sink.more));
        ConfiguredAgent agent(store, file);
        ASSERT_TRUE(agent.IsReady()) << agent.FirstLine();
        SLogged logged(daemon.Next());
        EXPECT_EQ(logged.text, sink.expected);
        std::string now = agent.Ask("snmpget", "2c", "public", {kUpTime}, {"-Oqvt"}).output;
        ASSERT_FALSE(now.empty());
        EXPECT_GE(std::stoul(now), logged.upTime) << "sysUpTime as a GET has it";
        EXPECT_LT(std::stoul(now) - logged.upTime, 3000u);
        EXPECT_GT(logged.upTime, 0u);
    }
}

TEST_F(Traps, AuthenticationFailuresAreToldOnceAManagerWantsIt)
{
    ConfigFile file(Communities() + Sink(daemon.Address()) + Sink(daemon.Address(), kV1));
    ConfiguredAgent agent(store, file);
    ASSERT_TRUE(agent.IsReady()) << agent.FirstLine();
    Next();
    Next(); // coldStart
    auto fail = [&](const std::string& version) {
        agent.Ask("snmpget", version, "wrong", {oid::kSysDescr}, {"-r", "0", "-t", "0.1"});
    };
    fail("2c");
    fail("1");
    ASSERT_EQ(agent.Ask("snmpset", "2c", "private", {kEnable, "i", "1"}).status, 0);
    fail("1");
    Arguments both{Next(), Next()};
    EXPECT_EQ(both, (Arguments{V2("TRAP2", kSnmpTraps + ".5"), V1(kSnmpTraps, 4, 0)}));
    ASSERT_EQ(agent.Ask("snmpset", "2c", "private", {kEnable, "i", "2"}).status, 0);
    fail("2c");
    EXPECT_EQ(daemon.Rest(), Arguments());
}

TEST_F(Traps, AuthenticationFailuresAreToldAtOnceWhereTheConfigurationSaysSo)
{
    ConfigFile file("snmpEnableAuthenTraps = true\n" + Communities() + Sink(daemon.Address()));
    ConfiguredAgent agent(store, file);
    ASSERT_TRUE(agent.IsReady()) << agent.FirstLine();
    EXPECT_EQ(Next(), V2("TRAP2", kSnmpTraps + ".1"));
    agent.Ask("snmpget", "2c", "wrong", {oid::kSysDescr}, {"-r", "0", "-t", "0.1"});
    EXPECT_EQ(Next(), V2("TRAP2", kSnmpTraps + ".5"));
}

TEST_F(Traps, AFloodOfFailuresIsNoFloodOfTraps)
{
    ConfigFile file(Communities() + Sink(daemon.Address()));
    ConfiguredAgent agent(store, file);
    ASSERT_TRUE(agent.IsReady()) << agent.FirstLine();
    Next(); // coldStart
    ASSERT_EQ(agent.Ask("snmpset", "2c", "private", {kEnable, "i", "1"}).status, 0);
    UdpClient client(agent.Port());
    for (int i = 0; i < 200; ++i)
        client.Send(ber::Message(1, "wrong", 0xa0, i, 0, 0, ""));
    ASSERT_EQ(agent.Ask("snmpget", "2c", "public", {oid::kSysDescr}).status, 0);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(Next(), V2("TRAP2", kSnmpTraps + ".5")) << i;
    EXPECT_LE(daemon.Rest().size(), 1u) << "one more where the machine is slow";
}

TEST_F(Traps, AModuleRaisesNotificationsOfItsEnterprise)
{
    ConfigFile file(Communities() + Sink(daemon.Address()) + Sink(daemon.Address(), kV1) +
                    Sink(daemon.Address(), kInform));
    RunningServer agent(Trapper(store, file));
    ASSERT_TRUE(agent.IsReady()) << agent.FirstLine();
    for (int i = 0; i < 3; ++i)
        Next(); // coldStart
    const std::string own = ".1.3.6.1.4.1.32473.5";
    auto bindings = [&](const std::string& number) {
        return own + ".1.0 = INTEGER: " + number + "\t" + own + ".2.7 = STRING: \"door\"";
    };
    auto raise = [&](const std::string& number) {
        EXPECT_EQ(agent.Ask("snmpset", "2c", "private", {kTrapper, "i", number}).status, 0);
    };
    raise("1");
    EXPECT_EQ(Next(), V2("TRAP2", own + ".0.17", "\t" + bindings("1")));
    EXPECT_EQ(Next(), V1(own, 6, 17, bindings("1")));
    EXPECT_EQ(Next(), V2("INFORM", own + ".0.17", "\t" + bindings("1")));
    raise("2");
    EXPECT_EQ(Next(), V2("TRAP2", own + ".0.18", "\t" + bindings("2")));
    EXPECT_EQ(Next(), V1(own, 6, 18, bindings("2")));
    EXPECT_EQ(Next(), V2("INFORM", own + ".0.18", "\t" + bindings("2")));
    raise("3");
    const std::string large = "\t" + own + ".3.7 = Counter64: 4294967296";
    EXPECT_EQ(Next(), V2("TRAP2", own + ".0.18", "\t" + bindings("3") + large));
    EXPECT_EQ(Next(), V2("INFORM", own + ".0.18", "\t" + bindings("3") + large))
        << "SNMPv1 has no Counter64";
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
}

TEST_F(Traps, ANotifyViewKeepsNotificationsBack)
{
    ConfigFile file(Communities("systemonly") + Sink(daemon.Address()));
    ConfiguredAgent agent(store, file);
    ASSERT_TRUE(agent.IsReady()) << agent.FirstLine();
    ASSERT_EQ(agent.Ask("snmpget", "2c", "public", {oid::kSysDescr}).status, 0);
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
    EXPECT_EQ(agent.Rest(), "vkagentd: did not send 1.3.6.1.6.3.1.1.5.1 to " + daemon.Address() +
                                ": the notify view of its community does not show "
                                "1.3.6.1.6.3.1.1.5.1\n");
    EXPECT_EQ(daemon.Rest(), Arguments());
}

TEST_F(Traps, DeadSinksDelayNoRequest)
{
    BoundPort blackHole; // takes what comes, and never answers
    unsigned closed = BoundPort().Port();
    std::string sinks;
    for (const std::string& more : {std::string(), kV1, std::string("inform = true\n")}) {
        sinks += Sink("udp:127.0.0.1:" + std::to_string(closed), more);
        sinks += Sink("udp:127.0.0.1:" + std::to_string(blackHole.Port()), more);
        sinks += Sink("udp:192.0.2.1:162", more);
    }
    ConfigFile file(Communities() + sinks);
    RunningServer agent(Trapper(store, file));
    ASSERT_TRUE(agent.IsReady()) << agent.FirstLine();
    UdpClient client(agent.Port());
    auto slowest = std::chrono::steady_clock::duration::zero();
    for (int i = 0; i < 200; ++i) {
        if (i % 20 == 0)
            client.Send(ber::Message(1, "private", 0xa3, 1000 + i, 0, 0,
                                     ber::Binding({1, 3, 6, 1, 4, 1, 32473, 5, 1, 0},
                                                  ber::Integer(i % 40 == 0 ? 4 : 1))));
        auto start = std::chrono::steady_clock::now();
        client.Send(
            ber::Message(1, "public", 0xa0, i, 0, 0, ber::Binding({1, 3, 6, 1, 2, 1, 1, 1, 0})));
        ber::Reply reply;
        do
            reply = ber::ReadReply(client.Receive());
        while (reply.ok && reply.requestId != i);
        ASSERT_TRUE(reply.ok) << i;
        slowest = std::max(slowest, std::chrono::steady_clock::now() - start);
    }
    // The shortest wait for a sink would be 15 seconds.
    EXPECT_LT(slowest, std::chrono::seconds(5));
    EXPECT_EQ(agent.Kill(SIGTERM), 0) << "nor does it delay the end";
}
