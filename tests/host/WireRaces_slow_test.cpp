// An operator at the console of a running agent against managers over UDP, while it
// reads its configuration again and sends notifications. What a sanitizer finds in the
// agent makes its exit status another one.
#include "PipedAgent.h"
#include "SoakReceiver.h"
#include "WireRaceManager.h"

#include "tests/support/EnvironmentVariable.h"
#include "tests/support/Workers.h"

#include <list>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

using namespace VLK;
using namespace race;

namespace {

// The scalar of the agent's module: what is set says what is sent.
const ber::Oid kTrapper{1, 3, 6, 1, 4, 1, 32473, 5, 1, 0};
enum EWanted { eOneOfTheSecondForm = 2, eOneWithCounter64 = 3, eFlood = 4 };
const ber::Oid kSystem{1, 3, 6, 1, 2, 1, 1};

constexpr const char* kOwners = "1.3.6.1.2.1.1        SNMPv2-MIB.system\n"
                                "  1.3.6.1.2.1.1.8    SNMPv2-MIB.sysORLastChange\n"
                                "  1.3.6.1.2.1.1.9.1  SNMPv2-MIB.sysOREntry\n";

class WireRacesSlow : public testing::Test {
protected:
    WireRacesSlow() : config((WriteConfig(0), directory.File("agent.toml"))), agent(Start()) {}

    std::unique_ptr<PipedAgent> Start() const
    {
        return std::make_unique<PipedAgent>(directory.File("store.db"), Options(), TRAPPING_AGENT);
    }

    Arguments Options() const
    {
        return {"--console", "--config", directory.File("agent.toml"), "--workers", "32"};
    }

    // The community `seer` is shown one of two objects, each time the other one.
    void WriteConfig(long turn) const
    {
        const std::string hidden = turn % 2 ? "1.3.6.1.2.1.1.1" : "1.3.6.1.2.1.1.2";
        const std::string sink =
            "[[trapSink]]\ncommunity = \"notes\"\naddress = \"" + receiver.Address() + "\"\n";
        const std::string other = "[[user]]\nname = \"other\"\nread = \"systemonly\"\n" + sink +
                                  "inform = true\ntimeout = 0.2\nretries = 1\n";
        WriteFile(directory.File("agent.toml"),
                  "snmpEnableAuthenTraps = true\nalarmCommunity = \"notes\"\n"
                  "[[view]]\nname = \"turning\"\ninclude = [\"1.3.6.1.2.1.1\"]\n"
                  "exclude = [\"" +
                      hidden +
                      "\"]\n"
                      "[[community]]\nname = \"seer\"\nread = \"turning\"\n"
                      "[[community]]\nname = \"notes\"\nread = \"everything\"\nsources = []\n"
                      "[[user]]\nname = \"anyone\"\nread = \"everything\"\n" +
                      sink + (turn % 2 ? other : ""));
        chmod(directory.File("agent.toml").c_str(), 0600);
    }

    CManager& Manager(int version, const char* community)
    {
        managers.emplace_back(agent->Port(), version, community);
        return managers.back();
    }

    // --- what the managers do ---

    void Write(CManager& manager, const char* writer, long number)
    {
        manager.SetTexts(TextOf(writer, number));
        manager.ReadTexts();
    }
    void Read(CManager& manager, unsigned& upTime)
    {
        manager.ReadTexts();
        const auto reply = manager.Have(CManager::kGet, ber::Binding(kUpTime));
        if (!reply || reply->tags != std::vector<int>{0x43})
            return;
        const auto now = static_cast<unsigned>(
            ber::Reader("\x43" + ber::Length(reply->values[0].size()) + reply->values[0]).Number());
        EXPECT_GE(now, upTime);
        upTime = now;
    }
    // To the end of what there is. Names increase, texts are those of a writer.
    void Walk(CManager& manager, int pduType, const ber::Oid& from, size_t least)
    {
        ber::Oid last = ArcsOf(ber::Name(from));
        for (size_t found = 0;;) {
            ber::Bytes name = ber::Tlv(6, Encoded(last));
            const auto reply = manager.Have(pduType, ber::Tlv(0x30, name + ber::Tlv(5, "")),
                                            pduType == CManager::kGetBulk ? 40 : 0);
            if (!reply)
                return;
            ASSERT_FALSE(reply->names.empty());
            for (size_t i = 0; i < reply->names.size(); ++i) {
                if (reply->tags[i] == 0x82) {
                    EXPECT_GE(found, least);
                    return;
                }
                const ber::Oid next = ArcsOf(reply->names[i]);
                ASSERT_LT(last, next) << "a walk goes back";
                last = next;
                ++found;
                for (const ber::Oid& text : kTexts) {
                    if (reply->names[i] == ber::Name(text))
                        manager.Witness().Read(reply->values[i]);
                }
            }
            if (pduType == CManager::kGetNext && found > least)
                return;
        }
    }
    // As it was read, the first octet still one.
    static ber::Bytes Encoded(ber::Oid arcs)
    {
        arcs.insert(arcs.begin(), arcs[0] / 40);
        arcs[1] -= 40 * arcs[0];
        return ber::Name(arcs);
    }

