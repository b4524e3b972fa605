// A store that cannot be written, or was damaged: no SET is half done, nothing is
// thrown away without a word, and what can be read is.
#include "host/HostError.h"
#include "host/SavingHandler.h"
#include "host/Store.h"

#include "Ber.h"
#include "FailingVfs.h"
#include "RunningAgent.h"
#include "UdpClient.h"
#include "tests/support/Seed.h"

#include <random>
#include <sys/resource.h>
#include <vkmibh/system.h>

using namespace VLK;
using namespace VLK::host;

namespace {

constexpr const char* kContact = "1.3.6.1.2.1.1.4.0";
constexpr const char* kLocation = "1.3.6.1.2.1.1.6.0";

// The system group over a store, without the wire.
class Kept {
public:
    explicit Kept(const std::string& file) : store(file), handler(nullptr, store)
    {
        time.RecordStartTime();
        handler.Init(&time, &store);
    }

    int Set(const std::string& text)
    {
        BVarBindList list;
        for (const char* name : {kContact, kLocation}) {
            list.Append(BObjectIdentifier(BString(name)));
            list.Last().Value().SetOctets(BOctetString(BString(text.c_str())));
        }
        return handler.Query(ePduSet, 0, BSecurityParams(), BString(), list, index);
    }
    std::string Get(const char* name = kContact)
    {
        BVarBindList list;
        list.Append(BObjectIdentifier(BString(name)));
        int ignored = 0;
        handler.Query(ePduGet, 0, BSecurityParams(), BString(), list, ignored);
        return list[0].Value().ValToStr().c_str();
    }

    BStore store;
    BTime time;
    BSavingHandler handler;
    int index = -1;
};

class BadStorage : public testing::Test {
protected:
    // Each write of a SET that fails, one after the other; how many there are.
    int FailEachWrite(Kept& kept, int code, bool forGood)
    {
        for (int after = 0;; ++after) {
            const std::string before = kept.Get();
            const std::string wanted = "text " + std::to_string(++m_sets);
            FailingVfs::FailAfter(after, code, forGood);
            const int status = kept.Set(wanted);
            FailingVfs::Stop();
            // What fails behind the end of the transaction need not be the SET's matter.
            const std::string now = status == eSnmpNoError ? wanted : before;
            EXPECT_TRUE(status == eSnmpNoError || status == eSnmpCommitFailed) << status;
            EXPECT_EQ(kept.Get(), now);
            EXPECT_EQ(kept.Get(kLocation), now);
            // A disk that fails for good when it is to sync has all of the SET that it
            // refused, or nothing; until the next one is kept.
            const std::string found = ReadBack();
            EXPECT_TRUE(found == now || (forGood && found == wanted))
                << found << " and not " << now << " at " << after << ", status " << status;
            if (status == eSnmpCommitFailed) {
                EXPECT_EQ(kept.index, 2);
                ++m_refused;
            }
            if (FailingVfs::Failures() == 0 || HasFailure())
                return after;
            EXPECT_EQ(kept.Set("between"), eSnmpNoError) << "it has recovered";
        }
    }

    // What a restart after a kill would find.
    std::string ReadBack()
    {
        const std::string copy = directory.File("copy.db");
        for (const char* part : {"", "-wal"}) {
            std::filesystem::remove(copy + part);
            if (std::filesystem::exists(file + part))
                std::filesystem::copy(file + part, copy + part);
        }
        return Kept(copy).Get();
    }

    TempDir directory;
    std::string file = directory.File("store.db");
    int m_sets = 0;
    int m_refused = 0;
};

// More rows than SQLite keeps in memory up to the end of a transaction. Goes on behind
// a failure, as those may who have many to write.
class ManyRows : public INVCallback {
public:
    static constexpr int kRows = 800;

    explicit ManyRows(BStore& store) : m_store(store) {}
    int Update() override
    {
        int status = 0;
        m_store.OpenSection("rows");
        for (int row = 0; row < kRows; ++row) {
            const std::string key = std::to_string(row);
            const BString text(std::string(4000, letter).c_str());
            status |= m_store.SetString("rows", key.c_str(), text, 0, 0);
        }
        return status;
    }

