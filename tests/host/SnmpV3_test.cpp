// SNMPv3 as real clients and crafted datagrams see it.
#include "RunningAgent.h"
#include "UdpProxy.h"
#include "V3Message.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/Threads.h"

#include <csignal>
#include <sys/stat.h>

using namespace VLK;

namespace {

const ber::Oid kSysDescr{1, 3, 6, 1, 2, 1, 1, 1, 0};
const std::string kDescr = "Velkoran agent";

const std::string kUsers = R"(
contexts = ["bridge"]
agentAddress = "udp:127.0.0.1:0"

[[user]]
name = "anyone"
read = "systemonly"

[[user]]
name = "signer"
auth = "SHA-384"
authPassphrase = "the signer's word"
read = "systemonly"

[[user]]
name = "reader"
auth = "SHA-256"
authPassphrase = "the reader's word"
priv = "AES"
privPassphrase = "the reader's other word"
read = "everything"

[[user]]
name = "writer"
auth = "SHA-512"
authPassphrase = "the writer's word"
priv = "AES"
privPassphrase = "the writer's other word"
read = "everything"
write = "everything"

[[user]]
name = "an \"odd\" \\ one"
auth = "SHA"
authPassphrase = 'a "quoted" \ word # and more'
priv = "AES-256"
privPassphrase = 'another \" word'

[[user]]
name = "bridger"
auth = "SHA-256"
authPassphrase = "the bridger's word"

[[group]]
name = "odd ones"
members = [{ securityName = "an \"odd\" \\ one", securityModel = "USM" }]

[[group]]
name = "bridgers"
members = [{ securityName = "bridger", securityModel = "USM" }]

[[access]]
group = "odd ones"
securityModel = "USM"
securityLevel = "authPriv"
read = "systemonly"

[[access]]
group = "bridgers"
context = "bridge"
securityLevel = "authNoPriv"
read = "everything"
)";

// How a client says who he is.
Arguments NoAuth(const std::string& user) { return {"-v3", "-l", "noAuthNoPriv", "-u", user}; }

Arguments Auth(const std::string& user, const std::string& protocol, const std::string& passphrase)
{
    return {"-v3", "-l", "authNoPriv", "-u", user, "-a", protocol, "-A", passphrase};
}

Arguments Priv(const std::string& user, const std::string& protocol, const std::string& passphrase,
               const std::string& privPassphrase, const std::string& priv = "AES")
{
    return {"-v3", "-l",       "authPriv", "-u", user, "-a",          protocol,
            "-A",  passphrase, "-x",       priv, "-X", privPassphrase};
}

Arguments Reader()
{
    return Priv("reader", "SHA-256", "the reader's word", "the reader's other word");
}
Arguments Writer()
{
    return Priv("writer", "SHA-512", "the writer's word", "the writer's other word");
}
Arguments Bridger() { return Auth("bridger", "SHA-256", "the bridger's word"); }