    // Which of the two objects the community sees, by a GET of both and by two GETNEXTs
    // in one message: never both, or none.
    void See(CManager& manager)
    {
        const auto both =
            manager.Ask(CManager::kGet, ber::Binding(kDescr) + ber::Binding(kObjectId));
        if (!both)
            return;
        EXPECT_EQ(both->status, 16);
        EXPECT_TRUE(both->index == 1 || both->index == 2) << both->index;
        saw = saw | static_cast<unsigned>(both->index);
        const auto next =
            manager.Have(CManager::kGetNext, ber::Binding(kSystem) + ber::Binding(kSystem));
        if (!next || next->names.size() != 2)
            return;
        EXPECT_TRUE(next->names[0] == ber::Name(kDescr) || next->names[0] == ber::Name(kObjectId));
        EXPECT_EQ(next->names[0], next->names[1]) << "by two views";
    }
    void ReadAgain(CManager& manager, long turn)
    {
        WriteConfig(turn);
        const size_t before = agent->LogSize();
        kill(agent->Pid(), SIGHUP);
        // It waits for a gap between SETs, which others wait for, too.
        bool isRead = false;
        for (int patience = 0; patience < 5 && !isRead; ++patience)
            isRead = agent->Logs("read " + config + " again\n", before);
        EXPECT_TRUE(isRead) << turn;
        const auto both =
            manager.Ask(CManager::kGet, ber::Binding(kDescr) + ber::Binding(kObjectId));
        EXPECT_TRUE(!both || both->index == (turn % 2 ? 1 : 2)) << "not as the file says";
        ++reloads;
    }
    void BeAStranger(CManager& manager)
    {
        manager.Send(ber::Message(1, "stranger", 0xa0, 1, 0, 0, ber::Binding(kDescr)));
        ++strangers;
        manager.ReadTexts(); // the first answer is that to this
    }
    void ReadByUser(CManager& manager)
    {
        v3::Request request;
        request.engineId = request.contextEngineId = engineId;
        request.user = "anyone";
        request.id = static_cast<int>(0x2000 + manager.Asked(CManager::kGet));
        for (const ber::Oid& name : kTexts)
            request.bindings += ber::Binding(name);
        manager.CountOne(CManager::kGet);
        manager.Send(request.Encode());
        const v3::Reply reply = v3::ReadReply(manager.Receive());
        ASSERT_TRUE(reply.ok && reply.pduType == v3::kResponse && reply.status == 0);
        manager.Witness().ReadAll(reply.values);
    }
    void Raise(CManager& manager, long number)
    {
        const int wanted = number % 200 == 199 ? eFlood
                           : number % 2        ? eOneWithCounter64
                                               : eOneOfTheSecondForm;
        manager.Have(CManager::kSet, ber::Binding(kTrapper, ber::Integer(wanted)));
        const auto reply = manager.Have(CManager::kGet, ber::Binding(kTrapper));
        EXPECT_TRUE(!reply || reply->values == std::vector<ber::Bytes>{
                                                   ber::Bytes(1, static_cast<char>(wanted))});
    }
    static void CheckNotification(const ber::Bytes& datagram, std::atomic<long>& notified)
    {
        static const ber::Bytes kUp = ber::Name(kUpTime);
        static const ber::Bytes kTrapOid = ber::Name({1, 3, 6, 1, 6, 3, 1, 1, 4, 1, 0});
        const ber::Reply notification = ber::ReadReply(datagram);
        EXPECT_TRUE(notification.ok && notification.community == "notes" &&
                    (notification.pduType == 0xa7 || notification.pduType == 0xa6));
        EXPECT_TRUE(notification.names.size() >= 2 && notification.names[0] == kUp &&
                    notification.names[1] == kTrapOid);
        ++notified;
    }

