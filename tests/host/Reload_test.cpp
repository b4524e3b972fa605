// SIGHUP: the configuration is read again, while requests come.
#include "Ber.h"
#include "ReloadingAgent.h"
#include "TrapDaemon.h"
#include "UdpClient.h"

#include <atomic>
#include <filesystem>
#include <thread>

using namespace VLK;

namespace {

const std::string kPublic = "[[community]]\nname = \"public\"\nread = \"everything\"\n";
const std::string kBoss =
    "[[community]]\nname = \"boss\"\nread = \"everything\"\nwrite = \"everything\"\n";
const std::string kAuthenTraps = ".1.3.6.1.2.1.11.30.0";

std::string View(const std::string& name, const std::string& subtree)
{
    return "[[view]]\nname = \"" + name + "\"\ninclude = [\"" + subtree + "\"]\n";
}

std::string User(const std::string& name, const std::string& passphrase,
                 const std::string& protocol = "SHA-256")
{
    return "[[user]]\nname = \"" + name + "\"\nauth = \"" + protocol + "\"\nauthPassphrase = \"" +
           passphrase + "\"\nread = \"everything\"\n";
}

bool Knows(const ReloadingAgent& agent, const std::string& user, const std::string& passphrase)
{
    return agent.Tools()
               .Run({"snmpget", "-v3", "-l", "authNoPriv", "-u", user, "-a", "SHA-256", "-A",
                     passphrase, "-On", "-r", "0", "-t", "10", agent.Address(), oid::kSysDescr})
               .status == 0;
}

std::string ValueOf(const ReloadingAgent& agent, const std::string& name)
{
    return agent.Ask("snmpget", "public", {name}, {"-Oqv"}).output;
}

long Resident(pid_t pid)
{
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    for (std::string word; status >> word;) {
        long value = 0;
        if (word == "VmRSS:" && status >> value)
            return value;
    }
    return -1;
}

long Descriptors(pid_t pid)
{
    const std::filesystem::directory_iterator all("/proc/" + std::to_string(pid) + "/fd");
    return std::distance(begin(all), end(all));
}

} // namespace

TEST(Reload, CommunitiesComeGoAndChange)
{
    ReloadingAgent agent(kPublic + "[[community]]\nname = \"old\"\nread = \"everything\"\n");
    ASSERT_TRUE(agent.IsReady()) << agent.LogText();
    EXPECT_TRUE(agent.Shows("public", oid::kSysDescr));
    EXPECT_TRUE(agent.Shows("old", oid::kSysDescr));
    EXPECT_EQ(agent.Reload("[[community]]\nname = \"public\"\nread = \"\"\n"
                           "[[community]]\nname = \"new\"\nread = \"everything\"\n"),
              Arguments{agent.ReadAgain()});
    EXPECT_FALSE(agent.Shows("public", oid::kSysDescr));
    EXPECT_TRUE(agent.Shows("new", oid::kSysDescr));
    EXPECT_FALSE(agent.Ask("snmpget", "old", {oid::kSysDescr}, {"-r", "0", "-t", "0.5"}).status ==
                 0);
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
}

TEST(Reload, ViewsGroupsAccessAndContextsAreThoseOfTheFile)
{
    const std::string members = "[[group]]\nname = \"few\"\nmembers = [\"one\"]\n";
    const std::string one = "[[community]]\nname = \"one\"\n";
    ReloadingAgent agent(View("v", "1.3.6.1.2.1.1.1") + one + members +
                         "[[access]]\ngroup = \"few\"\nread = \"v\"\n");
    ASSERT_TRUE(agent.IsReady()) << agent.LogText();
    EXPECT_TRUE(agent.Shows("one", oid::kSysDescr));
    EXPECT_FALSE(agent.Shows("one", oid::kSysName));
    agent.Reload(View("v", "1.3.6.1.2.1.1.5") + one + members +
                 "[[access]]\ngroup = \"few\"\nread = \"v\"\n");
    EXPECT_FALSE(agent.Shows("one", oid::kSysDescr)) << "the view is another";
    EXPECT_TRUE(agent.Shows("one", oid::kSysName));
    agent.Reload(View("v", "1.3.6.1.2.1.1.5") + one + members +
                 "[[access]]\ngroup = \"few\"\nread = \"everything\"\n");
    EXPECT_TRUE(agent.Shows("one", oid::kSysDescr)) << "the access entry is another";
    agent.Reload("contexts = [\"c\"]\n[[community]]\nname = \"one\"\ncontext = \"c\"\n" + members +
                 "[[access]]\ngroup = \"few\"\nread = \"everything\"\n");
    EXPECT_FALSE(agent.Shows("one", oid::kSysDescr)) << "the entry is not for that context";
    agent.Reload("contexts = [\"c\"]\n[[community]]\nname = \"one\"\ncontext = \"c\"\n" + members +
                 "[[access]]\ngroup = \"few\"\ncontext = \"c\"\nread = \"everything\"\n");
    EXPECT_TRUE(agent.Shows("one", oid::kSysDescr));
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
}

