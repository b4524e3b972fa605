// The system group and the sysORTable inside it, walked from end to end.
#include "tests/support/FakeAccess.h"
#include <vkmibh/testing/requests.h>

#include <vkmibh/system.h>

#include <gtest/gtest.h>

namespace VLK {
namespace Test {
namespace {

struct SStandardRow {
    const char* id;
    const char* descr;
};

const char kRemote[] = "This MIB module defines MIB objects which provide mechanisms to remotely "
                       "configure the parameters used by an SNMP entity for the generation of "
                       "SNMP messages";

const SStandardRow kRows[] = {
    {"1.3.6.1.2.1.1", "a collection of objects common to all systems"},
    {"1.3.6.1.2.1.11", "a collection of objects providing basic instrumentations and control of "
                       "an SNMP entity"},
    {"1.3.6.1.6.3.1.2.1.3", "The MIB module for SNMP entities"},
    {"1.3.6.1.6.3.10.3.1", "The SNMP Architecture MIB"},
    {"1.3.6.1.6.3.11.3.1.1", "The MIB for Message Processing and Dispatching"},
    {"1.3.6.1.6.3.12.3.1.1", kRemote},
    {"1.3.6.1.6.3.13.3.1.1", kRemote},
    {"1.3.6.1.6.3.14.3.1.1",
     "This MIB module defines MIB objects which provide mechanisms to remotely configure the "
     "parameters used by a proxy forwarding application"},
    {"1.3.6.1.6.3.15.2.1.1",
     "The management information definitions for the SNMP User-based Security Model"},
    {"1.3.6.1.6.3.16.2.1.1",
     "The management information definitions for the View-based Access Control Model for SNMP"},
};

TEST(SystemWalk, StandardRowsAreInstalled)
{
    BMibHandler handler(nullptr);
    BMib2System& system = *handler.SystemGroup();
    ASSERT_EQ(10, system.GetNumORRows());
    for (int i = 0; i < 10; ++i) {
        ASSERT_NE(nullptr, system.GetORRow(i + 1));
        EXPECT_EQ(MakeOid(kRows[i].id), system.GetORRow(i + 1)->id);
        EXPECT_STREQ(kRows[i].descr, system.GetORRow(i + 1)->descr.c_str());
    }
}

TEST(SystemWalk, WithAnAccessControlTheFirstTwoRowsAreLeftOut)
{
    FakeAccess access;
    BMibHandler handler(&access);
    BMib2System& system = *handler.SystemGroup();
    ASSERT_EQ(8, system.GetNumORRows());
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(MakeOid(kRows[i + 2].id), system.GetORRow(i + 1)->id);
}

std::vector<std::string> ExpectedNames(int rows)
{
    std::vector<std::string> names;
    for (int column = 1; column <= 8; ++column)
        names.push_back("1.3.6.1.2.1.1." + std::to_string(column) + ".0");
    for (int column = 2; column <= 4; ++column)
        for (int row = 1; row <= rows; ++row)
            names.push_back("1.3.6.1.2.1.1.9." + std::to_string(column) + "." +
                            std::to_string(row));
    return names;
}

std::vector<std::string> Walk(BMibHandler& handler, int protocolId, const char* from)
{
    Client client(handler, protocolId);
    std::vector<std::string> names;
    BVarBindList list;
    list.Append(MakeOid(from));
    int status = 0;
    while (names.size() < 1000 && (status = client.Query(ePduGetNext, list)) == 0 &&
           !list[0].Value().IsException()) {
        names.push_back(TextOf(list[0].Name()));
        BVarBindList got;
        got.Append(list[0].Name());
        EXPECT_EQ(0, client.Query(ePduGet, got)) << names.back();
        EXPECT_EQ(list[0].Value().Syntax(), got[0].Value().Syntax()) << names.back();
    }
    EXPECT_EQ(protocolId == kV1 ? 2 : 0, status);
    return names;
}

TEST(SystemWalk, VisitsTheGroupAndTheTableInOrder)
{
    BMibHandler handler(nullptr);
    handler.Init(nullptr, nullptr);
    for (int protocolId : {kV1, kV2c})
        for (const char* from : {"0", "1", "1.3.6.1.2.1.1", "1.3.6.1.2.1.1.0"})
            EXPECT_EQ(ExpectedNames(10), Walk(handler, protocolId, from)) << from;
}

TEST(SystemWalk, StartsAnywhere)
{
    BMibHandler handler(nullptr);
    handler.Init(nullptr, nullptr);
    const std::vector<std::string> all = ExpectedNames(10);
    for (size_t i = 0; i < all.size(); ++i)
        for (int protocolId : {kV1, kV2c})
            EXPECT_EQ(std::vector<std::string>(all.begin() + static_cast<long>(i) + 1, all.end()),
                      Walk(handler, protocolId, all[i].c_str()));
    EXPECT_EQ(std::vector<std::string>(all.begin() + 8, all.end()),
              Walk(handler, kV2c, "1.3.6.1.2.1.1.8.1"));
    EXPECT_EQ(std::vector<std::string>(all.begin() + 8, all.end()),
              Walk(handler, kV2c, "1.3.6.1.2.1.1.9"));
}

TEST(SystemWalk, SkipsWhatAccessControlRefuses)
{
    FakeAccess access;
    BMibHandler handler(&access);
    handler.Init(nullptr, nullptr);
    std::vector<std::string> expected = ExpectedNames(8);
    access.refused = {"1.3.6.1.2.1.1.1.0", "1.3.6.1.2.1.1.8.0", "1.3.6.1.2.1.1.9.2.3",
                      "1.3.6.1.2.1.1.9.4.8"};
    std::vector<std::string> visible;
    for (const std::string& name : expected)
        if (!access.refused.count(name))
            visible.push_back(name);
    Client client(handler);
    std::vector<std::string> walked;
    BVarBindList list;
    list.Append(MakeOid("1"));
    while (client.Query(ePduGetNext, list) == 0 && !list[0].Value().IsException())
        walked.push_back(TextOf(list[0].Name()));
    EXPECT_EQ(visible, walked);
    EXPECT_EQ("1.3.6.1.2.1.1.9.4.7", TextOf(list[0].Name()));
}

} // namespace
} // namespace Test
} // namespace VLK
