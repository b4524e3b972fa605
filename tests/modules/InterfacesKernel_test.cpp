// The real kernel: what the module says of it, and when it says so.
#include "Interfaces.h"

#include "OwnNetwork.h"

#include "tests/support/NoDescriptors.h"
#include "tests/support/TempDir.h"
#include "tests/support/Threads.h"

#include <arpa/inet.h>
#include <cmath>
#include <condition_variable>
#include <dirent.h>
#include <map>
#include <net/if.h>
#include <sys/resource.h>
#include <sys/socket.h>

using namespace VLK;
using namespace VLK::Test;
using namespace VLK::modules;

namespace {

std::map<std::string, SInterface> ByName(const std::vector<SInterface>& links)
{
    std::map<std::string, SInterface> all;
    for (const SInterface& link : links)
        all[link.name] = link;
    return all;
}
std::map<std::string, SInterface> ReadByName() { return ByName(CKernelInterfaces().Read()); }

// The file of sysfs without its newline; empty when it cannot be read.
std::string Sys(const std::string& name, const std::string& file)
{
    std::ifstream stream("/sys/class/net/" + name + "/" + file);
    std::string text;
    // A stream of a file that refuses to be read is empty too, without a word.
    std::getline(stream, text);
    return text;
}

std::vector<std::string> SysNames()
{
    std::vector<std::string> names;
    if (DIR* const directory = opendir("/sys/class/net")) {
        // No other thread has this directory open.
        // cppcheck-suppress readdirCalled
        while (const dirent* entry = readdir(directory)) {
            if (!Sys(entry->d_name, "ifindex").empty())
                names.push_back(entry->d_name);
        }
        closedir(directory);
    }
    return names;
}

// The columns of /proc/net/dev by interface.
std::map<std::string, std::vector<std::uint64_t>> ProcNetDev()
{
    std::map<std::string, std::vector<std::uint64_t>> all;
    std::istringstream lines(ReadFile("/proc/net/dev"));
    for (std::string line; std::getline(lines, line);) {
        const std::size_t colon = line.find(':');
        if (colon == line.npos)
            continue;
        std::istringstream numbers(line.substr(colon + 1));
        auto& row =
            all[line.substr(line.find_first_not_of(' '), colon - line.find_first_not_of(' '))];
        for (std::uint64_t number; numbers >> number;)
            row.push_back(number);
    }
    return all;
}

const std::map<std::string, EIfStatus> kSysStates = {{"unknown", eIfUnknown},
                                                     {"notpresent", eIfNotPresent},
                                                     {"down", eIfDown},
                                                     {"lowerlayerdown", eIfLowerLayerDown},
                                                     {"testing", eIfTesting},
                                                     {"dormant", eIfDormant},
                                                     {"up", eIfUp}};

// Within what was there before and after it was asked.
struct SBetween {
    std::vector<std::uint64_t> before;
    std::vector<std::uint64_t> after;
    void Expect(std::size_t column, CCounter told) const
    {
        ASSERT_TRUE(told) << column;
        EXPECT_GE(*told, before.at(column)) << column;
        EXPECT_LE(*told, after.at(column)) << column;
    }
};

void ExpectCounters(const SBetween& lines, const SIfCounters& counters)
{
    lines.Expect(0, counters.inOctets);
    lines.Expect(2, counters.inErrors);
    lines.Expect(3, counters.inDiscards);
    lines.Expect(7, counters.inMulticastPkts);
    lines.Expect(8, counters.outOctets);
    lines.Expect(10, counters.outErrors);
    lines.Expect(11, counters.outDiscards);
}

void ExpectAsInSys(const SInterface& link)
{
    SCOPED_TRACE(link.name);
    EXPECT_EQ(std::to_string(link.index), Sys(link.name, "ifindex"));
    EXPECT_EQ(std::to_string(link.mtu.value_or(0)), Sys(link.name, "mtu"));
    EXPECT_EQ(link.oper, kSysStates.at(Sys(link.name, "operstate")));
    EXPECT_EQ(link.alias, Sys(link.name, "ifalias"));
    const bool isUp = std::stoul(Sys(link.name, "flags"), nullptr, 16) & 1;
    EXPECT_EQ(link.admin, isUp ? eIfUp : eIfDown);
    if (!link.address.empty()) {
        const BOctetString address(static_cast<unsigned>(link.address.size()),
                                   reinterpret_cast<const unsigned char*>(link.address.data()));
        EXPECT_EQ(address.ToString().c_str(), Sys(link.name, "address"));
    }
    // A file that cannot be read, or has -1, tells no speed.
    const std::string speed = Sys(link.name, "speed");
    if (!speed.empty() && speed != "-1") {
        EXPECT_EQ(link.speed, std::stoull(speed) * 1000000);
    } else {
        EXPECT_EQ(link.speed.value_or(0), 0u);
    }
}

// Something to count on the loopback.
void SendToOneself(int times)
{
    const int from = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(9);
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const std::string datagram(1000, 'x');
    for (int i = 0; i < times; ++i)
        sendto(from, datagram.data(), datagram.size(), 0, reinterpret_cast<sockaddr*>(&to),
               sizeof to);
    close(from);
}

// Asked of the C library, in no way that is tested here.
std::vector<std::string> NamesOfThisNamespace()
{
    std::vector<std::string> names;
    struct if_nameindex* all = if_nameindex();
    for (const struct if_nameindex* at = all; at && at->if_index != 0; ++at)
        names.push_back(at->if_name);
    if (all)
        if_freenameindex(all);
    std::sort(names.begin(), names.end());
    return names;
}

// An interface; false, and the test skipped, where the kernel has none of its kind.
bool IsAdded(const std::string& nameAndType)
{
    const std::string whyNot = Ip("link add " + nameAndType);
    const auto skip = [&] { GTEST_SKIP() << whyNot; };
    if (!whyNot.empty())
        skip();
    return whyNot.empty();
}
bool IsPairAdded() { return IsAdded("left type veth peer name right"); }

// The module on the kernel, and what it sends.
struct SWatching {
    SWatching() { EXPECT_EQ(module.WatchProblem(), ""); }