TEST(Reload, MistakesAreAllToldAndTheOldFileStays)
{
    ReloadingAgent agent(kPublic);
    ASSERT_TRUE(agent.IsReady()) << agent.LogText();
    EXPECT_EQ(agent.Reload("[[community]]\nname = \"x\"\nread = \"nowhere\"\n"
                           "[[community]]\nname = \"y\"\nreed = \"everything\"\nwrite = \"\"\n"),
              (Arguments{agent.Config() + ":4: read 'nowhere' is no view",
                         agent.Config() + ":7: 'reed' is no key of [[community]], which has name, "
                                          "securityName, context, sources, read, write, notify",
                         "the configuration stays as it was"}));
    EXPECT_TRUE(agent.Shows("public", oid::kSysDescr));
    std::filesystem::remove(agent.Config());
    EXPECT_EQ(agent.Reload(), (Arguments{agent.Config() + ": No such file or directory",
                                         "the configuration stays as it was"}));
    EXPECT_TRUE(agent.Shows("public", oid::kSysDescr));
    EXPECT_EQ(agent.Reload(kPublic), Arguments{agent.ReadAgain()});
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
}

TEST(Reload, OptionsStillGoBeforeTheFile)
{
    ReloadingAgent agent("", {"--community", "mine:ro"});
    ASSERT_TRUE(agent.IsReady()) << agent.LogText();
    EXPECT_EQ(agent.Reload("[[community]]\nname = \"mine\"\nread = \"\"\n"),
              (Arguments{"--community: 'mine' is a community of " + agent.Config() + " too",
                         "the configuration stays as it was"}));
    EXPECT_EQ(agent.Reload(kPublic), Arguments{agent.ReadAgain()});
    EXPECT_TRUE(agent.Shows("mine", oid::kSysDescr));
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
}

TEST(Reload, TheSameFileChangesNothing)
{
    ReloadingAgent agent(kPublic + View("v", "1.3.6.1.2.1.1") +
                         "[[trapSink]]\naddress = "
                         "\"udp:127.0.0.1:9\"\ncommunity = "
                         "\"public\"\n");
    ASSERT_TRUE(agent.IsReady()) << agent.LogText();
    const std::string inPkts = ".1.3.6.1.2.1.11.1.0";
    const int before = std::stoi(ValueOf(agent, inPkts));
    const std::string views = agent.Ask("snmpwalk", "public", {".1.3.6.1.6.3.16.1.5.2"}).output;
    EXPECT_EQ(agent.Reload(), Arguments{agent.ReadAgain()});
    EXPECT_GT(std::stoi(ValueOf(agent, inPkts)), before);
    EXPECT_EQ(agent.Ask("snmpwalk", "public", {".1.3.6.1.6.3.16.1.5.2"}).output, views);
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
}

TEST(Reload, WithoutAFileThereIsNothingToRead)
{
    TempDir directory;
    Process agent({VKAGENTD, "--store", directory.File("store.db"), "--listen", "udp:127.0.0.1:0"});
    EXPECT_NE(agent.Line().find("ready on"), std::string::npos);
    kill(agent.Pid(), SIGHUP);
    EXPECT_EQ(agent.Line(), "vkagentd: there is no configuration file to read again");
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
    EXPECT_EQ(agent.Rest(), "");
}

