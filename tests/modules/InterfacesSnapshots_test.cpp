#include "Interfaces.h"

using namespace VLK;
using namespace VLK::Test;
using namespace VLK::modules;

namespace {

class InterfacesSnapshots : public testing::TestWithParam<unsigned> {
protected:
    // An instance through a request of its own.
    std::string Get(const std::string& name) { return client.Get(name); }

    std::uint64_t now = 5000;
    FakeInterfaces interfaces;
    FakeTraps traps;
    CInterfacesModule module{interfaces, traps, nullptr, SInterfacesOptions{GetParam()},
                             [this] { return now; }};
    ModuleClient client{module, "1.3.6.1.2.1"};
};

class InterfacesSnapshotsThatLive : public InterfacesSnapshots {};

SInterface Counting(std::uint64_t octets)
{
    SInterface link = Link(2, "eth0");
    link.counters.inOctets = octets;
    return link;
}

const std::string kOctets = "31.1.1.1.6.2";
const std::string kDiscontinuity = "31.1.1.1.19.2";

} // namespace

INSTANTIATE_TEST_SUITE_P(TimesToLive, InterfacesSnapshots, testing::Values(0u, 1u, 1000u));
INSTANTIATE_TEST_SUITE_P(TimesToLive, InterfacesSnapshotsThatLive, testing::Values(1u, 1000u));

TEST_P(InterfacesSnapshots, NoAnswerIsOlderThanTheTimeToLive)
{
    interfaces.links = {Counting(1)};
    EXPECT_EQ(Get(kOctets), "1");
    interfaces.links = {Counting(2)};
    now += GetParam();
    EXPECT_EQ(Get(kOctets), "2");
    EXPECT_EQ(interfaces.reads, 2);
}

TEST_P(InterfacesSnapshotsThatLive, AnAnswerCountsForItsTimeToLive)
{
    interfaces.links = {Counting(1)};
    EXPECT_EQ(Get(kOctets), "1");
    interfaces.links = {Counting(2)};
    now += GetParam() - 1;
    EXPECT_EQ(Get(kOctets), "1");
    EXPECT_EQ(interfaces.reads, 1);
}

TEST_P(InterfacesSnapshotsThatLive, AnAnswerIsAsOldAsItsQuestion)
{
    interfaces.links = {Counting(1)};
    interfaces.onRead = [this] { now += GetParam(); };
    Get(kOctets);
    interfaces.onRead = nullptr;
    interfaces.links = {Counting(2)};
    EXPECT_EQ(Get(kOctets), "2");
}

TEST_P(InterfacesSnapshots, AnotherTimeToLiveCountsForWhatIsThere)
{
    interfaces.links = {Counting(1)};
    EXPECT_EQ(Get(kOctets), "1");
    interfaces.links = {Counting(2)};
    now += 2000;
    module.SetTimeToLive(3000);
    EXPECT_EQ(Get(kOctets), "1");
    module.SetTimeToLive(2000);
    EXPECT_EQ(Get(kOctets), "2");
}

TEST_P(InterfacesSnapshots, ARequestSeesOneSnapshot)
{
    interfaces.links = {Counting(1)};
    // Whoever asks twice gets another answer.
    interfaces.onRead = [this] { interfaces.links = {Counting(10u + unsigned(interfaces.reads))}; };
    Client manager(client.handler);
    ASSERT_EQ(manager.Get({"1.3.6.1.2.1.2.2.1.10.2", "1.3.6.1.2.1.31.1.1.1.6.2",
                           "1.3.6.1.2.1.2.1.0", "1.3.6.1.2.1.2.2.1.10.2"}),
              0);
    EXPECT_EQ(interfaces.reads, 1);
    for (int i : {0, 1, 3})
        EXPECT_EQ(manager.TextAt(i), "11") << i;
    // Also when it takes long, and while many others ask.
    for (int i = 2; i <= 40; ++i) {
        now += 10000;
        EXPECT_EQ(Get(kOctets), std::to_string(10 + i));
    }
    ASSERT_EQ(manager.GetNext({"1.3.6.1.2.1.31.1.1.1.6"}), 0);
    EXPECT_EQ(manager.TextAt(0), "11");
}

TEST_P(InterfacesSnapshots, WhatIsNoRequestIsGivenNoSnapshotForEver)
{
    interfaces.links = {Counting(1)};
    BVarBind binding(MakeOid("1.3.6.1.2.1.31.1.1.1.6.2"));
    auto& table = static_cast<BMibTableImpl&>(*module.GetImplAt(2));
    for (unsigned octets : {1u, 2u}) {
        interfaces.links = {Counting(octets)};
        ASSERT_EQ(table.Get(4000000000u, binding), 0);
        EXPECT_EQ(std::string(binding.Value().ValToStr().c_str()), std::to_string(octets));
        now += GetParam();
    }
}

TEST_P(InterfacesSnapshots, AFailureIsNotRememberedAndOlderAnswersAreNotGiven)
{
    interfaces.links = {Counting(1)};
    EXPECT_EQ(Get(kOctets), "1");
    now += GetParam();
    interfaces.isBroken = true;
    EXPECT_EQ(Get(kOctets), "status 5");
    interfaces.isBroken = false;
    EXPECT_EQ(Get(kOctets), "1");
}

TEST_P(InterfacesSnapshots, ACounterThatGetsLessIsADiscontinuity)
{
    interfaces.links = {Counting(100), Link(3, "eth1")};
    module.History().Compare(interfaces.links, 0);
    EXPECT_EQ(Get(kDiscontinuity), "0");
    now = 60000;
    interfaces.links[0] = Counting(100);
    EXPECT_EQ(Get(kDiscontinuity), "0") << "the same is no less";
    now = 70000;
    interfaces.links[0] = Counting(99);
    EXPECT_EQ(Get(kDiscontinuity), "7000");
    EXPECT_EQ(Get("31.1.1.1.19.3"), "0") << "of another interface";
    now = 80000;
    interfaces.links[0] = Counting(200);
    EXPECT_EQ(Get(kDiscontinuity), "7000") << "it stays";
}

TEST_P(InterfacesSnapshots, ACounterThatIsNotToldAnyMoreIsNone)
{
    interfaces.links = {Counting(100)};
    module.History().Compare(interfaces.links, 0);
    EXPECT_EQ(Get(kDiscontinuity), "0");
    now += 1000;
    interfaces.links = {Link(2, "eth0")};
    EXPECT_EQ(Get(kDiscontinuity), "0");
    EXPECT_EQ(Get(kOctets), "Null/noSuchInstance");
}

TEST(InterfacesCost, AWalkOfAThousandAsksOnceInItsTimeToLive)
{
    FakeInterfaces interfaces;
    for (unsigned i = 1; i <= 1000; ++i) {
        interfaces.links.push_back(Link(3 * i, "if" + std::to_string(i)));
        interfaces.links.back().counters.inOctets = i;
    }
    FakeTraps traps;
    CInterfacesModule module(interfaces, traps, nullptr, SInterfacesOptions{1000},
                             [] { return 1; });
    ModuleClient client(module, "1.3.6.1.2.1");
    std::string name = "1.3.6.1.2.1.2.2";
    int steps = 0;
    for (;; ++steps) {
        Client manager(client.handler); // a request of its own
        ASSERT_EQ(manager.GetNext({name.c_str()}), 0);
        if (manager.NameAt(0).find("1.3.6.1.2.1.2.2.") != 0)
            break;
        name = manager.NameAt(0);
    }
    EXPECT_EQ(steps, 7 * 1000); // 1 to 3, 6 to 8, 10
    EXPECT_EQ(interfaces.reads, 1);
}