    // --- what the operator does ---

    // What a command prints.
    std::string Type(const std::string& command)
    {
        static const std::string kEnd = "q: Terminate application";
        agent->Type(command + "\nhelp q\n");
        std::string text;
        for (int silences = 0; silences < 4;) {
            const std::string line = agent->Line();
            if (line.find(kEnd) != line.npos)
                return text;
            silences += line.empty() ? 1 : 0;
            text += line + "\n";
        }
        ADD_FAILURE() << "the console does not answer " << command << ": " << text;
        return text;
    }
    // What stands behind " = " in lines, of our texts.
    static std::vector<std::string> TextsIn(const std::string& told)
    {
        std::vector<std::string> texts;
        for (const std::string& line : Lines(told)) {
            const size_t at = line.find(" = ");
            for (const char* name :
                 {"1.3.6.1.2.1.1.4.0", "1.3.6.1.2.1.1.5.0", "1.3.6.1.2.1.1.6.0"}) {
                if (at != line.npos && line.find(name) != line.npos)
                    texts.push_back(line.substr(at + 3));
            }
        }
        return texts;
    }
    void Operate(long number)
    {
        const std::string text = TextOf("operator", number);
        std::string set = "set", get = "get";
        for (const char* name :
             {" 1.3.6.1.2.1.1.4.0", " 1.3.6.1.2.1.1.5.0", " 1.3.6.1.2.1.1.6.0"}) {
            set += name + (" 4 " + text);
            get += name;
        }
        EXPECT_EQ(TextsIn(Type(set)), std::vector<std::string>(3, text));
        atConsole.ReadAll(TextsIn(Type(get)));
        const std::vector<std::string> next = TextsIn(Type("getnext 1.3.6.1.2.1.1.4.0"));
        EXPECT_EQ(next.size(), 1u);
        for (const std::string& one : next)
            atConsole.Read(one);
        LookAtLastSet();
        LookAtRights();
        EXPECT_EQ(Type("owners 1.3.6.1.2.1.1"), kOwners);
        EXPECT_EQ(Lines(Type("stats")).at(0).find("requests "), 0u);
        EXPECT_NE(Type("agents"), "");
        EXPECT_NE(Type("agparams trap:" + receiver.Address()), "");
    }
    // Of one SET: the texts are the same, and none of it failed.
    void LookAtLastSet()
    {
        const std::string told = Type("lastset");
        const std::vector<std::string> texts = TextsIn(told);
        if (!texts.empty()) {
            lastSets.ReadAll(texts);
            EXPECT_NE(told.find("commit       bindings 1 to 3 of SNMPv2-MIB.system: done\n"),
                      told.npos)
                << told;
        }
        EXPECT_NE(told.find("answer       Success\n"), told.npos) << told;
    }
    void LookAtRights()
    {
        const std::string told = Type("explain 1.3.6.1.2.1.1.1.0 seer");
        const bool isShown = told.find("read allowed") != told.npos;
        EXPECT_TRUE(isShown || told.find("read refused") != told.npos) << told;
        EXPECT_NE(
            told.find(isShown ? "row 1.3.6.1.2.1.1 included" : "row 1.3.6.1.2.1.1.1 excluded"),
            told.npos)
            << told;
        explained = explained | (isShown ? 1u : 2u);
    }

    // --- what it comes to ---

    // Each writer was read by others, both views were met by who has them and by who
    // explains them, SETs of both sides were told of, and notifications came.
    bool HasMet(const CManager& reader) const
    {
        constexpr unsigned kAll = (1u << kWriters.size()) - 1;
        constexpr unsigned kOperator = 1u << (kWriters.size() - 1);
        return testing::Test::HasFailure() ||
               (reader.Witness().Seen() == kAll && atConsole.Seen() == kAll &&
                lastSets.Seen() > kOperator && saw == 3 && explained == 3 && reloads >= 4 &&
                notified >= 10 && strangers >= 10);
    }
    // The agent has counted what was asked, each once.
    void CheckCounts()
    {
        const Arguments lines = Lines(Type("stats"));
        ASSERT_GE(lines.size(), 6u);
        const int kinds[] = {CManager::kGet, CManager::kGetNext, CManager::kGetBulk,
                             CManager::kSet};
        for (size_t kind = 0; kind < 4; ++kind) {
            std::istringstream words(lines[kind + 1]);
            std::string name;
            long counts[4] = {}; // by the number of the version
            words >> name >> counts[0] >> counts[1] >> counts[3];
            long asked[4] = {};
            for (const CManager& manager : managers)
                asked[manager.Version()] += manager.Asked(kinds[kind]);
            for (int version : {0, 1, 3})
                EXPECT_EQ(counts[version], asked[version]) << name << " of " << version;
        }
        EXPECT_EQ(lines[5].find("unanswered   " + std::to_string(strangers) + " "), 0u) << lines[5];
    }

