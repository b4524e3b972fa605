// Where notifications go, as managers set it, rule by rule.
#include "modules/targets/TargetModule.h"

#include <vkmibh/testing/module.h>

#include "tests/support/AllocationSweep.h"
#include "tests/support/FakeStore.h"

#include <gtest/gtest.h>

using namespace VLK;
using namespace VLK::Test;
using namespace VLK::modules;

namespace {

// Names of rows, as their index.
const std::string kA = "97";
const std::string kP = "112.51";
const std::string kTable = "1.3.6.1.6.3";

std::string Addr(int column, const std::string& row = kA)
{
    return "12.1.2.1." + std::to_string(column) + "." + row;
}
std::string Params(int column, const std::string& row = kP)
{
    return "12.1.3.1." + std::to_string(column) + "." + row;
}
std::string Notify(int column, const std::string& row = kA)
{
    return "13.1.1.1." + std::to_string(column) + "." + row;
}

BObjectSyntax Oid(const char* oid)
{
    BObjectSyntax syntax;
    syntax.SetObjectId(MakeOid(oid));
    return syntax;
}

constexpr const char* kUdp = "1.3.6.1.6.1.1";
constexpr const char* kUdpIpv4 = "1.3.6.1.2.1.100.1.1";
constexpr const char* kUdpIpv6 = "1.3.6.1.2.1.100.1.2";
const std::string kV4("\x7f\0\0\1\0\xa2", 6);
const std::string kV6 = std::string(16, '\x20') + std::string("\0\xa2", 2);

struct STargetTest {
    FakeStore store;
    SSnmpCounters counters;
    CTargetModule module{&store, counters};
    ModuleClient client{module, kTable};
};

class Targets : public testing::Test, protected STargetTest {
protected:
    Targets() { store.saveAtOnce = true; }

    static Bindings Address(int status)
    {
        return {{Addr(2), Oid(kUdp)},
                {Addr(3), Bytes(kV4)},
                {Addr(7), Bytes("p3")},
                {Addr(9), Number(status)}};
    }
    static Bindings ParamsRow(int status)
    {
        return {{Params(2), Number(1)},
                {Params(3), Number(2)},
                {Params(4), Bytes("noc")},
                {Params(5), Number(1)},
                {Params(7), Number(status)}};
    }
    static Bindings Without(Bindings all, size_t which)
    {
        all.erase(all.begin() + static_cast<std::ptrdiff_t>(which));
        return all;
    }
    int SetOne(const std::string& name, const BObjectSyntax& value)
    {
        return client.Set({{name, value}});
    }
};

} // namespace

TEST_F(Targets, ColumnsThatAreNotSetHaveTheirDefaults)
{
    ASSERT_EQ(client.Set(Address(eRowCreateAndGo)), 0);
    ASSERT_EQ(client.Set(ParamsRow(eRowCreateAndGo)), 0);
    ASSERT_EQ(SetOne(Notify(5), Number(eRowCreateAndGo)), 0);
    EXPECT_EQ(client.Get(Addr(4)), "1500");
    EXPECT_EQ(client.Get(Addr(5)), "3");
    EXPECT_EQ(client.Get(Addr(6)), "");
    EXPECT_EQ(client.Get(Addr(8)), "3");
    EXPECT_EQ(client.Get(Addr(9)), "1");
    EXPECT_EQ(client.Get(Params(6)), "3");
    EXPECT_EQ(client.Get(Notify(2)), "");
    EXPECT_EQ(client.Get(Notify(3)), "1");
    EXPECT_EQ(client.Get(Notify(4)), "3");
}