    bool Comes(const std::string& trap)
    {
        const bool hasCome = Eventually([&] {
            const std::vector<std::string> sent = traps.Sent();
            return std::find(sent.begin(), sent.end(), trap) != sent.end();
        });
        if (!hasCome)
            ADD_FAILURE() << "only " << testing::PrintToString(traps.Sent());
        return hasCome;
    }
    unsigned Ticks(const std::string& name)
    {
        return static_cast<unsigned>(std::stoul(client.Get(name)));
    }

    FakeTraps traps;
    CInterfacesModule module{traps, nullptr, SInterfacesOptions{0}};
    ModuleClient client{module, "1.3.6.1.2.1"};
};

} // namespace

TEST(InterfacesKernel, TellsWhatSysfsTells)
{
    const auto before = ProcNetDev();
    const std::map<std::string, SInterface> all = ReadByName();
    const auto after = ProcNetDev();
    std::vector<std::string> names;
    for (const auto& [name, link] : all)
        names.push_back(name);
    std::vector<std::string> sysNames = SysNames();
    std::sort(sysNames.begin(), sysNames.end());
    if (sysNames != NamesOfThisNamespace())
        GTEST_SKIP() << "/sys is of another network namespace, or not there";
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, sysNames);
    for (const auto& [name, link] : all)
        ExpectAsInSys(link);
    for (const auto& [name, link] : all)
        ExpectCounters({before.at(name), after.at(name)}, link.counters);
}

