// The record of the system group and its sysOR rows.
#include "tests/support/Oids.h"

#include <vkmibh/system.h>

#include <gtest/gtest.h>

#include <climits>
#include <thread>

namespace VLK {
namespace Test {
namespace {

bool Insert(BMib2System& system, const char* id, const char* descr)
{
    return system.InsertORRow(MakeOid(id), BString(descr));
}

TEST(Mib2System, StartsWithItsDefaults)
{
    BMib2System system;
    EXPECT_STREQ("Velkoran agent", system.Description().c_str());
    EXPECT_EQ(MakeOid("1.3.6.1.4.1.32473"), system.ObjectID());
    EXPECT_EQ(BObjectIdentifier(BMib2System::s_lenOidVelkoran, BMib2System::s_oidVelkoran),
              system.ObjectID());
    EXPECT_STREQ("Mr. Qwin", system.Contact().c_str());
    EXPECT_STREQ("MIB handler", system.Name().c_str());
    EXPECT_STREQ("Keswold", system.Location().c_str());
    EXPECT_EQ(7, system.Services());
    EXPECT_EQ(0u, system.ORLastChange());
    EXPECT_EQ(0, system.GetNumORRows());
    EXPECT_EQ(nullptr, system.Store());
    EXPECT_EQ(0u, system.GetUpTime());
}

TEST(Mib2System, SettersCopyIn)
{
    BMib2System system;
    BString text("text");
    EXPECT_TRUE(system.SetDescription(text));
    EXPECT_TRUE(system.SetContact(text));
    EXPECT_TRUE(system.SetName(text));
    EXPECT_TRUE(system.SetLocation(text));
    text.Assign("else", 4);
    EXPECT_STREQ("text", system.Description().c_str());
    EXPECT_STREQ("text", system.Contact().c_str());
    EXPECT_STREQ("text", system.Name().c_str());
    EXPECT_STREQ("text", system.Location().c_str());
    EXPECT_TRUE(system.SetObjectID(MakeOid("1.3.9")));
    EXPECT_EQ(MakeOid("1.3.9"), system.ObjectID());
    const unsigned arcs[] = {1, 3, 10};
    EXPECT_TRUE(system.SetObjectID(3, arcs));
    EXPECT_EQ(MakeOid("1.3.10"), system.ObjectID());
}

TEST(Mib2System, ServicesKeepOnlyTheKnownLayers)
{
    BMib2System system;
    system.SetServices(255);
    EXPECT_EQ(79, system.Services());
    system.SetServices(0x30);
    EXPECT_EQ(0, system.Services());
    system.SetServices(true, false, false, false, true);
    EXPECT_EQ(65, system.Services());
    system.SetServices(false, true, true, true, false);
    EXPECT_EQ(14, system.Services());
    system.SetServices(false, false, false, false, false);
    EXPECT_EQ(0, system.Services());
}

TEST(Mib2System, UpTimeIsTheClocks)
{
    BTime time;
    time.RecordStartTime();
    BMib2System system;
    system.SetTime(&time);
    while (time.SysUptime() == 0)
        std::this_thread::yield();
    const unsigned before = time.SysUptime();
    const unsigned read = system.GetUpTime();
    EXPECT_LE(before, read);
    EXPECT_LE(read, time.SysUptime());
}

TEST(Mib2System, RowIndicesCountUpFromTheLargest)
{
    BMib2System system;
    EXPECT_TRUE(Insert(system, "1.1", "a"));
    EXPECT_TRUE(Insert(system, "1.2", "b"));
    EXPECT_TRUE(Insert(system, "1.3", "c"));
    EXPECT_STREQ("a", system.GetORRow(1)->descr.c_str());
    EXPECT_TRUE(system.RemoveORRow(3));
    EXPECT_TRUE(Insert(system, "1.4", "d"));
    ASSERT_NE(nullptr, system.GetORRow(3));
    EXPECT_EQ(3, system.GetORRow(3)->index);
    EXPECT_STREQ("d", system.GetORRow(3)->descr.c_str());
    EXPECT_TRUE(system.RemoveORRow(2));
    EXPECT_TRUE(Insert(system, "1.5", "e"));
    EXPECT_EQ(nullptr, system.GetORRow(2));
    EXPECT_STREQ("e", system.GetORRow(4)->descr.c_str());
    EXPECT_EQ(3, system.GetNumORRows());
}

TEST(Mib2System, NoRowComesAfterTheLargestIndex)
{
    BMib2System system;
    auto* last = new BMib2System::SysOREntry;
    ASSERT_TRUE(system.InsertORRow(INT_MAX, last));
    EXPECT_FALSE(Insert(system, "1.1", "a"));
    EXPECT_EQ(1, system.GetNumORRows());
}

TEST(Mib2System, AddingARowSetsLastChangeToItsUpTime)
{
    BTime time;
    time.RecordStartTime();
    BMib2System system;
    system.SetTime(&time);
    while (time.SysUptime() < 2)
        std::this_thread::yield();
    ASSERT_TRUE(Insert(system, "1.1", "a"));
    EXPECT_LE(2u, system.ORLastChange());
    EXPECT_EQ(system.GetORRow(1)->upTime, system.ORLastChange());
}

TEST(Mib2System, ARowOfTheCallersKeepsItsUpTimeAndTakesTheIndex)
{
    BTime time;
    time.RecordStartTime();
    BMib2System system;
    system.SetTime(&time);
    while (time.SysUptime() == 0)
        std::this_thread::yield();
    auto* row = new BMib2System::SysOREntry(99, MakeOid("1.2"), BString("mine"), 123456);
    ASSERT_TRUE(system.InsertORRow(5, row));
    EXPECT_EQ(row, system.GetORRow(5));
    EXPECT_EQ(5, row->index);
    EXPECT_EQ(123456u, row->upTime);
    EXPECT_NE(123456u, system.ORLastChange());
    EXPECT_NE(0u, system.ORLastChange());
}

TEST(Mib2System, ARefusedRowStaysTheCallers)
{
    BMib2System system;
    ASSERT_TRUE(Insert(system, "1.1", "a"));
    BMib2System::SysOREntry mine(7, MakeOid("1.2"), BString("mine"), 0);
    EXPECT_FALSE(system.InsertORRow(1, &mine));
    EXPECT_EQ(1, mine.index) << "the index is set before the row is refused";
    EXPECT_STREQ("a", system.GetORRow(1)->descr.c_str());
    EXPECT_FALSE(system.InsertORRow(2, nullptr));
    EXPECT_EQ(1, system.GetNumORRows());
}

// CONTRACT: the time of the row's adding, not that of its removal.
TEST(Mib2System, RemovingARowSetsLastChangeToTheRowsUpTime)
{
    BMib2System system;
    system.InsertORRow(1, new BMib2System::SysOREntry(0, MakeOid("1.1"), BString("a"), 17));
    system.InsertORRow(2, new BMib2System::SysOREntry(0, MakeOid("1.2"), BString("b"), 23));
    EXPECT_EQ(0u, system.ORLastChange());
    EXPECT_TRUE(system.RemoveORRow(1));
    EXPECT_EQ(17u, system.ORLastChange());
    EXPECT_TRUE(system.RemoveORRow(MakeOid("1.2"), BString("b")));
    EXPECT_EQ(23u, system.ORLastChange());
    EXPECT_FALSE(system.RemoveORRow(2));
    EXPECT_EQ(23u, system.ORLastChange());
}

TEST(Mib2System, RemovingByContentTakesTheFirstThatEqualsInBoth)
{
    BMib2System system;
    Insert(system, "1.1", "a");
    Insert(system, "1.1", "b");
    Insert(system, "1.2", "b");
    Insert(system, "1.1", "b");
    EXPECT_FALSE(system.RemoveORRow(MakeOid("1.1"), BString("B")));
    EXPECT_FALSE(system.RemoveORRow(MakeOid("1.3"), BString("a")));
    EXPECT_TRUE(system.RemoveORRow(MakeOid("1.1"), BString("b")));
    EXPECT_EQ(nullptr, system.GetORRow(2));
    EXPECT_NE(nullptr, system.GetORRow(4));
    EXPECT_TRUE(system.RemoveORRow(MakeOid("1.1"), BString("b")));
    EXPECT_EQ(nullptr, system.GetORRow(4));
    EXPECT_EQ(2, system.GetNumORRows());
}

TEST(Mib2System, RowsAreWalkedInIndexOrder)
{
    BMib2System system;
    EXPECT_EQ(nullptr, system.GetFirstORRow());
    EXPECT_EQ(nullptr, system.GetNextORRow(0));
    for (int index : {30, 10, 20})
        system.InsertORRow(index, new BMib2System::SysOREntry);
    EXPECT_EQ(10, system.GetFirstORRow()->index);
    EXPECT_EQ(nullptr, system.GetNextORRow(-1));
    EXPECT_EQ(10, system.GetNextORRow(0)->index);
    EXPECT_EQ(20, system.GetNextORRow(10)->index);
    EXPECT_EQ(30, system.GetNextORRow(25)->index);
    EXPECT_EQ(nullptr, system.GetNextORRow(30));
    EXPECT_EQ(nullptr, system.GetORRow(15));
}

TEST(Mib2System, RowsCanBeCopiedInsteadOfPointedTo)
{
    BMib2System system;
    BMib2System::SysOREntry row;
    int index = -5;
    EXPECT_FALSE(system.CopyORRow(1, row));
    EXPECT_FALSE(system.FirstORIndex(index));
    EXPECT_FALSE(system.NextORIndex(0, index));
    EXPECT_EQ(-5, index);
    Insert(system, "1.1", "a");
    Insert(system, "1.2", "b");
    ASSERT_TRUE(system.CopyORRow(2, row));
    system.RemoveORRow(2);
    EXPECT_STREQ("b", row.descr.c_str());
    EXPECT_EQ(MakeOid("1.2"), row.id);
    EXPECT_EQ(2, row.index);
    EXPECT_TRUE(system.FirstORIndex(index));
    EXPECT_EQ(1, index);
    EXPECT_FALSE(system.NextORIndex(1, index));
    EXPECT_FALSE(system.NextORIndex(-1, index));
}

TEST(Mib2System, AnEmptyRowIsAllZero)
{
    BMib2System::SysOREntry row;
    EXPECT_EQ(0, row.index);
    EXPECT_EQ(0u, row.id.Length());
    EXPECT_TRUE(row.descr.empty());
    EXPECT_EQ(0u, row.upTime);
}

} // namespace
} // namespace Test
} // namespace VLK