    char letter = 'a';

private:
    BStore& m_store;
};

// The letter of all rows, or why there is none.
std::string LetterOf(BStore& store)
{
    std::string letters;
    const int count = store.GetRecordCount("rows");
    if (count != ManyRows::kRows)
        return std::to_string(count) + " rows";
    for (int row = 0; row < count; ++row) {
        BString text;
        store.GetString("rows", std::to_string(row).c_str(), text, 0);
        const std::string letter(text.c_str(), text.empty() ? 0 : 1);
        if (letters.find(letter) == letters.npos)
            letters += letter;
    }
    return letters;
}

// Of a request that is answered.
int Status(const UdpClient& client, const ber::Bytes& request)
{
    EXPECT_TRUE(client.Send(request));
    return ber::ReadReply(client.Receive(20000)).status;
}

ber::Bytes Set(const ber::Bytes& bindings)
{
    return ber::Message(1, "private", 0xa3, 1, 0, 0, bindings);
}

ber::Bytes Contact(const std::string& text)
{
    return ber::Binding({1, 3, 6, 1, 2, 1, 1, 4, 0}, ber::Tlv(4, text));
}

// eventStatus.7
ber::Bytes Event(int status)
{
    return ber::Binding({1, 3, 6, 1, 2, 1, 16, 9, 1, 1, 7, 7}, ber::Integer(status));
}

// vacmViewTreeFamilyStatus of 1.3.7 in the view "w".
ber::Bytes View(int status)
{
    return ber::Binding({1, 3, 6, 1, 6, 3, 16, 1, 5, 2, 1, 6, 1, 'w', 3, 1, 3, 7},
                        ber::Integer(status));
}

size_t CountOf(const std::string& text, const std::string& part)
{
    size_t count = 0;
    for (size_t at = 0; (at = text.find(part, at)) != text.npos; at += part.size())
        ++count;
    return count;
}

std::string ValueOf(const RunningServer& agent, const std::string& name)
{
    return agent.Ask("snmpget", "2c", "public", {name}, {"-Oqv"}).output;
}

void ExpectSetsToFail(const RunningServer& agent)
{
    const UdpClient client(agent.Port());
    const std::string before = ValueOf(agent, oid::kSysContact);
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(Status(client, Set(Contact("lost") + Event(2) + View(4))), 14);
    EXPECT_EQ(ValueOf(agent, oid::kSysContact), before);
    for (const char* status :
         {".1.3.6.1.2.1.16.9.1.1.7.7", ".1.3.6.1.6.3.16.1.5.2.1.6.1.119.3.1.3.7"})
        EXPECT_NE(ValueOf(agent, status).find("No Such Instance"), std::string::npos) << status;
    EXPECT_EQ(ValueOf(agent, oid::kSysDescr), "\"Velkoran agent\"\n");
}

void ExpectSetsToWork(const RunningServer& agent)
{
    const UdpClient client(agent.Port());
    EXPECT_EQ(Status(client, Set(Contact("kept") + Event(2) + View(4))), 0);
    EXPECT_EQ(Status(client, Set(Event(1))), 0);
    EXPECT_EQ(ValueOf(agent, oid::kSysContact), "\"kept\"\n");
}

} // namespace

TEST_F(BadStorage, NoWriteThatFailsLeavesHalfOfASet)
{
    const FailingVfs vfs;
    Kept kept(file);
    ASSERT_EQ(kept.Set("first"), eSnmpNoError);
    for (int code : {SQLITE_FULL, SQLITE_READONLY, SQLITE_IOERR_WRITE, SQLITE_IOERR_FSYNC}) {
        for (bool forGood : {false, true}) {
            SCOPED_TRACE(std::to_string(code) + (forGood ? " for good" : " once"));
            EXPECT_GT(FailEachWrite(kept, code, forGood), 1) << "writes of a SET";
        }
    }
    EXPECT_GE(m_refused, 16);
}

// However many objects it has; reading costs none.
TEST_F(BadStorage, ASetThatIsAcknowledgedHasBeenSyncedOnce)
{
    const FailingVfs vfs;
    Kept kept(file);
    ASSERT_EQ(kept.Set("first"), eSnmpNoError);
    for (int i = 0; i < 20; ++i) {
        const int before = FailingVfs::Syncs();
        ASSERT_EQ(kept.Set("text " + std::to_string(i)), eSnmpNoError);
        EXPECT_EQ(FailingVfs::Syncs() - before, 1);
        EXPECT_EQ(kept.Get(), "text " + std::to_string(i));
        EXPECT_EQ(FailingVfs::Syncs() - before, 1);
    }
}