TEST(InterfacesKernel, TheUptimeIsThatOfSysUpTime)
{
    const auto upTime = [] {
        const std::string text = ReadFile("/proc/uptime");
        return static_cast<unsigned>(std::lround(std::stod(text.substr(0, text.find(' '))) * 100));
    };
    const unsigned before = upTime();
    const unsigned ticks = TicksOf(HostUptime());
    EXPECT_GE(ticks, before);
    EXPECT_LE(ticks, upTime());
}

TEST(InterfacesKernel, CountsTheTrafficOfTheLoopback)
{
    InOwnNetwork([] {
        ASSERT_EQ(Ip("link set lo up"), "");
        const SInterface before = ReadByName().at("lo");
        SendToOneself(50);
        const SInterface after = ReadByName().at("lo");
        EXPECT_GE(*after.counters.inOctets, *before.counters.inOctets + 50000);
        EXPECT_GE(*after.counters.outUcastPkts, *before.counters.outUcastPkts + 50);
        const std::vector<std::uint64_t> line = ProcNetDev().at("lo");
        EXPECT_EQ(after.counters.inOctets, line[0]);
        EXPECT_EQ(after.counters.inUcastPkts, line[1]);
        EXPECT_EQ(after.counters.outOctets, line[8]);
        EXPECT_EQ(after.counters.outUcastPkts, line[9]);
    });
}

TEST(InterfacesKernel, TellsOfTheLoopback)
{
    InOwnNetwork([] {
        SInterface lo = ReadByName().at("lo");
        EXPECT_EQ(lo.index, 1u);
        EXPECT_EQ(lo.type, eIfTypeSoftwareLoopback);
        EXPECT_EQ(lo.admin, eIfDown);
        EXPECT_EQ(lo.oper, eIfDown);
        EXPECT_EQ(lo.address, "");
        EXPECT_EQ(lo.mtu, 65536u);
        EXPECT_EQ(lo.speed, 0u) << "it has none";
        EXPECT_EQ(lo.isPromiscuous, false);
        EXPECT_EQ(lo.hasConnector, false);
        ASSERT_EQ(Ip("link set lo up"), "");
        lo = ReadByName().at("lo");
        EXPECT_EQ(lo.admin, eIfUp);
        EXPECT_EQ(lo.oper, eIfUnknown);
    });
}

TEST(InterfacesKernel, TellsOfWhatIsMade)
{
    InOwnNetwork([] {
        if (!IsPairAdded() || !IsAdded("br0 type bridge"))
            return;
        ASSERT_EQ(Ip("link set left address 02:00:5e:10:00:01 mtu 1400 alias one-end"), "");
        ASSERT_EQ(Ip("link set left master br0"), "");
        const auto all = ReadByName();
        ASSERT_EQ(all.size(), 4u);
        const SInterface& left = all.at("left");
        EXPECT_EQ(left.alias, "one-end");
        EXPECT_EQ(left.address, std::string("\x02\x00\x5e\x10\x00\x01", 6));
        EXPECT_EQ(left.mtu, 1400u);
        EXPECT_EQ(left.type, eIfTypeEthernetCsmacd);
        EXPECT_EQ(left.speed, 10000000000u) << "as ethtool has it";
        EXPECT_EQ(left.hasConnector, false);
        EXPECT_EQ(left.isPromiscuous, true) << "it is the port of a bridge";
        EXPECT_EQ(left.master, all.at("br0").index);
        EXPECT_FALSE(left.hasLowerLayer);
        EXPECT_EQ(all.at("right").isPromiscuous, false);
        EXPECT_EQ(all.at("right").master, 0u);
        EXPECT_FALSE(all.at("right").counters.inUcastPkts);
        EXPECT_EQ(all.at("br0").type, eIfTypeBridge);
    });
}