class SnmpV3 : public testing::Test {
protected:
    void Start(const Arguments& more = {}, const char* program = VKAGENTD)
    {
        WriteFile(m_config, m_text);
        chmod(m_config.c_str(), 0600);
        Arguments line{program, "--store", m_directory.File("store.db"), "--config", m_config};
        line.insert(line.end(), more.begin(), more.end());
        m_agent = std::make_unique<RunningServer>(line);
        ASSERT_TRUE(m_agent->IsReady()) << m_agent->FirstLine();
    }
    Outcome AskAt(const std::string& address, const std::string& tool, const Arguments& who,
                  const Arguments& rest) const
    {
        Arguments line{tool};
        line.insert(line.end(), who.begin(), who.end());
        line.insert(line.end(), {"-On", "-r", "1", "-t", "10", address});
        line.insert(line.end(), rest.begin(), rest.end());
        return m_agent->Tools().Run(line);
    }
    Outcome Ask(const std::string& tool, const Arguments& who, const Arguments& rest) const
    {
        return AskAt(m_agent->Address(), tool, who, rest);
    }
    Outcome Get(const Arguments& who) const { return Ask("snmpget", who, {oid::kSysDescr}); }
    void ExpectData(const Arguments& who) const
    {
        Outcome get = Get(who);
        EXPECT_EQ(get.status, 0) << get.output;
        EXPECT_EQ(get.output, oid::kSysDescr + " = STRING: \"" + kDescr + "\"\n");
    }
    void ExpectNoData(const Arguments& who, const std::string& why) const
    {
        Outcome get = Get(who);
        EXPECT_NE(get.status, 0);
        EXPECT_NE(get.output.find(why), std::string::npos) << get.output;
        EXPECT_EQ(get.output.find(kDescr), std::string::npos) << get.output;
    }
    v3::Reply Exchange(const ber::Bytes& datagram) const
    {
        UdpClient client(m_agent->Port());
        EXPECT_TRUE(client.Send(datagram));
        return v3::ReadReply(client.Receive());
    }
    // The report on a message that knows no engine ID.
    v3::Reply Discover() const { return Exchange(v3::Request().Encode()); }
    v3::Request Anyone() const
    {
        v3::Request request;
        request.engineId = request.contextEngineId = Discover().engineId;
        request.user = "anyone";
        request.bindings = ber::Binding(kSysDescr);
        return request;
    }
    // The last message of a client that asks for sysDescr.
    std::string Recorded(const Arguments& who) const
    {
        UdpProxy proxy(m_agent->Port());
        Outcome get = AskAt(proxy.Address(), "snmpget", who, {oid::kSysDescr});
        EXPECT_EQ(get.status, 0) << get.output;
        std::vector<std::string> sent = proxy.End();
        return sent.empty() ? "" : sent.back();
    }
    void Restart(int signalNumber, const Arguments& more = {})
    {
        m_agent->Kill(signalNumber);
        Start(more);
    }
    // The value alone.
    std::string Value(const std::string& name) const
    {
        Arguments who = Reader();
        who.push_back("-Oqv");
        return Ask("snmpget", who, {name}).output;
    }

    TempDir m_directory;
    std::string m_config = m_directory.File("agent.toml");
    std::string m_text = kUsers;
    std::unique_ptr<RunningServer> m_agent;
};

} // namespace

TEST_F(SnmpV3, EveryLevelIsAnswered)
{
    Start();
    ExpectData(NoAuth("anyone"));
    ExpectData(Auth("signer", "SHA-384", "the signer's word"));
    ExpectData(Reader());
    ExpectData(Writer());
    ExpectData(Priv("an \"odd\" \\ one", "SHA", "a \"quoted\" \\ word # and more",
                    "another \\\" word", "AES-256"));
}

TEST_F(SnmpV3, IsAnsweredOverIPv6)
{
    if (!HasLoopbackV6())
        GTEST_SKIP() << "no IPv6 on this machine";
    Start({"--listen", "udp6:[::1]:0"});
    for (const Arguments& who : {NoAuth("anyone"), Reader(), Writer()})
        ExpectData(who);
}

TEST_F(SnmpV3, WhoeverIsNotWhoHeSaysGetsNoData)
{
    Start();
    ExpectNoData(NoAuth("nobody"), "Unknown user name");
    ExpectNoData(Auth("nobody", "SHA-256", "the reader's word"), "Unknown user name");
    ExpectNoData(Auth("signer", "SHA-384", "another's word"), "Authentication failure");
    ExpectNoData(Auth("signer", "SHA-512", "the signer's word"), "Authentication failure");
    ExpectNoData(Priv("reader", "SHA-256", "another's word", "the reader's other word"),
                 "Authentication failure");
    ExpectNoData(Priv("signer", "SHA-384", "the signer's word", "whatever it is"),
                 "Unsupported security level");
}

TEST_F(SnmpV3, AWrongPrivacyKeyGetsNoData)
{
    Start();
    Arguments line = Priv("reader", "SHA-256", "the reader's word", "another's word");
    line.insert(line.begin(), "snmpget");
    line.insert(line.end(), {"-r", "0", "-t", "1", m_agent->Address(), oid::kSysDescr});
    Outcome get = m_agent->Tools().Run(line);
    EXPECT_NE(get.status, 0);
    EXPECT_EQ(get.output.find(kDescr), std::string::npos) << get.output;
    EXPECT_EQ(Value(".1.3.6.1.2.1.11.6.0"), "1\n") << "a parse error";
    ExpectData(Reader());
}

