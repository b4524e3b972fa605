#include "modules/SnmpEngine.h"

#include "tests/support/Threads.h"
#include <vkmibh/testing/module.h>

#include <gtest/gtest.h>

using namespace VLK;
using namespace VLK::Test;
using namespace VLK::modules;

namespace {

const std::string kEngine = "10.2.1.";
const std::string kDispatcher = "11.2.1.";
const std::string kUsers = "15.1.1.";

class SnmpEngine : public testing::Test {
protected:
    SSnmpCounters counters;
    const SSnmpEngine identity{std::string("\x80\0\x7e\xd9\5engine", 11), 2147483647, 65507};
    CSnmpEngineModule module{identity, counters};
    ModuleClient client{module, "1.3.6.1.6.3"};
};

} // namespace

TEST_F(SnmpEngine, EachObjectReadsItsOwnCounter)
{
    counters.unknownSecurityModels = 1;
    counters.invalidMsgs = 2;
    counters.unknownPDUHandlers = 3;
    counters.unsupportedSecLevels = 4;
    counters.notInTimeWindows = 5;
    counters.unknownUserNames = 6;
    counters.unknownEngineIDs = 7;
    counters.wrongDigests = 8;
    counters.decryptionErrors = 4294967295u;
    std::vector<std::string> walk = client.Walk();
    ASSERT_EQ(walk.size(), 13u);
    walk.erase(walk.begin(), walk.begin() + 4);
    const std::vector<std::string> statistics{
        "11.2.1.1.0=1", "11.2.1.2.0=2", "11.2.1.3.0=3", "15.1.1.1.0=4",         "15.1.1.2.0=5",
        "15.1.1.3.0=6", "15.1.1.4.0=7", "15.1.1.5.0=8", "15.1.1.6.0=4294967295"};
    EXPECT_EQ(walk, statistics);
}

TEST_F(SnmpEngine, IsWhatItIsTold)
{
    Client manager(client.handler);
    ASSERT_EQ(manager.Get({"1.3.6.1.6.3.10.2.1.1.0"}), 0);
    const BOctetString& id = manager.answer[0].Value().Octets();
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(id.Data()), id.Length()), identity.id);
    EXPECT_EQ(client.Get(kEngine + "2.0"), "2147483647");
    EXPECT_EQ(client.Get(kEngine + "4.0"), "65507");
}

TEST_F(SnmpEngine, ItsTimeIsInSeconds)
{
    const auto start = std::chrono::steady_clock::now();
    const int first = std::stoi(client.Get(kEngine + "3.0"));
    EXPECT_TRUE(Eventually([&] { return std::stoi(client.Get(kEngine + "3.0")) > first; }));
    const int last = std::stoi(client.Get(kEngine + "3.0"));
    const auto run = std::chrono::steady_clock::now() - start;
    EXPECT_LE(last - first, std::chrono::duration_cast<std::chrono::seconds>(run).count() + 1);
}

TEST_F(SnmpEngine, ObjectsHaveTheTypesOfTheStandardAndAreReadOnly)
{
    std::vector<std::pair<std::string, unsigned>> objects{{kEngine + "1.0", eAsnOctetString},
                                                          {kEngine + "2.0", eAsnInteger},
                                                          {kEngine + "3.0", eAsnInteger},
                                                          {kEngine + "4.0", eAsnInteger}};
    for (int arc = 1; arc <= 3; ++arc)
        objects.push_back({kDispatcher + std::to_string(arc) + ".0", eAsnCounter32});
    for (int arc = 1; arc <= 6; ++arc)
        objects.push_back({kUsers + std::to_string(arc) + ".0", eAsnCounter32});
    for (const auto& [name, type] : objects) {
        Client manager(client.handler);
        ASSERT_EQ(manager.Get({("1.3.6.1.6.3." + name).c_str()}), 0);
        EXPECT_EQ(manager.SyntaxAt(0), type) << name;
        EXPECT_EQ(client.Set({{name, Number(1)}}), eSnmpNotWritable) << name;
    }
}