TEST_F(Targets, ARowIsNotActiveBeforeItHasWhatHasNoDefault)
{
    for (size_t missing = 0; missing < 3; ++missing)
        EXPECT_EQ(client.Set(Without(Address(eRowCreateAndGo), missing)), eSnmpInconsistentValue);
    for (size_t missing = 0; missing < 4; ++missing)
        EXPECT_EQ(client.Set(Without(ParamsRow(eRowCreateAndGo), missing)), eSnmpInconsistentValue);
    ASSERT_EQ(client.Set(Without(Address(eRowCreateAndWait), 2)), 0);
    EXPECT_EQ(client.Get(Addr(9)), "3") << "notReady";
    EXPECT_NE(client.Get(Addr(7)).find("no"), std::string::npos) << client.Get(Addr(7));
    for (const std::string& line : client.Walk())
        EXPECT_NE(line.rfind(Addr(7), 0), 0u) << line;
    EXPECT_EQ(SetOne(Addr(9), Number(eRowActive)), eSnmpInconsistentValue);
    EXPECT_EQ(SetOne(Addr(9), Number(eRowNotInService)), eSnmpInconsistentValue);
    EXPECT_EQ(SetOne(Addr(7), Bytes("missing")), 0) << "a row that is not there may be named";
    EXPECT_EQ(client.Get(Addr(9)), "2") << "notInService";
    EXPECT_EQ(SetOne(Addr(9), Number(eRowActive)), 0);
}

TEST_F(Targets, ValuesAreThoseOfTheirSyntax)
{
    ASSERT_EQ(client.Set(Address(eRowCreateAndGo)), 0);
    ASSERT_EQ(client.Set(ParamsRow(eRowCreateAndWait)), 0);
    ASSERT_EQ(SetOne(Notify(5), Number(eRowCreateAndGo)), 0);
    const struct {
        std::string name;
        BObjectSyntax value;
        int status;
    } cases[] = {
        {Addr(4), Number(0), 0},
        {Addr(4), Number(-1), eSnmpWrongValue},
        {Addr(5), Number(255), 0},
        {Addr(5), Number(256), eSnmpWrongValue},
        {Addr(6), Bytes("a b"), 0},
        {Addr(6), Bytes("a\tb\rc\nd"), 0},
        {Addr(6), Bytes(""), 0},
        {Addr(6), Bytes(" a"), eSnmpWrongValue},
        {Addr(6), Bytes("a "), eSnmpWrongValue},
        {Addr(6), Bytes("a  b"), eSnmpWrongValue},
        {Addr(6), Bytes(std::string(256, 'x')), eSnmpWrongLength},
        {Addr(7), Bytes(""), eSnmpWrongLength},
        {Addr(7), Bytes(std::string(33, 'x')), eSnmpWrongLength},
        {Addr(7), Number(1), eSnmpWrongType},
        {Addr(9), Number(7), eSnmpWrongValue},
        {Addr(9), Number(eRowNotReady), eSnmpWrongValue},
        {Addr(8), Number(eStoragePermanent), eSnmpInconsistentValue},
        {Addr(8), Number(eStorageReadOnly), eSnmpInconsistentValue},
        {Params(2), Number(0), 0},
        {Params(2), Number(2), eSnmpInconsistentValue},
        {Params(2), Number(-1), eSnmpWrongValue},
        {Params(3), Number(3), 0},
        {Params(3), Number(4), eSnmpInconsistentValue},
        {Params(3), Number(0), eSnmpWrongValue},
        {Params(4), Bytes(""), 0},
        {Params(5), Number(3), 0},
        {Params(5), Number(4), eSnmpWrongValue},
        {Notify(2), Bytes("tag"), 0},
        {Notify(2), Bytes("a tag"), eSnmpWrongValue},
        {Notify(3), Number(2), 0},
        {Notify(3), Number(3), eSnmpWrongValue},
    };
    for (const auto& one : cases)
        EXPECT_EQ(SetOne(one.name, one.value), one.status) << one.name;
}