TEST_F(BadStorage, NoWriteThatFailsAmidAnUpdateLeavesHalfOfIt)
{
    const FailingVfs vfs;
    BStore store(file);
    ManyRows rows(store);
    store.RequestUpdate(&rows);
    ASSERT_EQ(LetterOf(store), "a");
    rows.letter = 'b';
    for (int code : {SQLITE_FULL, SQLITE_IOERR_WRITE}) {
        for (int after : {0, 1, 40, 200}) {
            SCOPED_TRACE(std::to_string(code) + " after " + std::to_string(after));
            FailingVfs::FailAfter(after, code, false);
            store.Hold();
            store.RequestUpdate(&rows);
            EXPECT_FALSE(store.SaveHeld());
            EXPECT_EQ(FailingVfs::Failures(), 1);
            FailingVfs::Stop();
            EXPECT_EQ(LetterOf(store), "a");
        }
    }
    store.RequestUpdate(&rows);
    EXPECT_EQ(LetterOf(store), "b");
}

// A limit of the size of files is a full disk to the agent.
TEST_F(BadStorage, WhileItIsFullSetsAreRefusedAndThenWorkAgain)
{
    EXPECT_EQ(RunningAgent(file).Kill(SIGTERM), 0);
    {
        RunningAgent agent(file);
        ASSERT_TRUE(agent.IsReady()) << agent.FirstLine();
        rlimit whole = {};
        ASSERT_EQ(prlimit(agent.Pid(), RLIMIT_FSIZE, nullptr, &whole), 0);
        for (int round = 0; round < 2; ++round) {
            const rlimit full{100, whole.rlim_max};
            ASSERT_EQ(prlimit(agent.Pid(), RLIMIT_FSIZE, &full, nullptr), 0);
            ExpectSetsToFail(agent);
            ASSERT_EQ(prlimit(agent.Pid(), RLIMIT_FSIZE, &whole, nullptr), 0);
            ExpectSetsToWork(agent);
            const UdpClient client(agent.Port());
            EXPECT_EQ(Status(client, Set(Event(4) + View(6))), 0);
        }
        ExpectSetsToWork(agent);
        EXPECT_EQ(agent.Kill(SIGKILL), 128 + SIGKILL);
        const std::string log = agent.Rest();
        EXPECT_EQ(CountOf(log, "the store cannot be written"), 2u) << log;
        EXPECT_EQ(CountOf(log, "the store can be written again"), 2u) << log;
    }
    RunningAgent agent(file);
    EXPECT_EQ(ValueOf(agent, oid::kSysContact), "\"kept\"\n");
    EXPECT_EQ(ValueOf(agent, ".1.3.6.1.2.1.16.9.1.1.7.7"), "1\n");
    EXPECT_EQ(ValueOf(agent, ".1.3.6.1.6.3.16.1.5.2.1.6.1.119.3.1.3.7"), "1\n");
}

namespace {

// The agent on a small file system of its own, which root and others may make.
class SmallDisk : public BadStorage {
protected:
    void SetUp() override
    {
        const Outcome allowed =
            RunToEnd({"unshare", "-rm", "mount", "-t", "tmpfs", "none", directory.Path()});
        if (allowed.status != 0)
            GTEST_SKIP() << "no mount namespace is permitted: " << allowed.output;
    }
    Arguments Line(const std::string& prepare) const
    {
        return {"unshare", "-rm", "sh", "-c",
                "mount -t tmpfs -o size=256k none " + directory.Path() + " && " + prepare +
                    " exec " VKAGENTD " --store " + file +
                    " --listen udp:127.0.0.1:0 --community public:ro --community private:rw"};
    }
    // As the agent sees it.
    std::string Inside(const RunningServer& agent, const std::string& name) const
    {
        return "/proc/" + std::to_string(agent.Pid()) + "/root" + directory.File(name);
    }
};

} // namespace