TEST_F(SnmpV3, ALevelBelowTheUsersGetsNoData)
{
    Start();
    ExpectNoData(NoAuth("signer"), "authorizationError");
    ExpectNoData(NoAuth("reader"), "authorizationError");
    ExpectNoData(Auth("reader", "SHA-256", "the reader's word"), "authorizationError");
    Outcome walk = Ask("snmpwalk", NoAuth("reader"), {oid::kSystem});
    EXPECT_EQ(walk.output.find(kDescr), std::string::npos) << walk.output;
    Outcome set = Ask("snmpset", NoAuth("writer"), {oid::kSysContact, "s", "x"});
    EXPECT_NE(set.output.find("noAccess"), std::string::npos) << set.output;
}

TEST_F(SnmpV3, SetsAndWalksAsTheViewsAllow)
{
    Start();
    Outcome refused = Ask("snmpset", Reader(), {oid::kSysContact, "s", "x"});
    EXPECT_NE(refused.output.find("noAccess"), std::string::npos) << refused.output;
    Outcome set = Ask("snmpset", Writer(), {oid::kSysContact, "s", "somebody"});
    EXPECT_EQ(set.status, 0);
    EXPECT_EQ(set.output, oid::kSysContact + " = STRING: \"somebody\"\n");
    Outcome read = Ask("snmpget", Reader(), {oid::kSysContact});
    EXPECT_EQ(read.output, set.output);
    Arguments walk = Lines(Ask("snmpwalk", Reader(), {oid::kSystem}).output);
    Arguments bulk = Lines(Ask("snmpbulkwalk", Reader(), {oid::kSystem}).output);
    ASSERT_GT(walk.size(), 8u + 3) << "sysORTable has three columns";
    EXPECT_EQ((walk.size() - 8) % 3, 0u);
    ASSERT_EQ(bulk.size(), walk.size());
    for (size_t i = 0; i < walk.size(); ++i)
        EXPECT_EQ(walk[i].substr(0, walk[i].find(' ')), bulk[i].substr(0, bulk[i].find(' ')));
}

TEST_F(SnmpV3, ContextsAreThoseOfTheMessage)
{
    Start();
    Arguments who = Bridger();
    ExpectNoData(who, "authorizationError");
    who.insert(who.end(), {"-n", "bridge"});
    ExpectData(who);
    who.back() = "brid";
    ExpectNoData(who, "Bad context specified");
    v3::Request request = Anyone();
    request.context = "brid";
    EXPECT_TRUE(Exchange(request.Encode()).Reports(v3::kUnknownContexts));
}

TEST_F(SnmpV3, DiscoveryTellsTheEngineAndNothingElse)
{
    Start();
    v3::Request request;
    request.bindings = ber::Binding(kSysDescr);
    for (const char* user : {"", "anyone", "reader"}) {
        request.user = user;
        v3::Reply reply = Exchange(request.Encode());
        EXPECT_TRUE(reply.Reports(v3::kUnknownEngineIds));
        EXPECT_EQ(reply.engineId.substr(0, 5), std::string("\x80\x00\x7e\xd9\x05", 5));
        EXPECT_EQ(reply.boots, 1);
    }
}

// The operator at the console has that name, and this model.
TEST_F(SnmpV3, TheEmptyNameIsNobodys)
{
    Start();
    v3::Request request = Anyone();
    ASSERT_EQ(Exchange(request.Encode()).values, std::vector<ber::Bytes>{kDescr});
    request.user = "";
    EXPECT_TRUE(Exchange(request.Encode()).Reports(v3::kUnknownUserNames));
    request.pduType = v3::kSet;
    EXPECT_TRUE(Exchange(request.Encode()).Reports(v3::kUnknownUserNames));
}

TEST_F(SnmpV3, OtherEnginesContextsAndOtherPdusAreNotServed)
{
    Start();
    v3::Request request = Anyone();
    request.contextEngineId += "x";
    EXPECT_TRUE(Exchange(request.Encode()).Reports(v3::kUnknownPduHandlers));
    request.contextEngineId = "";
    EXPECT_TRUE(Exchange(request.Encode()).Reports(v3::kUnknownPduHandlers));
    request = Anyone();
    request.pduType = v3::kInform;
    EXPECT_TRUE(Exchange(request.Encode()).Reports(v3::kUnknownPduHandlers));
}