TEST_F(Targets, AnAddressFitsItsDomain)
{
    const struct {
        const char* domain;
        std::string address;
        int status;
    } cases[] = {
        {kUdp, kV4, 0},
        {kUdpIpv4, kV4, 0},
        {kUdpIpv6, kV6, 0},
        {kUdp, kV6, eSnmpInconsistentValue},
        {kUdpIpv6, kV4, eSnmpInconsistentValue},
        {kUdp, kV4.substr(1), eSnmpInconsistentValue},
        {kUdp, std::string("\x7f\0\0\1\0\0", 6), eSnmpInconsistentValue}, // no port
        {"1.3.6.1.6.1.2", kV4, eSnmpWrongValue},
        {"1.3.6.1.2.1.100.1.7", kV4, eSnmpWrongValue},
    };
    for (const auto& one : cases) {
        Bindings bindings = Address(eRowCreateAndGo);
        bindings[0].value = Oid(one.domain);
        bindings[1].value = Bytes(one.address);
        EXPECT_EQ(client.Set(bindings), one.status) << one.domain;
        client.Set({{Addr(9), Number(eRowDestroy)}});
    }
    ASSERT_EQ(client.Set({{Addr(9), Number(eRowCreateAndWait)}, {Addr(2), Oid(kUdp)}}), 0);
    EXPECT_EQ(SetOne(Addr(3), Bytes(kV6)), eSnmpInconsistentValue);
    EXPECT_EQ(SetOne(Addr(3), Bytes(kV4)), 0);
    EXPECT_EQ(SetOne(Addr(2), Oid(kUdpIpv6)), eSnmpInconsistentValue);
    EXPECT_EQ(client.Set({{Addr(2), Oid(kUdpIpv6)}, {Addr(3), Bytes(kV6)}}), 0);
}

TEST_F(Targets, WhatIsFixedWhileARowIsActiveIsSetWhileItIsNot)
{
    ASSERT_EQ(client.Set(Address(eRowCreateAndGo)), 0);
    ASSERT_EQ(client.Set(ParamsRow(eRowCreateAndGo)), 0);
    const Bindings fixed{{Addr(2), Oid(kUdpIpv4)}, {Addr(3), Bytes(kV4)},   {Params(2), Number(1)},
                         {Params(3), Number(2)},   {Params(4), Bytes("x")}, {Params(5), Number(1)}};
    for (const Binding& binding : fixed)
        EXPECT_EQ(client.Set({binding}), eSnmpInconsistentValue) << binding.name;
    EXPECT_EQ(SetOne(Addr(7), Bytes("x")), 0);
    EXPECT_EQ(SetOne(Addr(6), Bytes("x")), 0);
    EXPECT_EQ(client.Set({fixed[0], {Addr(9), Number(eRowNotInService)}}), 0);
    EXPECT_EQ(client.Set({fixed[1], {Addr(9), Number(eRowActive)}}), 0);
    EXPECT_EQ(client.Set({{Params(7), Number(eRowNotInService)}, fixed[4]}), 0);
    EXPECT_EQ(client.Get(Params(4)), "x");
}

TEST_F(Targets, RowsThatAreNotMadeHaveNoColumns)
{
    EXPECT_EQ(SetOne(Addr(4), Number(1)), eSnmpInconsistentName);
    EXPECT_EQ(SetOne(Addr(9), Number(eRowActive)), eSnmpInconsistentValue);
    EXPECT_EQ(SetOne(Addr(9), Number(eRowDestroy)), 0);
    EXPECT_EQ(SetOne(Notify(5, "256"), Number(eRowCreateAndGo)), eSnmpNoCreation);
    std::string index = "1";
    for (int i = 1; i < 32; ++i)
        index += ".1";
    EXPECT_EQ(SetOne(Notify(5, index), Number(eRowCreateAndGo)), 0) << "32 octets";
    EXPECT_EQ(SetOne(Notify(5, index + ".1"), Number(eRowCreateAndGo)), eSnmpNoCreation);
    // "vkagentd.x"
    EXPECT_EQ(SetOne(Notify(5, "118.107.97.103.101.110.116.100.46.120"), Number(eRowCreateAndGo)),
              eSnmpNoCreation);
}