TEST_F(SmallDisk, WhileItHasNoRoomSetsAreRefusedAndThenWorkAgain)
{
    RunningServer agent(Line(""));
    ASSERT_TRUE(agent.IsReady()) << agent.Earlier() << agent.FirstLine();
    ExpectSetsToWork(agent);
    const UdpClient client(agent.Port());
    EXPECT_EQ(Status(client, Set(Event(4) + View(6))), 0);
    {
        std::ofstream filler(Inside(agent, "filler"), std::ios::binary);
        for (int i = 0; i < 300 && filler.flush(); ++i)
            filler << std::string(1024, 'x');
    }
    // The log may have some room left that it had before.
    int status = 0;
    for (int i = 0; i < 200 && status == 0; ++i)
        status = Status(client, Set(Contact("full soon " + std::to_string(i))));
    EXPECT_EQ(status, 14);
    ExpectSetsToFail(agent);
    std::filesystem::remove(Inside(agent, "filler"));
    ExpectSetsToWork(agent);
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
    const std::string log = agent.Rest();
    EXPECT_EQ(CountOf(log, "the store cannot be written"), 1u) << log;
    EXPECT_EQ(CountOf(log, "the store can be written again"), 1u) << log;
}

TEST_F(SmallDisk, ThatMayOnlyBeReadIsOneLineAndStatusOne)
{
    for (bool isThere : {false, true}) {
        const std::string make =
            "timeout 60 sh -c '" VKAGENTD " --store " + file +
            " --listen udp:127.0.0.1:0 & until [ -s " + file +
            "-wal ]; do sleep 0.05; done; sleep 0.3; kill $!; wait $!' 2>/dev/null; ";
        const Outcome outcome = RunToEnd(
            Line((isThere ? make : "") + "mount -o remount,ro " + directory.Path() + " &&"));
        EXPECT_EQ(outcome.status, eExitStore) << outcome.output;
        EXPECT_EQ(Lines(outcome.output).size(), 1u) << outcome.output;
        EXPECT_NE(outcome.output.find("store " + file), std::string::npos) << outcome.output;
    }
}

TEST_F(BadStorage, ADamagedFileIsRefusedOrWhole)
{
    const unsigned seed = VLK::Test::Seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    {
        Kept kept(file);
        ASSERT_EQ(kept.Set(std::string(200, 'c')), eSnmpNoError);
    }
    const std::string whole = ReadFile(file);
    int refused = 0;
    for (int i = 0; i < 300; ++i) {
        std::string damaged = whole;
        const size_t at = random() % damaged.size();
        const size_t count = std::min<size_t>(1 + random() % 600, damaged.size() - at);
        for (size_t octet = at; octet < at + count; ++octet)
            damaged[octet] = static_cast<char>(random());
        WriteFile(file, damaged);
        std::filesystem::remove(file + "-wal");
        try {
            Kept kept(file);
            kept.store.RequireRead();
            kept.Get();
            kept.Set("goes on");
        } catch (const BHostError& error) {
            ++refused;
            EXPECT_EQ(error.Status(), eExitStore);
            EXPECT_NE(std::string(error.what()).find("store"), std::string::npos);
            EXPECT_TRUE(ReadFile(file) == damaged) << "it was changed";
        }
    }
    EXPECT_GT(refused, 10);
}

TEST_F(BadStorage, DamageWhileItRunsStopsNoReading)
{
    for (const char* part : {"", "-wal"}) {
        RunningAgent agent(file);
        ASSERT_TRUE(agent.IsReady()) << agent.FirstLine();
        ExpectSetsToWork(agent);
        {
            std::fstream spoiled(file + part, std::ios::binary | std::ios::in | std::ios::out);
            const auto size = std::filesystem::file_size(file + part);
            spoiled << std::string(size, '\x5a');
        }
        const UdpClient client(agent.Port());
        int refused = 0;
        for (int i = 0; i < 300; ++i) {
            const int status = Status(client, Set(Contact("damaged " + std::to_string(i))));
            EXPECT_TRUE(status == 0 || status == 14) << status;
            refused += status != 0;
            const std::string text = "\"damaged " + std::to_string(i) + "\"\n";
            if (i % 100 == 0) {
                EXPECT_EQ(ValueOf(agent, oid::kSysContact) == text, status == 0);
            }
        }
        EXPECT_EQ(agent.Kill(SIGTERM), 0);
        const std::string log = agent.Rest();
        EXPECT_LE(CountOf(log, "the store cannot be written"), static_cast<size_t>(refused)) << log;
        EXPECT_LE(CountOf(log, "the store cannot be written"), 1u) << log;
        std::filesystem::remove(file);
        std::filesystem::remove(file + "-wal");
    }
}
