// Traffic against registration. Under ThreadSanitizer this finds what a plain
// run may not.
#include "tests/support/ListHandler.h"
#include "tests/support/Threads.h"
#include <vkmibh/testing/requests.h>

#include <vkmibh/system.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace VLK {
namespace Test {
namespace {

constexpr int kRounds = 300;

// A module that is destroyed as soon as it is unregistered.
void RegisterOverAndOver(BMibHandler& handler, unsigned arc)
{
    for (int i = 0; i < kRounds; ++i) {
        ListHandler module(MakeOid(Arcs{1, 3, 5, arc}));
        module.keepsLog = false;
        module.Add(Arcs{1, 3, 5, arc, 1}, 1);
        ASSERT_TRUE(handler.RegisterSubtreeHandler(&module));
        ASSERT_EQ(1, handler.UnregisterSubtreeHandler(&module));
    }
}

void WalkUntil(BMibHandler& handler, std::atomic<bool>& stop, int protocolId)
{
    Client client(handler, protocolId);
    while (!stop) {
        BVarBindList list;
        list.Append(MakeOid("1.3"));
        for (int step = 0; step < 200 && client.Query(ePduGetNext, list) == 0; ++step) {
            if (list[0].Value().IsException())
                break;
            BVarBindList got;
            got.Append(list[0].Name());
            client.Query(ePduGet, got);
        }
    }
}

void SetUntil(BMibHandler& handler, std::atomic<bool>& stop)
{
    Client client(handler);
    for (int i = 0; !stop; ++i)
        ASSERT_EQ(0, client.Set("1.3.6.1.2.1.1.4.0", i % 2 ? "one" : "another and a longer one"));
}

TEST(QueryRaces, RegistrationAgainstEveryKindOfRequest)
{
    BMibHandler handler(nullptr);
    handler.Init(nullptr, nullptr);
    std::atomic<bool> stop{false};
    std::vector<std::thread> traffic;
    traffic.emplace_back([&] { WalkUntil(handler, stop, kV2c); });
    traffic.emplace_back([&] { WalkUntil(handler, stop, kV1); });
    traffic.emplace_back([&] { SetUntil(handler, stop); });
    std::thread one([&] { RegisterOverAndOver(handler, 1); });
    std::thread two([&] { RegisterOverAndOver(handler, 2); });
    one.join();
    two.join();
    stop = true;
    for (std::thread& thread : traffic)
        thread.join();
}

TEST(QueryRaces, SystemRowsChangeUnderAWalk)
{
    BMibHandler handler(nullptr);
    handler.Init(nullptr, nullptr);
    std::atomic<bool> stop{false};
    Together together(2);
    std::thread walk([&] {
        together.Begin();
        WalkUntil(handler, stop, kV2c);
    });
    together.Begin();
    BMib2System& system = *handler.SystemGroup();
    for (int i = 0; i < kRounds; ++i) {
        const BObjectIdentifier id = MakeOid(Arcs{1, 3, unsigned(i)});
        system.InsertORRow(id, BString("a row that comes and goes"));
        system.RemoveORRow(id, BString("a row that comes and goes"));
    }
    stop = true;
    walk.join();
    EXPECT_EQ(10, system.GetNumORRows());
}

TEST(QueryRaces, UnserialisedSetsOfOneTextLeaveOneOfThem)
{
    BMibHandler handler(nullptr);
    handler.Init(nullptr, nullptr);
    g_bSerializeSet = false;
    std::atomic<bool> stop{false};
    Together together(3);
    const auto set = [&] {
        together.Begin();
        SetUntil(handler, stop);
    };
    std::thread one(set);
    std::thread two(set);
    together.Begin();
    for (int i = 0; i < kRounds; ++i)
        handler.SystemGroup()->SaveToNV();
    stop = true;
    one.join();
    two.join();
    g_bSerializeSet = true;
    const std::string text = handler.SystemGroup()->Contact().c_str();
    EXPECT_TRUE(text == "one" || text == "another and a longer one" || text == "Mr. Qwin") << text;
}

} // namespace
} // namespace Test
} // namespace VLK