TEST_F(Targets, OneStatusForARow)
{
    EXPECT_EQ(client.Set({{Notify(5), Number(eRowCreateAndGo)}, {Notify(5), Number(eRowDestroy)}}),
              eSnmpInconsistentValue);
    EXPECT_TRUE(module.Rows().notifies.Copy().empty());
}

TEST_F(Targets, AStorageTypeMayBeSetToWhatItIs)
{
    ASSERT_EQ(client.Set(Address(eRowCreateAndGo)), 0);
    EXPECT_EQ(SetOne(Addr(8), Number(eStorageNonVolatile)), 0);
    EXPECT_EQ(SetOne(Addr(8), Number(eStoragePermanent)), eSnmpInconsistentValue);
    EXPECT_EQ(client.Get(Addr(8)), "3");
}

TEST_F(Targets, AnIndexThatNoNameHasLiesBetweenThoseThatThereAre)
{
    for (const char* name : {"97", "97.255", "98"}) {
        ASSERT_EQ(SetOne(Notify(5, name), Number(eRowCreateAndGo)), 0) << name;
        ASSERT_EQ(SetOne(Notify(2, name), Bytes(name)), 0) << name;
    }
    Client manager(client.handler);
    const auto next = [&](const std::string& row) {
        const std::string from = kTable + "." + Notify(2, row);
        EXPECT_EQ(manager.GetNext({from.c_str()}), 0);
        return manager.NameAt(0).substr(kTable.size() + 1);
    };
    EXPECT_EQ(next("97"), Notify(2, "97.255"));
    EXPECT_EQ(next("97.256"), Notify(2, "98"));
    EXPECT_EQ(next("97.4294967295"), Notify(2, "98"));
    EXPECT_EQ(next("97.255.255"), Notify(2, "98"));
    EXPECT_EQ(next("96.300.1"), Notify(2, "97"));
    EXPECT_EQ(next("300"), Notify(3, "97"));
}

TEST_F(Targets, ReadOnlyRowsStayAsTheyAre)
{
    STargets rows;
    SNotifyRow row;
    row.isActive = true;
    row.storage = eStorageReadOnly;
    rows.notifies["a"] = row;
    module.Rows().ReplaceReadOnly(rows);
    EXPECT_EQ(client.Get(Notify(4)), "5");
    EXPECT_EQ(SetOne(Notify(2), Bytes("x")), eSnmpNotWritable);
    EXPECT_EQ(SetOne(Notify(4), Number(eStorageVolatile)), eSnmpNotWritable);
    EXPECT_EQ(SetOne(Notify(5), Number(eRowNotInService)), eSnmpInconsistentValue);
    EXPECT_EQ(SetOne(Notify(5), Number(eRowDestroy)), eSnmpInconsistentValue);
    EXPECT_EQ(SetOne(Notify(5), Number(eRowCreateAndGo)), eSnmpInconsistentValue);
    module.Rows().ReplaceReadOnly({});
    EXPECT_TRUE(module.Rows().notifies.Copy().empty());
}

TEST_F(Targets, AFailedSetLeavesEverythingAsItWas)
{
    ASSERT_EQ(client.Set(Address(eRowCreateAndGo)), 0);
    const std::vector<std::string> before = client.Walk();
    EXPECT_NE(client.SetInVain({{Addr(6), Bytes("t")}, {Addr(5), Number(9)}}), 0);
    EXPECT_EQ(client.Walk(), before);
    EXPECT_NE(client.SetInVain({{Addr(9), Number(eRowDestroy)}}), 0);
    EXPECT_EQ(client.Walk(), before);
    EXPECT_NE(client.SetInVain({{Notify(2), Bytes("t")}, {Notify(5), Number(eRowCreateAndGo)}}), 0);
    EXPECT_EQ(client.Walk(), before);
}