    // A SET waits for a sync of the disk, and with it all that waits for the SET: on a slow
    // disk the sides would hardly meet.
    const EnvironmentVariable inMemory{
        "TEST_TMPDIR", access("/dev/shm", W_OK) == 0 ? "/dev/shm" : testing::TempDir()};
    TempDir directory;
    // While it stays the same, the C library makes no new text of it: ThreadSanitizer
    // does not know the lock that it has for that.
    const EnvironmentVariable zone{"TZ", ":/etc/localtime"};
    std::atomic<long> notified{0};
    SoakReceiver receiver{[this](const ber::Bytes& one) { CheckNotification(one, notified); }};
    const std::string config;
    std::unique_ptr<PipedAgent> agent;
    std::list<CManager> managers;
    ber::Bytes engineId;
    CWitness atConsole, lastSets;
    std::atomic<unsigned> saw{0}, explained{0};
    std::atomic<long> reloads{0}, strangers{0};
};

} // namespace

TEST_F(WireRacesSlow, OperatorAgainstManagersOverUdp)
{
    ASSERT_TRUE(agent->IsReady()) << agent->LogText();
    CManager& one = Manager(1, "private");
    CManager& two = Manager(1, "private");
    CManager& old = Manager(0, "private");
    CManager& reader = Manager(1, "public");
    CManager& walker = Manager(1, "public");
    CManager& seer = Manager(1, "seer");
    CManager& hangup = Manager(1, "seer");
    CManager& stranger = Manager(1, "public");
    CManager& user = Manager(3, "");
    CManager& raiser = Manager(1, "private");
    one.SetTexts(TextOf("one", 0));
    user.Send(v3::Request().Encode());
    engineId = v3::ReadReply(user.Receive()).engineId;
    ASSERT_FALSE(engineId.empty());

    unsigned upTime = 0;
    VLK::Test::Workers workers(VLK::Test::RaceTime(), [&] { return HasMet(reader); });
    const auto add = [&](const char* name, const std::function<void(long)>& step) {
        workers.Add(name, [step, n = 1L]() mutable {
            if (!testing::Test::HasFailure())
                step(n++);
        });
    };
    add("manager one", [&](long n) { Write(one, "one", n); });
    add("manager two", [&](long n) { Write(two, "two", n); });
    add("manager in SNMPv1", [&](long n) { Write(old, "old", n); });
    add("reader", [&](long) { Read(reader, upTime); });
    add("walks", [&](long n) {
        Walk(walker, n % 8 ? CManager::kGetNext : CManager::kGetBulk,
             n % 8 ? kSystem : ber::Oid{1, 3}, 20);
    });
    add("seer", [&](long) { See(seer); });
    add("hangups", [&](long n) { ReadAgain(hangup, n); });
    add("stranger", [&](long) { BeAStranger(stranger); });
    add("user", [&](long) { ReadByUser(user); });
    add("notifications", [&](long n) { Raise(raiser, n); });
    add("receiver", [&](long) {
        receiver.Wait(10);
        receiver.TakeAll();
    });
    add("operator", [&](long n) { Operate(n); });
    workers.Join();
    std::printf("notifications: %ld, acknowledged: %d\n", notified.load(), receiver.Answered());
    ASSERT_FALSE(HasFailure()) << agent->LogText();

    CheckCounts();
    one.SetTexts(TextOf("two", 1));
    EXPECT_EQ(TextsIn(Type("get 1.3.6.1.2.1.1.4.0")), std::vector<std::string>{TextOf("two", 1)});
    EXPECT_EQ(agent->Kill(SIGTERM), 0) << agent->LogText();
    agent = Start();
    ASSERT_TRUE(agent->IsReady()) << agent->LogText();
    EXPECT_EQ(TextsIn(Type("get 1.3.6.1.2.1.1.4.0")), std::vector<std::string>{TextOf("two", 1)});
    EXPECT_EQ(agent->Kill(SIGTERM), 0) << agent->LogText();
}