TEST_F(SnmpV3, NothingIsReportedToWhoDoesNotAskForIt)
{
    Start();
    v3::Request request = Anyone();
    UdpClient client(m_agent->Port());
    for (const char* context : {"brid", ""}) {
        request.context = context;
        request.flags = 0;
        ASSERT_TRUE(client.Send(request.Encode()));
    }
    v3::Reply first = v3::ReadReply(client.Receive());
    EXPECT_EQ(first.pduType, v3::kResponse) << "only the good one is answered";
}

TEST_F(SnmpV3, AnswersAreNoLongerThanTheManagerTakes)
{
    Start();
    v3::Request request = Anyone();
    request.maxSize = 484;
    request.pduType = v3::kGetBulk;
    request.second = 100;
    UdpClient client(m_agent->Port());
    ASSERT_TRUE(client.Send(request.Encode()));
    std::string answer = client.Receive();
    EXPECT_LE(answer.size(), 484u);
    EXPECT_GT(answer.size(), 350u);
    EXPECT_EQ(v3::ReadReply(answer).status, 0);

    request.pduType = v3::kGet;
    request.second = 0;
    request.bindings = "";
    for (int i = 0; i < 40; ++i)
        request.bindings += ber::Binding(kSysDescr);
    ASSERT_TRUE(client.Send(request.Encode()));
    answer = client.Receive();
    EXPECT_LE(answer.size(), 484u);
    EXPECT_EQ(v3::ReadReply(answer).status, 1) << "tooBig";
    EXPECT_TRUE(v3::ReadReply(answer).values.empty());

    request.pduType = v3::kSet;
    ASSERT_TRUE(client.Send(request.Encode()));
    answer = client.Receive();
    EXPECT_LE(answer.size(), 484u);
    EXPECT_EQ(v3::ReadReply(answer).status, 1) << "tooBig";
}

TEST_F(SnmpV3, TheEngineStaysAndItsBootsRise)
{
    Start();
    v3::Reply first = Discover();
    EXPECT_EQ(first.boots, 1);
    int boots = 1;
    for (int signalNumber : {SIGTERM, SIGKILL, SIGKILL, SIGTERM}) {
        Restart(signalNumber);
        v3::Reply reply = Discover();
        EXPECT_EQ(reply.engineId, first.engineId);
        EXPECT_EQ(reply.boots, ++boots);
    }
    Restart(SIGTERM, {"--reset-store"});
    EXPECT_EQ(Discover().engineId, first.engineId);
    EXPECT_EQ(Discover().boots, ++boots);
}

TEST_F(SnmpV3, AMessageFromBeforeARestartGetsNoData)
{
    Start();
    const std::string recorded = Recorded(Auth("signer", "SHA-384", "the signer's word"));
    EXPECT_EQ(Exchange(recorded).values, std::vector<ber::Bytes>{kDescr}) << "within the window";
    Restart(SIGKILL);
    UdpClient client(m_agent->Port());
    ASSERT_TRUE(client.Send(recorded));
    const std::string answer = client.Receive();
    EXPECT_TRUE(v3::ReadReply(answer).Reports(v3::kNotInTimeWindows));
    EXPECT_EQ(answer.find(kDescr), std::string::npos);
}

TEST_F(SnmpV3, ARecordedSetIsDoneNoMoreAfterARestart)
{
    Start();
    std::string recorded;
    {
        UdpProxy proxy(m_agent->Port());
        Outcome set = AskAt(proxy.Address(), "snmpset", Writer(), {oid::kSysContact, "s", "old"});
        EXPECT_EQ(set.status, 0) << set.output;
        recorded = proxy.End().back();
    }
    EXPECT_EQ(Ask("snmpset", Writer(), {oid::kSysContact, "s", "new"}).status, 0);
    Restart(SIGKILL);
    UdpClient client(m_agent->Port());
    ASSERT_TRUE(client.Send(recorded));
    EXPECT_FALSE(client.Receive().empty());
    EXPECT_NE(Ask("snmpget", Reader(), {oid::kSysContact}).output.find("\"new\""),
              std::string::npos);
}

