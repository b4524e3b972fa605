// A store that saves on a thread of its own, against SETs of which some fail and
// are undone, and against a host that changes the same values.
#include "tests/support/CallbackHandler.h"
#include "tests/support/FakeStore.h"
#include "tests/support/ViewRows.h"
#include "tests/support/Workers.h"
#include <vkmibh/testing/requests.h>

#include <gtest/gtest.h>

namespace VLK {
namespace Test {
namespace {

constexpr char kContact[] = "1.3.6.1.2.1.1.4.0";
constexpr char kRefused[] = "1.3.9.1";
constexpr char kViews[] = "views";

// Notes that it is asked; saves when its thread comes to it.
class AskedStore : public FakeStore {
public:
    void RequestUpdate(INVCallback* callback) override
    {
        wanted = callback;
        ++asked;
    }
    std::atomic<INVCallback*> wanted{nullptr};
    std::atomic<long> asked{0};
};

class StoreRacesSlow : public ::testing::Test {
protected:
    StoreRacesSlow() : views(&store, kViews), handler(nullptr), failing("1.3.9")
    {
        handler.Init(nullptr, &store);
        failing.onSet = [](unsigned, const BVarBindList&, ESnmpSetOpCode op, int&) {
            return op == eSetCommit ? eSnmpCommitFailed : eSnmpNoError;
        };
        EXPECT_TRUE(handler.RegisterSubtreeHandler(&failing));
        EXPECT_TRUE(Insert(views, {"all", "1.3"}));
    }
    ~StoreRacesSlow() override
    {
        handler.UnregisterSubtreeHandler(&failing);
        g_bSerializeSet = true;
    }

    // Texts of a setter's own, short and long in turn.
    static std::string TextOfStep(const char* who, long step)
    {
        return step % 2 ? who : who + std::string(60, '.');
    }
    static bool IsTextOf(const char* who, const std::string& text)
    {
        return text == TextOfStep(who, 0) || text == TextOfStep(who, 1);
    }

    // Every third one fails in its commit phase.
    void Set(Client& client, const char* name, const char* who, long step)
    {
        BVarBindList list;
        BObjectSyntax text;
        text.SetOctets(BString(TextOfStep(who, step).c_str()));
        list.Append(MakeOid(name), text);
        if (step % 3 == 0)
            list.Append(MakeOid(kRefused), text);
        ASSERT_EQ(step % 3 ? eSnmpNoError : eSnmpCommitFailed, client.Query(ePduSet, list));
    }
    void SetFrom(Workers& workers, const char* name, const char* who)
    {
        auto client = std::make_shared<Client>(handler);
        auto step = std::make_shared<long>(0);
        workers.Add("SET", [=] { Set(*client, name, who, (*step)++); });
    }

    void Save()
    {
        if (INVCallback* const callback = store.wanted)
            callback->Update();
        ASSERT_TRUE(views.SaveToNV());
        CheckStored("sysContact", {"one", "two", "Mr. Qwin"});
        CheckStored("sysLocation", {"host", "Keswold"});
        ++saves;
    }
    // Whole texts, whoever wrote them.
    void CheckStored(const char* key, std::initializer_list<const char*> writers)
    {
        const auto found = store.strings.find(FakeStore::Path("mib-2.system", key));
        if (found == store.strings.end())
            return;
        bool known = false;
        for (const char* who : writers)
            known = known || IsTextOf(who, found->second);
        ASSERT_TRUE(known) << key << ": " << found->second;
    }
    void ChangeByHost(long step)
    {
        BMib2System& system = *handler.SystemGroup();
        ASSERT_TRUE(system.SetLocation(BString(TextOfStep("host", step).c_str())));
        const BObjectIdentifier id = MakeOid(Arcs{1, 3, unsigned(step)});
        ASSERT_TRUE(system.InsertORRow(id, BString("comes and goes")));
        ASSERT_TRUE(system.RemoveORRow(id, BString("comes and goes")));
    }
    void ChangeViews(long step)
    {
        const BObjectIdentifier subtree = MakeOid(Arcs{1, 4, unsigned(step % 3)});
        ASSERT_TRUE(Insert(views, {"some", TextOf(subtree).c_str()}));
        ASSERT_TRUE(views.Filter("all", MakeOid("1.3.6")));
        BObjectIdentifier index;
        ASSERT_TRUE(BFilterTable::MakeIndex("some", subtree, false, index));
        delete views.Remove(index);
    }

    void Race(bool serialised)
    {
        g_bSerializeSet = serialised;
        Workers workers(RaceTime() / 2, [&] { return store.asked > 0; });
        SetFrom(workers, kContact, "one");
        SetFrom(workers, kContact, "two");
        workers.Add("save", [this] { Save(); });
        workers.Add("host", [this, step = 0L]() mutable { ChangeByHost(step++); });
        workers.Add("views", [this, step = 0L]() mutable { ChangeViews(step++); });
        workers.Join();
        Save();
        std::printf("saves: %ld, asked for: %ld\n", saves, store.asked.load());
        const std::string stored = store.strings["mib-2.system/sysContact"];
        EXPECT_EQ(handler.SystemGroup()->Contact().c_str(), stored);
    }

    AskedStore store;
    BFilterTable views;
    BMibHandler handler;
    CallbackHandler failing;
    long saves = 0;
};

TEST_F(StoreRacesSlow, SavesAreWholeWhileSerialisedSetsCommitAndUndo) { Race(true); }

TEST_F(StoreRacesSlow, SavesAreWholeWhileSetsRunSideBySide) { Race(false); }

} // namespace
} // namespace Test
} // namespace VLK