TEST_F(Targets, WhatIsNonVolatileIsThereAfterARestart)
{
    Bindings address = Address(eRowCreateAndGo);
    address.push_back({Addr(6), Bytes("a b")});
    ASSERT_EQ(client.Set(address), 0);
    ASSERT_EQ(client.Set(Without(ParamsRow(eRowCreateAndWait), 2)), 0);
    ASSERT_EQ(
        client.Set({{Notify(5), Number(eRowCreateAndGo)}, {Notify(4), Number(eStorageVolatile)}}),
        0);
    ASSERT_EQ(
        client.Set({{Notify(5, "98"), Number(eRowCreateAndGo)}, {Notify(2, "98"), Bytes("b")}}), 0);
    std::vector<std::string> kept;
    for (const std::string& line : client.Walk()) {
        const std::string name = line.substr(0, line.find('='));
        if (name.rfind("13.", 0) != 0 || name.substr(name.size() - 3) == ".98")
            kept.push_back(line);
    }
    CTargetModule again{&store, counters};
    ModuleClient reader{again, kTable};
    std::vector<std::string> now = reader.Walk();
    EXPECT_NE(now[0], kept[0]) << "the spin lock";
    now.erase(now.begin());
    kept.erase(kept.begin());
    EXPECT_EQ(now, kept);
}

TEST_F(Targets, TheSpinLockTakesTheValueThatItHas)
{
    const int value = std::stoi(client.Get("12.1.1.0"));
    EXPECT_EQ(SetOne("12.1.1.0", Number(value == 5 ? 6 : 5)), eSnmpInconsistentValue);
    EXPECT_EQ(SetOne("12.1.1.0", Number(value)), 0);
    EXPECT_NE(client.Get("12.1.1.0"), std::to_string(value));
}

TEST_F(Targets, ContextsThatAreUnknownAreCounted)
{
    counters.unknownContexts = 7;
    EXPECT_EQ(client.Get("12.1.4.0"), "0");
    EXPECT_EQ(client.Get("12.1.5.0"), "7");
}

TEST_F(Targets, ATagIsOneOfAList)
{
    for (const char* list : {"a", "a b", "b a", "b\ta\nc"})
        EXPECT_TRUE(HoldsTag(list, "a")) << list;
    for (const char* list : {"", "aa", "b", "ab a1"})
        EXPECT_FALSE(HoldsTag(list, "a")) << list;
    EXPECT_FALSE(HoldsTag("", "")) << "an empty tag selects nothing";
}

TEST(TargetsMemory, ASetChangesAllOrNothing)
{
    struct SReady : STargetTest {
        SReady()
        {
            EXPECT_EQ(client.Set({{Notify(5), Number(eRowCreateAndGo)}}), 0);
            Add(2, "97", Bytes("a-tag-that-takes-some-memory-by-itself"));
            Add(2, "98", Bytes("another-one-that-is-as-long-as-that"));
            Add(5, "98", Number(eRowCreateAndGo));
        }
        void Add(int column, const std::string& row, const BObjectSyntax& value)
        {
            set.Append(MakeOid((kTable + "." + Notify(column, row)).c_str()), value);
        }
        int Ask()
        {
            VLK::Test::Client asking(client.handler);
            return asking.Query(ePduSet, set);
        }
        BVarBindList set;
    };
    EXPECT_EQ(SReady().Ask(), 0); // singletons that stay
    const unsigned allocations = VLKTest::SweepAllocations(
        [] { return std::make_unique<SReady>(); }, [](auto& ready) { return ready->Ask(); },
        [](auto& ready, int status) {
            const auto rows = ready->module.Rows().notifies.Copy();
            EXPECT_EQ(rows.size(), status == 0 ? 2u : 1u);
            EXPECT_EQ(rows.begin()->second.tag.empty(), status != 0);
        });
    EXPECT_GT(allocations, 10u);
}
