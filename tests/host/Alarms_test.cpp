// Alarms that managers set with the real tools, heard of at the installed receiver.
#include "ToolAgent.h"
#include "TrapDaemon.h"
#include "UdpClient.h"

#include "Ber.h"

#include <atomic>
#include <thread>

namespace {

const std::string kRmon = ".1.3.6.1.2.1.16.";
const std::string kAlarm = kRmon + "3.1.1.";
const std::string kEvent = kRmon + "9.1.1.";
const std::string kLog = kRmon + "9.2.1.";
const std::string kEnable = ".1.3.6.1.2.1.11.30.0";
const std::string kInPkts = ".1.3.6.1.2.1.11.1.0";

struct SAlarm {
    std::string index;
    std::string variable;
    int sampleType; // absoluteValue(1), deltaValue(2)
    int rising;
    int falling;
};

class Alarms : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(daemon.IsReady());
        ASSERT_TRUE(agent.IsReady()) << agent.FirstLine();
        for (int sink = 0; sink < 3; ++sink)
            ASSERT_FALSE(daemon.Next().empty()) << "coldStart";
    }

    std::string Sinks() const
    {
        const std::string sink =
            "[[trapSink]]\naddress = \"" + daemon.Address() + "\"\ncommunity = \"traps\"\n";
        return "[[community]]\nname = \"traps\"\nnotify = \"everything\"\nsources = []\n" + sink +
               sink + "version = \"1\"\n" + sink + "inform = true\n";
    }
    void Set(const Arguments& what)
    {
        const Outcome set = agent.Set(what);
        ASSERT_EQ(set.status, 0) << set.output;
    }
    // An event that is logged and sent.
    void MakeEvent(const std::string& index, const std::string& description)
    {
        Set({kEvent + "7." + index, "i", "2", kEvent + "3." + index, "i", "4",
             kEvent + "2." + index, "s", description});
        Set({kEvent + "7." + index, "i", "1"});
    }
    // It raises the events 1 and 2, at once and then each second.
    void MakeAlarm(const SAlarm& alarm)
    {
        auto column = [&](int number) {
            return kAlarm + std::to_string(number) + "." + alarm.index;
        };
        Set({column(12), "i", "2",
             column(2),  "i", "1",
             column(3),  "o", alarm.variable,
             column(4),  "i", std::to_string(alarm.sampleType),
             column(6),  "i", "3",
             column(7),  "i", std::to_string(alarm.rising),
             column(8),  "i", std::to_string(alarm.falling),
             column(9),  "i", "1",
             column(10), "i", "2"});
        Set({column(12), "i", "1"});
    }
    // Behind the kind of a notification and the time of SNMPv1.
    static std::string Bindings(const SAlarm& alarm, bool rises, const std::string& value,
                                const std::string& between)
    {
        auto binding = [&](int column, const std::string& text) {
            return kAlarm + std::to_string(column) + "." + alarm.index + " = " + text;
        };
        return binding(1, "INTEGER: " + alarm.index) + between +
               binding(3, "OID: " + alarm.variable) + between +
               binding(4, "INTEGER: " + std::to_string(alarm.sampleType)) + between +
               binding(5, "INTEGER: " + value) + between +
               (rises ? binding(7, "INTEGER: " + std::to_string(alarm.rising))
                      : binding(8, "INTEGER: " + std::to_string(alarm.falling)));
    }
    static bool Ends(const std::string& text, const std::string& end)
    {
        return text.size() >= end.size() &&
               text.compare(text.size() - end.size(), end.size(), end) == 0;
    }
    // Of each sink, in the order of the configuration.
    void ExpectSent(const SAlarm& alarm, bool rises, const std::string& value)
    {
        const std::string specific = rises ? "1" : "2";
        const std::string bindings = Bindings(alarm, rises, value, "\t");
        const std::string v2 =
            "\t.1.3.6.1.6.3.1.1.4.1.0 = OID: " + kRmon + "0." + specific + "\t" + bindings;
        const std::string trap = daemon.Next();
        EXPECT_NE(trap.find("|TRAP2, SNMP v2c"), trap.npos) << trap;
        EXPECT_TRUE(Ends(trap, v2)) << trap << "\nis not " << v2;
        const std::string v1 = daemon.Next();
        EXPECT_NE(v1.find("|.1.3.6.1.2.1.16|6|." + specific + "|"), v1.npos) << v1;
        EXPECT_TRUE(Ends(v1, "|TRAP, SNMP v1, community traps|" + bindings)) << v1;
        const std::string inform = daemon.Next();
        EXPECT_NE(inform.find("|INFORM, SNMP v2c"), inform.npos) << inform;
        EXPECT_TRUE(Ends(inform, v2)) << inform;
    }
    // The descriptions in the log of an event.
    Arguments Logged(const std::string& event) const
    {
        const std::string root = kLog + "4." + event;
        Arguments texts;
        for (const std::string& line : Lines(agent.Ask("snmpwalk", {root}).output)) {
            if (line.compare(0, root.size() + 1, root + ".") == 0)
                texts.push_back(line);
        }
        return texts;
    }

    TrapDaemon daemon;
    ToolAgent agent{Sinks()};
};