TEST(InterfacesKernel, TellsOfHundredsInOrder)
{
    InOwnNetwork([] {
        constexpr int kPairs = 100;
        if (!IsAdded("a0 type veth peer name b0"))
            return;
        for (int i = 1; i < kPairs; ++i) {
            const std::string number = std::to_string(i);
            ASSERT_EQ(Ip("link add a" + number + " type veth peer name b" + number), "");
        }
        const std::vector<SInterface> all = CKernelInterfaces().Read();
        ASSERT_EQ(all.size(), 2u * kPairs + 1);
        for (std::size_t i = 1; i < all.size(); ++i)
            ASSERT_LT(all[i - 1].index, all[i].index);
        EXPECT_EQ(ByName(all).size(), all.size());
    });
}

TEST(InterfacesKernel, RaisesWhatHappensToALink)
{
    InOwnNetwork([] {
        SWatching agent;
        EXPECT_EQ(agent.client.Get("31.1.5.0"), "0");
        const unsigned start = TicksOf(HostUptime());
        if (!IsPairAdded())
            return;
        const auto made = ReadByName();
        const unsigned left = made.at("left").index;
        const unsigned right = made.at("right").index;
        const std::string row = "." + std::to_string(left);
        ASSERT_EQ(Ip("link set right up"), "");
        ASSERT_EQ(Ip("link set left up"), "");
        ASSERT_TRUE(agent.Comes(LinkUp(left, eIfUp, eIfUp)));
        ASSERT_TRUE(agent.Comes(LinkUp(right, eIfUp, eIfUp)));
        EXPECT_EQ(agent.client.Get("2.2.1.8" + row), "1");
        const unsigned cameUp = agent.Ticks("2.2.1.9" + row);
        EXPECT_GE(cameUp, start);
        EXPECT_LE(cameUp, TicksOf(HostUptime()));
        EXPECT_GE(agent.Ticks("31.1.5.0"), start);
        EXPECT_GE(agent.Ticks("31.1.1.1.19" + row), start) << "its counters began then";

        ASSERT_EQ(Ip("link set right down"), "");
        ASSERT_TRUE(agent.Comes(LinkDown(right, eIfDown, eIfUp)));
        ASSERT_TRUE(agent.Comes(LinkDown(left, eIfUp, eIfUp)));
        EXPECT_GE(agent.Ticks("2.2.1.9" + row), cameUp);
        EXPECT_EQ(agent.traps.Sent().size(), 4u) << testing::PrintToString(agent.traps.Sent());

        const std::string last = "31.1.1.1.1" + row;
        ASSERT_EQ(Ip("link del left"), "");
        EXPECT_EQ(agent.client.Get(last), "Null/noSuchInstance");
        EXPECT_EQ(agent.client.Get("2.1.0"), "1");
        // Until its message has come it goes just now, whenever that is.
        EXPECT_TRUE(Eventually([&] {
            const unsigned gone = agent.Ticks("31.1.5.0");
            std::this_thread::sleep_for(std::chrono::milliseconds(30));
            return agent.Ticks("31.1.5.0") == gone;
        }));
    });
}

TEST(InterfacesKernel, LeavingABridgeIsNotVanishing)
{
    InOwnNetwork([] {
        if (!IsPairAdded() || !IsAdded("br0 type bridge"))
            return;
        ASSERT_EQ(Ip("link set left master br0"), "");
        ASSERT_EQ(Ip("link set left up"), "");
        SWatching agent;
        ASSERT_EQ(Ip("link set left nomaster"), "");
        // What comes after it has been seen when this has.
        ASSERT_EQ(Ip("link set right up"), "");
        ASSERT_TRUE(agent.Comes(LinkUp(ReadByName().at("left").index, eIfUp, eIfUp)));
        EXPECT_EQ(agent.client.Get("31.1.5.0"), "0");
    });
}