TEST(Reload, UsersComeGoAndChangeTheirPassphrases)
{
    ReloadingAgent agent(User("stays", "the one that stays") + User("changes", "the first word") +
                         User("goes", "the one that goes"));
    ASSERT_TRUE(agent.IsReady()) << agent.LogText();
    EXPECT_TRUE(Knows(agent, "stays", "the one that stays"));
    EXPECT_TRUE(Knows(agent, "changes", "the first word"));
    EXPECT_TRUE(Knows(agent, "goes", "the one that goes"));
    EXPECT_EQ(agent.Reload(User("stays", "the one that stays") +
                           User("changes", "the second word") + User("comes", "the new word")),
              Arguments{agent.ReadAgain()});
    EXPECT_TRUE(Knows(agent, "stays", "the one that stays"));
    EXPECT_FALSE(Knows(agent, "changes", "the first word"));
    EXPECT_TRUE(Knows(agent, "changes", "the second word"));
    EXPECT_FALSE(Knows(agent, "goes", "the one that goes"));
    EXPECT_TRUE(Knows(agent, "comes", "the new word"));
    EXPECT_EQ(agent.Reload(kPublic),
              (Arguments{"the end of SNMPv3 takes effect at the next start", agent.ReadAgain()}));
    EXPECT_FALSE(Knows(agent, "stays", "the one that stays"));
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
}

TEST(Reload, AnotherStoreNeedsAStart)
{
    TempDir directory;
    const std::string file = directory.File("agent.toml");
    const std::string first = directory.File("first.db");
    const std::string second = directory.File("second.db");
    const auto write = [&](const std::string& store) {
        WriteFile(file, "agentAddress = \"udp:127.0.0.1:0\"\nstore = \"" + store + "\"\n");
    };
    write(first);
    Process agent({VKAGENTD, "--config", file});
    ASSERT_NE(agent.Line().find("ready on"), std::string::npos);
    write(second);
    kill(agent.Pid(), SIGHUP);
    EXPECT_EQ(agent.Line(), "vkagentd: store takes effect at the next start");
    EXPECT_EQ(agent.Line(), "vkagentd: read " + file + " again");
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
    EXPECT_NE(ReadFile(first), "");
    EXPECT_EQ(ReadFile(second), "") << "it is not there";
}

TEST(Reload, WhatNeedsAStartIsSaidEachTime)
{
    ReloadingAgent agent(kPublic);
    ASSERT_TRUE(agent.IsReady()) << agent.LogText();
    WriteFile(agent.Config(), "agentAddress = \"udp:127.0.0.2:0\"\nstore = \"/nowhere/else.db\"\n"
                              "workers = 7\n" +
                                  kPublic + User("u", "the word of it"));
    const Arguments told{"agentAddress takes effect at the next start",
                         "workers takes effect at the next start",
                         "SNMPv3 takes effect at the next start", agent.ReadAgain()};
    EXPECT_EQ(agent.Reload(), told) << "the option goes before the store of the file";
    EXPECT_EQ(agent.Reload(), told);
    EXPECT_TRUE(agent.Shows("public", oid::kSysDescr));
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
}

TEST(Reload, ViewsThatManagersHaveChangedStay)
{
    const std::string first =
        View("v", "1.3.6.1.2.1.1.1") + kBoss + "[[community]]\nname = \"one\"\nread = \"v\"\n";
    ReloadingAgent agent(first);
    ASSERT_TRUE(agent.IsReady()) << agent.LogText();
    // 1.3.6.1.2.1.1.5 in the view "v".
    ASSERT_EQ(
        agent
            .Ask("snmpset", "boss", {".1.3.6.1.6.3.16.1.5.2.1.6.1.118.8.1.3.6.1.2.1.1.5", "i", "4"})
            .status,
        0);
    EXPECT_EQ(agent.Reload(View("v", "1.3.6.1.2.1.1.6") + kBoss +
                           "[[community]]\nname = \"one\"\nread = \"v\"\n"),
              (Arguments{"views are as managers have set them, not as in " + agent.Config() +
                             "; --reset-store returns to the file",
                         agent.ReadAgain()}));
    EXPECT_TRUE(agent.Shows("one", oid::kSysName));
    EXPECT_FALSE(agent.Shows("one", oid::kSysLocation));
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
}

