// The system group and the sysORTable as SNMP sees them.
#include <vkmibh/testing/requests.h>

#include "tests/support/NoDescriptors.h"
#include "tests/support/Threads.h"

#include "system/UptimeFile.h"

#include <vkmibh/system.h>

#include <gtest/gtest.h>
#include <string>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>
#include <unistd.h>
#include <vector>

namespace VLK {
namespace Test {
namespace {

// A file in place of the kernel's, for as long as this lives.
class UptimeFile {
public:
    explicit UptimeFile(const char* content) : m_before(g_uptimePath)
    {
        const int file = mkstemp(m_path.data());
        EXPECT_EQ(static_cast<ssize_t>(BString::Strlen(content)),
                  write(file, content, BString::Strlen(content)));
        close(file);
        g_uptimePath = m_path.c_str();
    }
    ~UptimeFile()
    {
        g_uptimePath = m_before;
        std::remove(m_path.c_str());
    }
    UptimeFile(const UptimeFile&) = delete;
    UptimeFile& operator=(const UptimeFile&) = delete;
    void Remove() { std::remove(m_path.c_str()); }

private:
    std::string m_path = testing::TempDir() + "uptime-XXXXXX"; // mkstemp() fills the end
    const char* m_before;
};

unsigned UpTimeFrom(const char* content)
{
    const UptimeFile file(content);
    BMib2System system;
    CSystem group(system);
    unsigned value = 0;
    EXPECT_EQ(0, group.OnGet_SysUpTime(1, value));
    return value;
}

TEST(SystemImpl, SysUpTimeIsTheHostsUptimeInHundredths)
{
    EXPECT_EQ(1234567u, UpTimeFrom("12345.67 54321.00\n"));
    EXPECT_EQ(105u, UpTimeFrom("1.05 0.00\n"));
    EXPECT_EQ(0u, UpTimeFrom("0.00 0.00\n"));
}

// CONTRACT: the digits after the point are added as a number, whatever their count.
TEST(SystemImpl, SysUpTimeAddsTheFractionAsANumber)
{
    EXPECT_EQ(105u, UpTimeFrom("1.5 0.0"));
    EXPECT_EQ(223u, UpTimeFrom("1.123 0.0"));
}

TEST(SystemImpl, SysUpTimeWrapsLikeTimeTicks) { EXPECT_EQ(4u, UpTimeFrom("42949673.00 0.00")); }

TEST(SystemImpl, SysUpTimeIsZeroWithoutAReadableFile)
{
    EXPECT_EQ(0u, UpTimeFrom(""));
    EXPECT_EQ(0u, UpTimeFrom("soon"));
    EXPECT_EQ(0u, UpTimeFrom("12"));
    EXPECT_EQ(0u, UpTimeFrom("12.soon"));
    EXPECT_EQ(0u, UpTimeFrom("99999999999999999999.00 0.00")); // more than any number holds
    UptimeFile file("12.34");
    file.Remove();
    BMib2System system;
    CSystem group(system);
    unsigned value = 0;
    EXPECT_EQ(0, group.OnGet_SysUpTime(1, value));
    EXPECT_EQ(0u, value);
}

TEST(SystemImpl, SysUpTimeOfThisHostRuns)
{
    BMib2System system;
    CSystem group(system);
    unsigned value = 0;
    group.OnGet_SysUpTime(1, value);
    EXPECT_GT(value, 0u);
}

// Whoever asks, on several threads, and between what is read and what is kept from before.
TEST(SystemImpl, SysUpTimeNeitherGoesBackNorStaysBehind)
{
    using Clock = std::chrono::steady_clock;
    std::atomic<unsigned> latest{0};
    unsigned first = 0;
    ASSERT_TRUE(ReadHostUptime(first));
    const Clock::time_point start = Clock::now();
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            long passed = 0; // hundredths
            while (passed < 20) {
                passed = (Clock::now() - start) / std::chrono::milliseconds(10);
                unsigned before = latest;
                unsigned value = 0;
                ASSERT_TRUE(ReadHostUptime(value));
                ASSERT_GE(value, before);
                ASSERT_GE(value + 1, first + unsigned(passed));
                while (before < value && !latest.compare_exchange_weak(before, value)) {
                }
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

// What was read before is good for a hundredth, and no longer.
TEST(SystemImpl, SysUpTimeThatCannotBeReadIsNotMadeUp)
{
    unsigned value = 0;
    ASSERT_TRUE(ReadHostUptime(value));
    {
        const NoDescriptors none;
        EXPECT_TRUE(Eventually([&] { return !ReadHostUptime(value); }));
    }
    EXPECT_TRUE(ReadHostUptime(value));
}

TEST(SystemImpl, NamesAndPlaces)
{
    BMib2System system;
    CSystem v1(system);
    CSystem named(BString("OTHER.system"), system);
    CSystemV2 v2(system);
    CSysORTableV2 table(system);
    EXPECT_STREQ("RFC1213-MIB.system", v1.Name().c_str());
    EXPECT_STREQ("OTHER.system", named.Name().c_str());
    EXPECT_STREQ("SNMPv2-MIB.system", v2.Name().c_str());
    EXPECT_STREQ("SNMPv2-MIB.sysORTable", table.Name().c_str());
    EXPECT_EQ(MakeOid("1.3.6.1.2.1.1"), v1.Oid());
    EXPECT_EQ(MakeOid("1.3.6.1.2.1.1"), named.Oid());
    EXPECT_EQ(MakeOid("1.3.6.1.2.1.1"), v2.Oid());
    EXPECT_EQ(MakeOid("1.3.6.1.2.1.1.9"), table.Oid());
    EXPECT_EQ(7u, lenOidSystem);
    EXPECT_EQ(8u, lenOidSysORTable);
    EXPECT_EQ(unsigned(eImplScalarGroup), v2.ImplKind());
    EXPECT_EQ(unsigned(eImplTable), table.ImplKind());
}

struct SRowExpectation {
    unsigned column;
    const char* name;
    int syntax;
    int access;
    unsigned kind;
    bool get;
    bool set;
};

void ExpectRows(const SRqHndlrMapEntry* map, const std::vector<SRowExpectation>& rows)
{
    for (const SRowExpectation& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.column, map->column);
        EXPECT_STREQ(row.name, map->name);
        EXPECT_EQ(row.syntax, map->syntax);
        EXPECT_EQ(row.access, map->access);
        EXPECT_EQ(row.kind, map->kind);
        EXPECT_EQ(row.get, map->getHandler != nullptr);
        EXPECT_EQ(row.set, map->setHandler != nullptr);
        ++map;
    }
    EXPECT_EQ(0u, map->kind);
}

TEST(SystemImpl, RequestMapsHaveTheirRows)
{
    std::vector<SRowExpectation> rows = {
        {1, "sysDescr", 4, 3, 5, true, false},    {2, "sysObjectID", 6, 3, 3, true, false},
        {3, "sysUpTime", 67, 3, 4, true, false},  {4, "sysContact", 4, 4, 5, true, true},
        {5, "sysName", 4, 4, 5, true, true},      {6, "sysLocation", 4, 4, 5, true, true},
        {7, "sysServices", 2, 3, 1, true, false},
    };
    ExpectRows(CSystem::s_rqhndlrEntries, rows);
    rows.push_back({8, "sysORLastChange", 67, 3, 4, true, false});
    ExpectRows(CSystemV2::s_rqhndlrEntries, rows);
    ExpectRows(CSysORTableV2::s_rqhndlrEntries, {{1, "sysORIndex", 2, 0, 1, false, false},
                                                 {2, "sysORID", 6, 3, 3, true, false},
                                                 {3, "sysORDescr", 4, 3, 5, true, false},
                                                 {4, "sysORUpTime", 67, 3, 4, true, false}});
}

struct SConstraintExpectation {
    int kind;
    unsigned column;
    const char* name;
    int low;
    int high;
};

void ExpectConstraints(const SConstraintMapEntry* map,
                       const std::vector<SConstraintExpectation>& rows)
{
    for (const SConstraintExpectation& row : rows) {
        SCOPED_TRACE(row.column);
        EXPECT_EQ(row.kind, map->kind);
        EXPECT_EQ(row.column, map->column);
        EXPECT_STREQ(row.name, map->name);
        EXPECT_EQ(row.low, map->low);
        EXPECT_EQ(row.high, map->high);
        ++map;
    }
    EXPECT_EQ(0, map->kind);
}

TEST(SystemImpl, ConstraintMapsHaveTheirRows)
{
    const std::vector<SConstraintExpectation> rows = {
        {5, 1, "DisplayString", 0, 0}, {5, 4, "DisplayString", 0, 0}, {5, 5, "DisplayString", 0, 0},
        {5, 6, "DisplayString", 0, 0}, {4, 7, nullptr, 0, 127},
    };
    ExpectConstraints(CSystem::s_sonstraintEntries, rows);
    ExpectConstraints(CSysORTableV2::s_sonstraintEntries,
                      {{4, 1, nullptr, 1, 2147483647}, {5, 3, "DisplayString", 0, 0}});
    BMib2System system;
    CSystemV2 v2(system);
    EXPECT_EQ(CSystem::s_sonstraintEntries, v2.GetConstraintMap());
}

TEST(SystemImpl, AnswersWithTheValuesOfTheGroup)
{
    BMibHandler handler(nullptr);
    handler.Init(nullptr, nullptr);
    Client client(handler);
    ASSERT_EQ(0, client.Get({"1.3.6.1.2.1.1.1.0", "1.3.6.1.2.1.1.2.0", "1.3.6.1.2.1.1.4.0",
                             "1.3.6.1.2.1.1.5.0", "1.3.6.1.2.1.1.6.0", "1.3.6.1.2.1.1.7.0",
                             "1.3.6.1.2.1.1.8.0"}));
    EXPECT_TRUE(client.answer[0].Value().Octets() == BString("Velkoran agent"));
    EXPECT_EQ(BObjectIdentifier(BMib2System::s_lenOidVelkoran, BMib2System::s_oidVelkoran),
              client.answer[1].Value().ObjectId());
    EXPECT_TRUE(client.answer[2].Value().Octets() == BString("Mr. Qwin"));
    EXPECT_TRUE(client.answer[3].Value().Octets() == BString("MIB handler"));
    EXPECT_TRUE(client.answer[4].Value().Octets() == BString("Keswold"));
    EXPECT_EQ(7, client.answer[5].Value().Int());
    EXPECT_EQ(eAsnTimeTicks, client.SyntaxAt(6));
    EXPECT_EQ(0u, client.answer[6].Value().Unsigned());
}

TEST(SystemImpl, GroupOfTheFirstVersionEndsWithSysServices)
{
    BMib2System system;
    CSystem group(system);
    group.Initialize();
    BMibHandler handler(nullptr); // which has no group of its own before Init()
    ASSERT_TRUE(handler.RegisterSubtreeHandler(&group));
    Client client(handler);
    unsigned visited = 0;
    for (std::string name = "1.3"; client.GetNext({name.c_str()}) == 0; ++visited) {
        if (client.SyntaxAt(0) == eEndOfMibView)
            break;
        name = client.NameAt(0);
        EXPECT_EQ("1.3.6.1.2.1.1." + std::to_string(visited + 1) + ".0", name);
    }
    EXPECT_EQ(7u, visited);
    EXPECT_EQ(0, client.Get({"1.3.6.1.2.1.1.8.0"}));
    EXPECT_EQ(eNoSuchObject, client.SyntaxAt(0));
    EXPECT_EQ(0, client.Set("1.3.6.1.2.1.1.5.0", "named"));
    EXPECT_STREQ("named", system.Name().c_str());
    handler.UnregisterSubtreeHandler(&group);
}

TEST(SystemImpl, SetsAreCheckedBeforeTheyReachTheGroup)
{
    BMibHandler handler(nullptr);
    handler.Init(nullptr, nullptr);
    Client client(handler);
    EXPECT_EQ(0, client.Set("1.3.6.1.2.1.1.4.0", std::string(255, 'x').c_str()));
    EXPECT_EQ(8, client.Set("1.3.6.1.2.1.1.4.0", std::string(256, 'x').c_str()));
    EXPECT_EQ(10, client.Set("1.3.6.1.2.1.1.5.0", "\x80"));
    EXPECT_EQ(17, client.Set("1.3.6.1.2.1.1.1.0", "read-only"));
    EXPECT_EQ(2, client.Set("1.3.6.1.2.1.1.4.1", "no such instance"));
    BVarBindList list;
    BObjectSyntax number;
    number.SetInt(1);
    list.Append(MakeOid("1.3.6.1.2.1.1.4.0"), number);
    EXPECT_EQ(7, client.Query(ePduSet, list));
}

TEST(SystemImpl, SetHandlersKeepUndoAndClean)
{
    BMib2System system;
    CSystem group(system);
    void* slot = nullptr;
    const BString text("new");
    EXPECT_EQ(0, group.OnSet_SysName(eSetTest, 1, text, &slot));
    EXPECT_NE(nullptr, slot);
    EXPECT_STREQ("MIB handler", system.Name().c_str());
    EXPECT_EQ(0, group.OnSet_SysName(eSetCommit, 1, text, &slot));
    EXPECT_STREQ("new", system.Name().c_str());
    EXPECT_EQ(0, group.OnSet_SysName(eSetUndo, 1, text, &slot));
    EXPECT_STREQ("MIB handler", system.Name().c_str());
    EXPECT_EQ(0, group.OnSet_SysName(eSetCleanup, 1, text, &slot));
    EXPECT_EQ(nullptr, slot);
    EXPECT_EQ(0, group.OnSet_SysName(eSetCleanup, 1, text, &slot)) << "nothing to clean";
    EXPECT_EQ(5, group.OnSet_SysName(static_cast<ESnmpSetOpCode>(1), 1, text, &slot));
    EXPECT_EQ(13, group.OnSet_SysName(eSetTest, 1, text, nullptr)) << "nowhere to keep the text";
    EXPECT_EQ(0, group.OnSet_SysName(eSetUndo, 1, text, nullptr)) << "nothing was kept";
    EXPECT_EQ(0, group.OnSet_SysName(eSetCleanup, 1, text, nullptr));
    EXPECT_STREQ("MIB handler", system.Name().c_str());
}

TEST(SystemImpl, TwoBindingsOfOneObjectUndoToTheTextBefore)
{
    BMib2System system;
    CSystem group(system);
    void* slots[2] = {nullptr, nullptr};
    const BString texts[2] = {BString("first"), BString("second")};
    for (ESnmpSetOpCode op : {eSetTest, eSetCommit, eSetUndo, eSetCleanup})
        for (int i = 0; i < 2; ++i)
            EXPECT_EQ(0, group.OnSet_SysContact(op, 1, texts[i], &slots[i]));
    EXPECT_STREQ("Mr. Qwin", system.Contact().c_str());
}

class SysORTable : public ::testing::Test {
protected:
    SysORTable() : client(handler) { handler.Init(nullptr, nullptr); }

    BMibHandler handler{nullptr};
    Client client;
};

TEST_F(SysORTable, MalformedAndMissingInstancesAreNoSuchName)
{
    BMib2System system;
    system.InsertORRow(MakeOid("1.1"), BString("a"));
    CSysORTableV2 table(system);
    BString descr;
    BObjectIdentifier id;
    unsigned upTime = 9;
    EXPECT_EQ(0, table.OnGet_SysORDescr(MakeOid("1"), 1, descr));
    EXPECT_STREQ("a", descr.c_str());
    EXPECT_EQ(0, table.OnGet_SysORID(MakeOid("1"), 1, id));
    EXPECT_EQ(MakeOid("1.1"), id);
    EXPECT_EQ(0, table.OnGet_SysORUpTime(MakeOid("1"), 1, upTime));
    EXPECT_EQ(0u, upTime);
    for (const char* bad : {"1.2", "", "2", "0", "4294967295"}) {
        EXPECT_EQ(2, table.OnGet_SysORDescr(MakeOid(bad), 1, descr)) << bad;
        EXPECT_EQ(2, table.OnGet_SysORID(MakeOid(bad), 1, id)) << bad;
        EXPECT_EQ(2, table.OnGet_SysORUpTime(MakeOid(bad), 1, upTime)) << bad;
    }
    system.RemoveORRow(1);
    EXPECT_EQ(2, table.OnGet_SysORDescr(MakeOid("1"), 1, descr));
}

TEST_F(SysORTable, AMissingRowIsNoSuchInstanceOnTheWire)
{
    EXPECT_EQ(0, client.Get({"1.3.6.1.2.1.1.9.3.77", "1.3.6.1.2.1.1.9.3.1.2"}));
    EXPECT_EQ(eNoSuchInstance, client.SyntaxAt(0));
    EXPECT_EQ(eNoSuchInstance, client.SyntaxAt(1));
}

TEST_F(SysORTable, EveryColumnHasEveryRow)
{
    BMib2System system;
    for (int index : {3, 1, 7})
        system.InsertORRow(index, new BMib2System::SysOREntry);
    CSysORTableV2 table(system);
    for (unsigned column : {1u, 2u, 99u}) {
        std::string walk;
        BObjectIdentifier at;
        for (BObjectIdentifier next; table.NextInstanceInColumn(column, 1, at, next); at = next)
            walk += TextOf(next) + " ";
        EXPECT_EQ("1 3 7 ", walk);
    }
    BObjectIdentifier next;
    EXPECT_TRUE(table.NextInstanceInColumn(2, 1, MakeOid("3.9"), next));
    EXPECT_EQ(MakeOid("7"), next) << "the arcs after the index do not count";
    EXPECT_FALSE(table.NextInstanceInColumn(2, 1, MakeOid("4294967295"), next));
    EXPECT_EQ(1, table.NextIndex(1, 2, MakeOid("0"), next));
    EXPECT_EQ(MakeOid("1"), next);
}

TEST_F(SysORTable, TheDemoRow)
{
    BMib2System system;
    CSysORTableV2 table(system);
    table.CreateDemoRow();
    table.CreateDemoRow(); // the index is taken now
    ASSERT_EQ(1, system.GetNumORRows());
    EXPECT_STREQ("demo description", system.GetORRow(1)->descr.c_str());
    EXPECT_EQ(MakeOid("1.3.6.1"), system.GetORRow(1)->id);
    EXPECT_EQ(123u, system.GetORRow(1)->upTime);
}

} // namespace
} // namespace Test
} // namespace VLK