TEST(InterfacesKernel, WhatIsOnTopOfAnotherRaisesNothing)
{
    InOwnNetwork([] {
        if (!IsPairAdded() || !IsAdded("br0 type bridge"))
            return;
        ASSERT_EQ(Ip("link set left master br0"), "");
        ASSERT_EQ(Ip("link set br0 up"), "");
        SWatching agent;
        const std::string bridge = std::to_string(ReadByName().at("br0").index);
        EXPECT_EQ(agent.client.Get("31.1.1.1.14." + bridge), "2");
        ASSERT_EQ(Ip("link set left up"), "");
        ASSERT_EQ(Ip("link set right up"), "");
        ASSERT_TRUE(Eventually([&] { return ReadByName().at("br0").oper == eIfUp; }));
        ASSERT_EQ(Ip("link set br0 down"), "");
        ASSERT_EQ(Ip("link set right down"), "");
        ASSERT_TRUE(agent.Comes(LinkDown(ReadByName().at("right").index, eIfDown, eIfUp)));
        for (const std::string& trap : agent.traps.Sent())
            EXPECT_EQ(trap.find("." + bridge + "="), trap.npos) << trap;
    });
}

TEST(InterfacesKernel, WatchingSleepsEndsAndBeginsAgain)
{
    SWatching agent;
    agent.module.Cleanup();
    agent.module.Cleanup();
    EXPECT_EQ(agent.module.Init(), 4);
    EXPECT_EQ(agent.module.Init(), 4);
    const auto processorTime = [] {
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
               1e-6 * double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
    };
    const double before = processorTime();
    std::this_thread::sleep_for(std::chrono::seconds(1));
    EXPECT_LT(processorTime() - before, 0.1) << "it asks again and again";
}

TEST(InterfacesKernel, WhatHappenedWhileNobodyWatchedIsFound)
{
    InOwnNetwork([] {
        if (!IsPairAdded())
            return;
        ASSERT_EQ(Ip("link set left up"), "");
        ASSERT_EQ(Ip("link set right up"), "");
        ASSERT_TRUE(Eventually([] { return ReadByName().at("left").oper == eIfUp; }));
        SWatching agent;
        agent.module.Cleanup();
        ASSERT_EQ(Ip("link set right down"), "");
        ASSERT_TRUE(Eventually([] { return ReadByName().at("left").oper != eIfUp; }));
        agent.module.Init();
        const unsigned left = ReadByName().at("left").index;
        EXPECT_TRUE(agent.Comes(LinkDown(left, eIfUp, eIfUp)));
        ASSERT_EQ(Ip("link set right up"), "");
        EXPECT_TRUE(agent.Comes(LinkUp(left, eIfUp, eIfUp))) << "and watched again";
    });
}

namespace {

// Holds up whoever sends, until it is let go.
class HeldTraps : public FakeTraps {
public:
    void SendTrap(const BTrap& trap, const char* agentName) override
    {
        FakeTraps::SendTrap(trap, agentName);
        std::unique_lock<std::mutex> lock(m_lock);
        m_free.wait(lock, [this] { return m_isFree; });
    }
    void LetGo()
    {
        std::lock_guard<std::mutex> lock(m_lock);
        m_isFree = true;
        m_free.notify_all();
    }

private:
    std::mutex m_lock;
    std::condition_variable m_free;
    bool m_isFree = false;
};

class CountedKernel : public IInterfaces {
public:
    std::vector<SInterface> Read() override
    {
        ++reads;
        return m_kernel.Read();
    }
    std::atomic<int> reads{0};

private:
    CKernelInterfaces m_kernel;
};

} // namespace

