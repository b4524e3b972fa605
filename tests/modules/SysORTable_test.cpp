#include "modules/SysORTable.h"

#include "tests/support/Threads.h"
#include <vkmibh/testing/requests.h>

#include <gtest/gtest.h>

using namespace VLK;
using namespace VLK::Test;
using namespace VLK::modules;

namespace {

const std::string kSystem = "1.3.6.1.2.1.1.";
const std::string kEntry = kSystem + "9.1.";
constexpr unsigned kZero = 5000;

// In the place of the library's table, in an agent without a clock.
class SysORTable : public testing::Test {
protected:
    SysORTable()
    {
        handler.Init(nullptr, nullptr);
        SetResources(system, {{"1.3.6.1.4.1.32473.1", "one"}, {"1.3.6.1.4.1.32473.2", "two"}});
        Register([] { return kZero; });
    }
    ~SysORTable() override { handler.UnregisterGroup(&*module); }

    void Register(const FUpTime& upTime)
    {
        if (module)
            handler.UnregisterGroup(&*module);
        BObjectIdentifier old(lenOidSysORTable, oidSysORTable);
        tree.Unregister(old);
        module.emplace(system, upTime);
        EXPECT_TRUE(handler.RegisterGroup(&*module));
        EXPECT_EQ(module->Init(), 2);
    }
    std::string Get(const std::string& name)
    {
        Client client(handler);
        const int status = client.Get({name.c_str()});
        return status == 0 ? client.TextAt(0) : "status " + std::to_string(status);
    }
    // Names without "1.3.6.1.2.1.1.", each with the value that both GET and GETNEXT have.
    std::vector<std::string> Walk(int protocolId)
    {
        std::vector<std::string> all;
        Client client(handler, protocolId);
        BVarBindList list;
        list.Append(MakeOid("1.3.6.1.2.1.1.7.0"));
        while (client.Query(ePduGetNext, list) == 0 && !list[0].Value().IsException()) {
            const std::string name = TextOf(list[0].Name());
            EXPECT_EQ(Get(name), list[0].Value().ValToStr().c_str()) << name;
            all.push_back(name.substr(kSystem.size()) + "=" + Get(name));
            list[0].Value().SetNull();
        }
        return all;
    }

    BMibTree tree;
    BMibHandler handler{&tree, nullptr};
    BMib2System& system = *handler.SystemGroup();
    std::optional<CSysORModule> module;
};

} // namespace

TEST_F(SysORTable, HasTheNamesOfTheStandard)
{
    const std::vector<std::string> all{"8.0=5000",
                                       "9.1.2.1=1.3.6.1.4.1.32473.1",
                                       "9.1.2.2=1.3.6.1.4.1.32473.2",
                                       "9.1.3.1=one",
                                       "9.1.3.2=two",
                                       "9.1.4.1=5000",
                                       "9.1.4.2=5000"};
    for (int protocolId : {kV1, kV2c})
        EXPECT_EQ(Walk(protocolId), all);
}

TEST_F(SysORTable, HasTheTypesOfTheStandardAndIsReadOnly)
{
    const std::pair<std::string, unsigned> types[] = {{kSystem + "8.0", eAsnTimeTicks},
                                                      {kEntry + "2.1", eAsnObjectId},
                                                      {kEntry + "3.1", eAsnOctetString},
                                                      {kEntry + "4.1", eAsnTimeTicks}};
    for (const auto& [name, type] : types) {
        Client client(handler);
        ASSERT_EQ(client.Get({name.c_str()}), 0);
        EXPECT_EQ(client.SyntaxAt(0), type) << name;
        EXPECT_EQ(client.Set(name.c_str(), "x"), eSnmpNotWritable) << name;
    }
    for (const char* none : {"9.1.1.1", "9.1.5.1", "9.1.2.0", "9.1.2.3", "9.1.2", "9.1.2.1.0",
                             "9.1.2.4294967295", "9.2.1", "8.1"}) {
        Client client(handler);
        EXPECT_EQ(client.Get({(kSystem + none).c_str()}), 0);
        EXPECT_TRUE(client.answer[0].Value().IsException()) << none;
    }
}

TEST_F(SysORTable, TimesAreReadingsOfSysUpTime)
{
    constexpr unsigned kTime = 77;
    ASSERT_TRUE(system.InsertORRow(
        9, new BMib2System::SysOREntry(9, MakeOid("1.3.6.1.4.1.32473.9"), BString("nine"), kTime)));
    EXPECT_EQ(Get(kEntry + "4.9"), std::to_string(kZero + kTime));
    EXPECT_EQ(Get(kEntry + "4.1"), std::to_string(kZero));
    system.RemoveORRow(9);
    EXPECT_EQ(Get(kSystem + "8.0"), std::to_string(kZero + kTime)) << "as the record has it";
    Register([] { return 0xffffffffu; });
    EXPECT_EQ(Get(kSystem + "8.0"), std::to_string(kTime - 1)) << "TimeTicks wrap";
}

TEST_F(SysORTable, TheClockMayHaveRunAlready)
{
    constexpr unsigned kLater = 2000000000;
    BTime time;
    system.SetTime(&time);
    ASSERT_TRUE(Eventually([&] { return system.GetUpTime() > 1; }));
    const unsigned now = system.GetUpTime();
    Register([=] { return kLater + now; });
    // A later reading of the clock is taken off.
    EXPECT_LE(std::stoul(Get(kEntry + "4.1")), kLater);
    system.SetTime(nullptr);
}

TEST_F(SysORTable, RowsComeAndGo)
{
    const size_t before = Walk(kV2c).size();
    ASSERT_TRUE(system.InsertORRow(MakeOid("1.3.6.1.4.1.32473.3"), BString("three")));
    EXPECT_EQ(Walk(kV2c).size(), before + 3);
    EXPECT_EQ(Get(kEntry + "3.3"), "three");
    system.RemoveORRow(1);
    EXPECT_EQ(Walk(kV2c).size(), before);
    SetResources(system, {});
    EXPECT_EQ(Walk(kV2c).size(), 1u);
    SetResources(system, {{"1.3.6.1.4.1.32473.4", "four"}});
    EXPECT_EQ(Get(kEntry + "3.1"), "four") << "from index 1 on";
}