TEST(Reload, AuthenTrapsAreTheFilesUntilAManagerSetsThem)
{
    ReloadingAgent agent(kPublic + kBoss);
    ASSERT_TRUE(agent.IsReady()) << agent.LogText();
    EXPECT_EQ(ValueOf(agent, kAuthenTraps), "2\n");
    agent.Reload("snmpEnableAuthenTraps = true\n" + kPublic + kBoss);
    EXPECT_EQ(ValueOf(agent, kAuthenTraps), "1\n");
    agent.Reload(kPublic + kBoss);
    EXPECT_EQ(ValueOf(agent, kAuthenTraps), "2\n");
    ASSERT_EQ(agent.Ask("snmpset", "boss", {kAuthenTraps, "i", "2"}).status, 0);
    EXPECT_EQ(agent.Reload("snmpEnableAuthenTraps = true\n" + kPublic + kBoss),
              (Arguments{"snmpEnableAuthenTraps is as managers have set it, not as in " +
                             agent.Config() + "; --reset-store returns to the file",
                         agent.ReadAgain()}));
    EXPECT_EQ(ValueOf(agent, kAuthenTraps), "2\n");
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
}

TEST(Reload, AlarmsReadInTheNameOfTheNewCommunity)
{
    ReloadingAgent agent(kBoss);
    ASSERT_TRUE(agent.IsReady()) << agent.LogText();
    const std::string alarm = ".1.3.6.1.2.1.16.3.1.1.";
    auto create = [&](const std::string& index) {
        return agent.Ask(
            "snmpset", "boss",
            {alarm + "12." + index, "i", "2", alarm + "3." + index, "o", ".1.3.6.1.2.1.11.1.0"});
    };
    EXPECT_NE(create("1").status, 0);
    agent.Reload("alarmCommunity = \"boss\"\n" + kBoss);
    const Outcome created = create("2");
    EXPECT_EQ(created.status, 0) << created.output;
    agent.Reload(kBoss);
    EXPECT_NE(create("3").status, 0);
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
}

// A receiver that was there before is told nothing of the reading.
TEST(Reload, NotificationsGoToTheSinksOfTheFile)
{
    TrapDaemon old;
    TrapDaemon added;
    ASSERT_TRUE(old.IsReady());
    ASSERT_TRUE(added.IsReady());
    auto sink = [](const TrapDaemon& daemon) {
        return "[[trapSink]]\naddress = \"" + daemon.Address() + "\"\ncommunity = \"traps\"\n";
    };
    const std::string start = "snmpEnableAuthenTraps = true\n"
                              "[[community]]\nname = \"traps\"\nnotify = \"everything\"\n";
    ReloadingAgent agent(start + sink(old));
    ASSERT_TRUE(agent.IsReady()) << agent.LogText();
    EXPECT_EQ(agent.Reload(start + sink(old) + sink(added)), Arguments{agent.ReadAgain()});
    UdpClient(agent.Port()).Send(ber::Message(1, "x", 0xa0, 1, 0, 0, ber::Binding({1, 3})));
    const std::string traps = ".1.3.6.1.6.3.1.1.5.";
    const std::string first = added.Next();
    EXPECT_NE(first.find(traps + "5"), first.npos) << "no start: " << first;
    for (const char* trap : {"1", "5"}) {
        const std::string next = old.Next();
        EXPECT_NE(next.find(traps + trap), next.npos) << next;
    }
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
}

TEST(Reload, TheLevelOfTheLogIsThatOfTheFile)
{
    ReloadingAgent agent(kPublic);
    ASSERT_TRUE(agent.IsReady()) << agent.LogText();
    const Arguments set{oid::kSysContact, "s", "x"};
    EXPECT_NE(agent.Ask("snmpset", "public", set).status, 0);
    EXPECT_TRUE(agent.Logs("refused set of"));
    agent.Reload("logLevel = \"notice\"\n" + kPublic);
    const size_t before = agent.LogText().size();
    EXPECT_NE(agent.Ask("snmpset", "public", set).status, 0);
    agent.Reload();
    EXPECT_EQ(agent.LogText().substr(before), "vkagentd: " + agent.ReadAgain() + "\n");
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
}