// Sends requests for as long as it lives.
class Stream {
public:
    explicit Stream(unsigned port) : m_client(port), m_thread([this] { Run(); }) {}
    ~Stream()
    {
        m_isEnding = true;
        m_thread.join();
    }

private:
    void Run()
    {
        const ber::Bytes get =
            ber::Message(1, "public", 0xa0, 1, 0, 0, ber::Binding({1, 3, 6, 1, 2, 1, 1, 1, 0}));
        while (!m_isEnding) {
            m_client.Send(get);
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }

    UdpClient m_client;
    std::atomic<bool> m_isEnding{false};
    std::thread m_thread;
};

} // namespace

TEST_F(Alarms, EachCrossingIsSentAndLoggedOnce)
{
    const SAlarm alarm{"7", kEnable, 1, 2, 1}; // disabled(2) and enabled(1)
    MakeEvent("1", "off");
    MakeEvent("2", "on");
    MakeAlarm(alarm);
    ExpectSent(alarm, true, "2");
    Set({kEnable, "i", "1"});
    ExpectSent(alarm, false, "1");
    Set({kEnable, "i", "2"});
    ExpectSent(alarm, true, "2");
    EXPECT_EQ(Logged("1").size(), 2u);
    const Arguments on = Logged("2");
    ASSERT_EQ(on.size(), 1u);
    EXPECT_EQ(on[0].find(kLog + "4.2.1 = STRING: "), 0u) << on[0];
    EXPECT_NE(on[0].find("1.3.6.1.2.1.11.30.0"), std::string::npos) << on[0];
    const unsigned long now = agent.Number(".1.3.6.1.2.1.1.3.0");
    const unsigned long sent = agent.Number(kEvent + "5.2");
    EXPECT_GT(sent, 0u);
    EXPECT_LE(sent, now);
    EXPECT_EQ(agent.Number(kLog + "3.2.1"), sent);
    EXPECT_EQ(agent.Value(kAlarm + "5.7"), "2");
    EXPECT_EQ(agent.End(), 0);
    EXPECT_EQ(daemon.Rest(), Arguments()) << "nothing more was sent";
}

TEST_F(Alarms, ACounterThatMovesFasterAndThenNoMore)
{
    const SAlarm alarm{"9", kInPkts, 2, 5, 0};
    MakeEvent("1", "busy");
    MakeEvent("2", "idle");
    MakeAlarm(alarm);
    // A machine that is busy with other things may make breaks: then there are more.
    auto waitFor = [&](const char* notification) {
        const std::string name = " = OID: " + kRmon + "0." + notification + "\t";
        for (std::string line = daemon.Next(); !line.empty(); line = daemon.Next()) {
            if (line.find(name) != line.npos && line.find("|INFORM") != line.npos)
                return line;
        }
        return std::string();
    };
    EXPECT_NE(waitFor("2"), "") << "at first nobody asks";
    {
        Stream stream(agent.Port());
        const std::string busy = waitFor("1");
        const size_t at = busy.find(kAlarm + "5.9 = INTEGER: ");
        ASSERT_NE(at, busy.npos) << busy;
        EXPECT_GE(std::stoi(busy.substr(at + (kAlarm + "5.9 = INTEGER: ").size())), alarm.rising);
    }
    const std::string idle = waitFor("2");
    EXPECT_NE(idle.find(kAlarm + "5.9 = INTEGER: 0\t" + kAlarm + "8.9 = INTEGER: 0"), idle.npos)
        << idle;
    EXPECT_GE(Logged("1").size(), 1u);
    EXPECT_GE(Logged("2").size(), 2u);
}