TEST_F(SnmpV3, AForgedMessageCountsNeitherAsVersionNorAsParseError)
{
    Start();
    const char* const kBadVersions = ".1.3.6.1.2.1.11.3.0";
    const char* const kParseErrors = ".1.3.6.1.2.1.11.6.0";
    ExpectNoData(Auth("signer", "SHA-384", "another's word"), "Authentication failure");
    EXPECT_EQ(Value(kBadVersions), "0\n");
    EXPECT_EQ(Value(kParseErrors), "0\n");
    std::string cut = Anyone().Encode();
    UdpClient client(m_agent->Port());
    ASSERT_TRUE(client.Send(cut.substr(0, cut.size() - 1)));
    ber::Bytes wide = ber::Tlv(6, "\x2b\x90\x80\x80\x80\x01") + ber::Tlv(5, "");
    v3::Request request = Anyone();
    request.bindings = ber::Tlv(0x30, wide);
    ASSERT_TRUE(client.Send(request.Encode()));
    EXPECT_EQ(Value(kParseErrors), "2\n");
}

TEST_F(SnmpV3, SwitchedOffItIsABadVersion)
{
    m_text = "v3 = false\n" + kUsers;
    Start({"--community", "public:ro"});
    UdpClient client(m_agent->Port());
    ASSERT_TRUE(client.Send(v3::Request().Encode()));
    Outcome versions = m_agent->Ask("snmpget", "2c", "public", {".1.3.6.1.2.1.11.3.0"}, {"-Oqv"});
    EXPECT_EQ(versions.output, "1\n");
    EXPECT_EQ(client.Receive(200), "");
}

TEST_F(SnmpV3, NoFileIsWrittenBesideTheStore)
{
    std::string home = m_directory.File("home");
    ASSERT_TRUE(std::filesystem::create_directory(home));
    const EnvironmentVariable itsHome("HOME", home);
    {
        const EnvironmentVariable persistent("SNMP_PERSISTENT_DIR", home + "/persistent");
        Start();
    }
    ExpectData(Reader());
    EXPECT_EQ(m_agent->Kill(SIGTERM), 0);
    EXPECT_TRUE(std::filesystem::is_empty(home));
}

TEST_F(SnmpV3, TenThousandRequestsLeaveTheMemoryAsItWas)
{
    Start();
    const std::string recorded = Recorded(Reader());
    const std::string wrong = [&] {
        std::string forged = recorded;
        forged[forged.size() / 2] ^= 1;
        return forged;
    }();
    UdpClient client(m_agent->Port());
    auto ask = [&](int count) {
        for (int i = 0; i < count; ++i) {
            ASSERT_TRUE(client.Send(i % 4 == 3 ? wrong : recorded));
            ASSERT_FALSE(client.Receive().empty());
        }
    };
    auto resident = [&] {
        std::ifstream status("/proc/" + std::to_string(m_agent->Pid()) + "/status");
        for (std::string word; status >> word;) {
            long value = 0;
            if (word == "VmRSS:" && status >> value)
                return value;
        }
        return -1l;
    };
    ask(1000);
    const long before = resident();
    ASSERT_GT(before, 0);
    ask(10000);
#if !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__) // they keep what is freed
    EXPECT_LT(resident() - before, 1024);
#endif
    EXPECT_EQ(m_agent->Kill(SIGTERM), 0);
}

// Each answer is signed and encrypted for the one who asked.
TEST_F(SnmpV3, SlowModulesAnswerTheUserWhoAsked)
{
    Start({"--workers", "8"}, SLOW_AGENT);
    const std::string slow = ".1.3.6.1.4.1.32473.6.1.";
    const Arguments users[] = {Reader(), Writer()};
    Outcome outcomes[6];
    std::vector<std::thread> clients;
    for (size_t i = 0; i < 6; ++i) {
        clients.emplace_back([&, i] {
            outcomes[i] = Ask("snmpget", users[i % 2], {slow + std::to_string(i + 1) + ".0"});
        });
    }
    EXPECT_TRUE(Eventually([&] { return Value(".1.3.6.1.4.1.32473.6.3.0") == "6\n"; }));
    kill(m_agent->Pid(), SIGUSR1);
    for (size_t i = 0; i < 6; ++i) {
        clients[i].join();
        EXPECT_EQ(outcomes[i].output, slow + std::to_string(i + 1) + ".0 = INTEGER: 1\n");
    }
}
