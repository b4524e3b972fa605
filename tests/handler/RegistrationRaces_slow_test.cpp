// Requests against registration. What stays registered is answered whole at every
// moment; what comes and goes is there or not.
#include "tests/support/ListHandler.h"
#include "tests/support/RowStatusProbe.h"
#include "tests/support/Workers.h"
#include <vkmibh/testing/requests.h>

#include <array>

#include <gtest/gtest.h>

namespace VLK {
namespace Test {
namespace {

constexpr unsigned kLasting = 20;

// 1.3.5.1.0 to 1.3.5.1.9 and 1.3.5.9.10 to 1.3.5.9.19.
Arcs LastingName(unsigned i) { return {1, 3, 5, i < kLasting / 2 ? 1u : 9u, i}; }

class RegistrationRacesSlow : public ::testing::Test {
protected:
    RegistrationRacesSlow() : handler(nullptr), lasting("1.3.5")
    {
        handler.Init(nullptr, nullptr);
        lasting.keepsLog = false;
        for (unsigned i = 0; i < kLasting; ++i)
            lasting.Add(LastingName(i), static_cast<int>(i));
        EXPECT_TRUE(handler.RegisterSubtreeHandler(&lasting));
    }
    ~RegistrationRacesSlow() override { handler.UnregisterSubtreeHandler(&lasting); }

    // A module that is destroyed as soon as it is unregistered, in the region of
    // the one that lasts.
    void ComeAndGo(unsigned arc)
    {
        ListHandler module(MakeOid(Arcs{1, 3, 5, 5, arc}));
        module.keepsLog = false;
        for (unsigned i = 0; i < 3; ++i)
            module.Add(Arcs{1, 3, 5, 5, arc, i}, static_cast<int>(100 + i));
        EXPECT_TRUE(handler.RegisterSubtreeHandler(&module));
        EXPECT_EQ(1, handler.UnregisterSubtreeHandler(&module));
    }

    // A group of two tables, of which the first has rows.
    void GroupComesAndGoes()
    {
        struct SGroup : BMibImplGroup {
            int GetNumImpls() override { return 2; }
            BMibImpl* GetImplAt(int index) override { return &tables[unsigned(index)]; }
            std::array<CRowProbe, 2> tables{CRowProbe("1.3.7.1"), CRowProbe("1.3.7.2")};
        };
        SGroup group;
        for (CRowProbe& table : group.tables)
            table.logs = false;
        group.tables[0].Row("4").level = 4;
        group.tables[0].Row("4").status = eRowActive;
        EXPECT_TRUE(handler.RegisterGroup(&group));
        EXPECT_TRUE(handler.UnregisterGroup(&group));
    }

    // A walk is in order and finds everything that lasts.
    void Walk(Client& client, int pduType)
    {
        BVarBindList list;
        list.Append(MakeOid("1.3"));
        unsigned seen = 0;
        for (Arcs last = {1, 3};;) {
            const int status = client.Query(pduType, list);
            if (status != 0 || list[0].Value().IsException())
                break;
            const Arcs name = ArcsOf(list[0].Name());
            ASSERT_LT(last, name);
            last = name;
            if (seen < kLasting && name == LastingName(seen)) {
                ASSERT_EQ(int(seen), list[0].Value().Int());
                ++seen;
            }
        }
        ASSERT_EQ(kLasting, seen);
    }

    // What lasts and what does not in one request, in several runs.
    void Get(Client& client)
    {
        BVarBindList list;
        const Arcs names[] = {LastingName(0), {1, 3, 5, 5, 1, 2}, LastingName(10),
                              LastingName(1), {1, 3, 7, 1, 2, 4}, {1, 3, 5, 5, 2, 2}};
        for (const Arcs& name : names)
            list.Append(MakeOid(name));
        ASSERT_EQ(0, client.Query(ePduGet, list));
        EXPECT_EQ(0, list[0].Value().Int());
        EXPECT_EQ(10, list[2].Value().Int());
        EXPECT_EQ(1, list[3].Value().Int());
        ExpectOrNothing(102, list[1]);
        ExpectOrNothing(4, list[4]);
        ExpectOrNothing(102, list[5]);
    }
    static void ExpectOrNothing(int value, const BVarBind& binding)
    {
        const BObjectSyntax& got = binding.Value();
        EXPECT_TRUE(got.IsException() || got.Int() == value) << TextOf(binding.Name());
    }

    // The table is there or not, from the first phase to the last.
    void Set(Client& client)
    {
        BVarBindList list;
        BObjectSyntax text, number;
        text.SetOctets(BString("somebody"));
        number.SetInt(4);
        list.Append(MakeOid("1.3.6.1.2.1.1.4.0"), text);
        list.Append(MakeOid("1.3.7.1.2.4"), number);
        list.Append(MakeOid("1.3.6.1.2.1.1.5.0"), text);
        const int status = client.Query(ePduSet, list);
        if (status == 0)
            ++done;
        else
            EXPECT_TRUE(status == eSnmpNoSuchName && client.errorIndex == 2)
                << status << " at " << client.errorIndex;
    }

    BMibHandler handler;
    ListHandler lasting;
    std::atomic<long> done{0};
};

TEST_F(RegistrationRacesSlow, RequestsOfEveryKindAgainstModulesThatComeAndGo)
{
    Client walker(handler), old(handler, kV1), bulk(handler), getter(handler), setter(handler);
    Workers workers(RaceTime(), [&] { return done > 0; });
    workers.Add("walk", [&] { Walk(walker, ePduGetNext); });
    workers.Add("walk in SNMPv1", [&] { Walk(old, ePduGetNext); });
    workers.Add("walk by GETBULK", [&] { Walk(bulk, ePduGetBulk); });
    workers.Add("GET", [&] { Get(getter); });
    workers.Add("SET", [&] { Set(setter); });
    workers.Add("module 1", [&] { ComeAndGo(1); });
    workers.Add("module 2", [&] { ComeAndGo(2); });
    workers.Add("group", [&] { GroupComesAndGoes(); });
    workers.Join();
    std::printf("SETs done: %ld\n", done.load());
}

} // namespace
} // namespace Test
} // namespace VLK