TEST(Reload, SighupDuringTheStartIsHeardAfterIt)
{
    TempDir directory;
    const std::string pipe = directory.File("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    Process agent({VKAGENTD, "--store", directory.File("store.db"), "--config", pipe});
    // Waits until the agent opens it, whose signals are blocked then.
    std::ofstream text(pipe);
    kill(agent.Pid(), SIGHUP);
    text << "agentAddress = \"udp:127.0.0.1:0\"\n" + kPublic;
    text.close();
    EXPECT_EQ(agent.Line().find("vkagentd: ready on udp:127.0.0.1:"), 0u);
    EXPECT_EQ(agent.Line(), "vkagentd: " + pipe + ": is no regular file, and not read again");
    EXPECT_EQ(agent.Line(), "vkagentd: the configuration stays as it was");
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
}

TEST(Reload, SighupThatWasIgnoredAtTheStartIsHeardAllTheSame)
{
    TempDir directory;
    const std::string config = directory.File("agent.toml");
    WriteFile(config, "agentAddress = \"udp:127.0.0.1:0\"\n" + kPublic);
    Process agent({"env", "--ignore-signal=HUP", VKAGENTD, "--store", directory.File("store.db"),
                   "--config", config});
    EXPECT_EQ(agent.Line().find("vkagentd: ready on "), 0u);
    kill(agent.Pid(), SIGHUP);
    EXPECT_EQ(agent.Line(), "vkagentd: read " + config + " again");
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
}

// Two configurations take turns. Each request finds one of them, whole.
TEST(Reload, AHundredUnderTrafficLoseNoRequestAndLeakNothing)
{
    auto text = [](bool isOdd) {
        return View("v", isOdd ? "1.3.6.1.2.1.1.1" : "1.3.6.1.2.1.1.5") +
               "[[community]]\nname = \"one\"\nread = \"v\"\n" +
               User("u", isOdd ? "the odd passphrase" : "the even passphrase");
    };
    ReloadingAgent agent(text(false));
    ASSERT_TRUE(agent.IsReady()) << agent.LogText();
    std::atomic<bool> isOver{false};
    std::atomic<int> lost{0};
    std::atomic<int> mixed{0};
    std::atomic<int> seen[2] = {{0}, {0}};
    std::thread traffic([&] {
        const UdpClient client(agent.Port());
        // Both names at once: GETNEXT steps over the one that is not shown.
        const ber::Bytes bindings =
            ber::Binding({1, 3, 6, 1, 2, 1, 1, 1}) + ber::Binding({1, 3, 6, 1, 2, 1, 1, 1});
        const std::string descr = ber::ObjectId({1, 3, 6, 1, 2, 1, 1, 1, 0});
        for (int id = 1; !isOver; ++id) {
            if (!client.Send(ber::Message(1, "one", 0xa1, id, 0, 0, bindings)))
                ++lost;
            const std::string answer = client.Receive(20000);
            const size_t first = answer.find(descr);
            const bool both = first != answer.npos && answer.find(descr, first + 1) != answer.npos;
            if (answer.empty())
                ++lost;
            else if ((first != answer.npos) != both)
                ++mixed;
            ++seen[both];
        }
    });
    const int warm = 20;
    long resident = 0;
    long descriptors = 0;
    for (int i = 1; i <= warm + 100; ++i) {
        agent.Reload(text(i % 2 != 0));
        if (i == warm) {
            resident = Resident(agent.Pid());
            descriptors = Descriptors(agent.Pid());
        }
    }
    EXPECT_TRUE(Eventually([&] { return seen[0] > 0; }));
    isOver = true;
    traffic.join();
    EXPECT_EQ(lost, 0);
    EXPECT_EQ(mixed, 0);
    EXPECT_GT(seen[0], 0);
    EXPECT_GT(seen[1], 0);
    EXPECT_LT(Descriptors(agent.Pid()), descriptors + 20) << "some come and go";
#if !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__) // they keep what is freed
    EXPECT_LT(Resident(agent.Pid()) - resident, 4096) << "with what late threads take";
#else
    (void)resident;
#endif
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
}