TEST(InterfacesKernel, MessagesThatAreLostAreMadeUpForByComparing)
{
    InOwnNetwork([] {
        if (!IsPairAdded())
            return;
        CountedKernel kernel;
        CLinkHistory history;
        CLinkTrapEnables enables(nullptr);
        HeldTraps held;
        CLinkTraps traps(held, enables);
        CLinkWatch watch(kernel, history, traps, HostUptime);
        watch.Begin();
        ASSERT_EQ(kernel.reads, 1);
        ASSERT_EQ(Ip("link set left up"), "");
        ASSERT_EQ(Ip("link set right up"), "");
        ASSERT_TRUE(Eventually([&] { return !held.Sent().empty(); }));
        // More than a socket keeps, and the last is what counts.
        TempDir directory;
        std::string batch;
        for (int i = 0; i < 3000; ++i)
            batch +=
                "link set left alias " + std::string(200, static_cast<char>('a' + i % 20)) + "\n";
        WriteFile(directory.File("batch"), batch);
        ASSERT_EQ(Ip("-batch " + directory.File("batch")), "");
        ASSERT_EQ(Ip("link add late type veth peer name later"), "");
        ASSERT_EQ(Ip("link set right down"), "");
        const unsigned left = ReadByName().at("left").index;
        held.LetGo();
        ASSERT_TRUE(Eventually([&] { return kernel.reads > 1; })) << "none were lost";
        ASSERT_TRUE(Eventually([&] {
            return held.Sent().back() == LinkDown(left, eIfUp, eIfUp) ||
                   held.Sent().back() == LinkDown(ReadByName().at("right").index, eIfDown, eIfUp);
        })) << testing::PrintToString(held.Sent());
        SSnapshot snapshot;
        for (const SInterface& link : CKernelInterfaces().Read())
            snapshot.rows.push_back(SIfRow{link, false, 0, {}, {}});
        history.Stamp(snapshot, ~0ull);
        EXPECT_NE(snapshot.tableLastChange, ~0ull) << "it knows them all";
    });
}

// As when there is no memory for a message.
TEST(InterfacesKernel, AMessageThatCouldNotBeTakenIsMadeUpForByComparing)
{
    InOwnNetwork([] {
        if (!IsPairAdded())
            return;
        CountedKernel kernel;
        CLinkHistory history;
        CLinkTrapEnables enables(nullptr);
        FakeTraps sent;
        CLinkTraps traps(sent, enables);
        std::atomic<bool> fails{false};
        CLinkWatch watch(kernel, history, traps, [&] {
            if (fails.exchange(false))
                throw std::bad_alloc();
            return HostUptime();
        });
        watch.Begin();
        ASSERT_EQ(Ip("link set left up"), "");
        ASSERT_EQ(Ip("link set right up"), "");
        const unsigned left = ReadByName().at("left").index;
        const auto comes = [&](const std::string& trap) {
            return Eventually([&] {
                const std::vector<std::string> all = sent.Sent();
                return std::find(all.begin(), all.end(), trap) != all.end();
            });
        };
        ASSERT_TRUE(comes(LinkUp(left, eIfUp, eIfUp)));
        ASSERT_EQ(kernel.reads, 1);
        fails = true;
        ASSERT_EQ(Ip("link set right down"), "");
        EXPECT_TRUE(comes(LinkDown(left, eIfUp, eIfUp)));
        EXPECT_TRUE(Eventually([&] { return kernel.reads == 2; }));
        watch.End();
        EXPECT_EQ(kernel.reads, 2) << "once is enough";
    });
}

TEST(InterfacesKernel, WithoutDescriptorsTheyAreServedAndNotWatched)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizer of undefined behaviour needs descriptors itself";
#endif
    SWatching agent;
    agent.module.Cleanup();
    int error = 0;
    {
        const NoDescriptors none;
        EXPECT_EQ(agent.module.Init(), 4);
        try {
            CKernelInterfaces().Read();
        } catch (const std::system_error& failure) {
            error = failure.code().value();
        }
    }
    EXPECT_EQ(agent.module.WatchProblem(), "rtnetlink: Too many open files");
    EXPECT_EQ(error, EMFILE);
    EXPECT_NE(agent.client.Get("2.1.0"), "0") << "ifNumber";
    EXPECT_EQ(agent.module.Init(), 4);
    EXPECT_EQ(agent.module.WatchProblem(), "");
}
