#include "tests/support/ScriptedStream.h"
#include "tests/support/VtableSlot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vkmibh/cmdhandler.h>

namespace VLK {
namespace {

using Test::ScriptedStream;

class Plain : public BCmdHandler {
public:
    int CmdExecute(ICmdStream&, const BString&, const BStringArray&, const BSecurityParams&,
                   const BString&) override
    {
        return 0;
    }
    using BCmdHandler::CmdId;
};

class Clock : public Plain {
public:
    // cppcheck-suppress duplInheritedMember ; each class has a map of its own
    static const SCmdMapEntry s_cliEntries[];
    const char* CmdGetHndlrName() const override { return "\"Clock\""; }
    const SCmdMapEntry* CmdGetMap() const override { return map; }
    const SCmdMapEntry* map = s_cliEntries;
};

const SCmdMapEntry Clock::s_cliEntries[] = {{0, "getnext", "Get the next", "<oid>"},
                                            {7, "time", nullptr, nullptr},
                                            {8, nullptr, "nameless", nullptr},
                                            {9, "time", "never found", nullptr},
                                            {-1, nullptr, nullptr, nullptr}};

TEST(CmdHandler, NameOfTheBaseHasItsQuotes)
{
    Plain handler;
    EXPECT_STREQ(BCmdHandler::s_cmdHandlerName, "\"BCmdHandler\"");
    EXPECT_EQ(BString::Strlen(BCmdHandler::s_cmdHandlerName), 13u);
    EXPECT_EQ(handler.CmdHndlrName(), BCmdHandler::s_cmdHandlerName);
    EXPECT_EQ(handler.CmdGetHndlrName(), BCmdHandler::s_cmdHandlerName);
}

TEST(CmdHandler, NameIsThatOfTheDerivedClass)
{
    Clock clock;
    ICmdHandler& handler = clock;
    EXPECT_STREQ(handler.CmdHndlrName(), "\"Clock\"");
}

TEST(CmdHandler, BaseHasAnEmptyTable)
{
    Plain handler;
    EXPECT_EQ(handler.CmdGetMap(), BCmdHandler::s_cliEntries);
    EXPECT_EQ(BCmdHandler::s_cliEntries[0].id, -1);
    EXPECT_EQ(BCmdHandler::s_cliEntries[0].name, nullptr);
    EXPECT_EQ(handler.CmdCount(), 0);
    EXPECT_EQ(handler.CmdAt(0), nullptr);
    EXPECT_EQ(handler.CmdNameAt(0), nullptr);
    EXPECT_EQ(handler.CmdFind("time"), nullptr);
    EXPECT_EQ(handler.CmdId("time"), -1);
    EXPECT_EQ(handler.CmdGetDescr("time"), nullptr);
    EXPECT_EQ(handler.CmdGetArgsDescr("time"), nullptr);
}

TEST(CmdHandler, NullTableCountsAsEmpty)
{
    Clock clock;
    clock.map = nullptr;
    EXPECT_EQ(clock.CmdCount(), 0);
    EXPECT_EQ(clock.CmdAt(0), nullptr);
    EXPECT_EQ(clock.CmdFind("time"), nullptr);
    EXPECT_EQ(clock.CmdId("time"), -1);
}

TEST(CmdHandler, AtKnowsItsBounds)
{
    Clock clock;
    EXPECT_EQ(clock.CmdCount(), 4);
    EXPECT_EQ(clock.CmdAt(-1), nullptr);
    EXPECT_EQ(clock.CmdAt(4), nullptr);
    EXPECT_EQ(clock.CmdAt(1000000), nullptr);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(clock.CmdAt(i), &Clock::s_cliEntries[i]);
}

TEST(CmdHandler, AtOfATableWithOneRow)
{
    static const SCmdMapEntry s_one[] = {{5, "one", nullptr, nullptr},
                                         {-1, nullptr, nullptr, nullptr}};
    Clock clock;
    clock.map = s_one;
    EXPECT_EQ(clock.CmdAt(0), &s_one[0]);
    EXPECT_EQ(clock.CmdAt(1), nullptr);
}

TEST(CmdHandler, NameAtGivesTheTablesText)
{
    Clock clock;
    EXPECT_EQ(clock.CmdNameAt(1), Clock::s_cliEntries[1].name);
    EXPECT_EQ(clock.CmdNameAt(2), nullptr);
    EXPECT_EQ(clock.CmdNameAt(-1), nullptr);
    EXPECT_EQ(clock.CmdNameAt(4), nullptr);
}

TEST(CmdHandler, FindIsExact)
{
    Clock clock;
    EXPECT_EQ(clock.CmdFind("getnext"), &Clock::s_cliEntries[0]);
    for (const char* name : {"", "getn", "getnext2", "Getnext", "GETNEXT", "nameless"})
        EXPECT_EQ(clock.CmdFind(name), nullptr) << name;
    EXPECT_EQ(clock.CmdFind(BString("time\0x", 6)), nullptr);
    EXPECT_EQ(clock.CmdFind(BString()), nullptr);
}

TEST(CmdHandler, EmptyNameFindsNothingAlsoWhenARowHasIt)
{
    static const SCmdMapEntry s_rows[] = {{5, "", "unreachable", "<none>"},
                                          {-1, nullptr, nullptr, nullptr}};
    Clock clock;
    clock.map = s_rows;
    EXPECT_STREQ(clock.CmdNameAt(0), "");
    EXPECT_EQ(clock.CmdFind(""), nullptr);
    EXPECT_EQ(clock.CmdId(""), -1);
    EXPECT_EQ(clock.CmdGetDescr(""), nullptr);
    EXPECT_EQ(clock.CmdGetArgsDescr(""), nullptr);
}

TEST(CmdHandler, FirstRowOfANameWins)
{
    Clock clock;
    EXPECT_EQ(clock.CmdFind("time"), &Clock::s_cliEntries[1]);
    EXPECT_EQ(clock.CmdId("time"), 7);
}

TEST(CmdHandler, TextsOfACommand)
{
    Clock clock;
    EXPECT_EQ(clock.CmdId("getnext"), 0);
    EXPECT_STREQ(clock.CmdGetDescr("getnext"), "Get the next");
    EXPECT_STREQ(clock.CmdGetArgsDescr("getnext"), "<oid>");
    EXPECT_EQ(clock.CmdGetDescr("time"), nullptr);
    EXPECT_EQ(clock.CmdGetArgsDescr("time"), nullptr);
    EXPECT_EQ(clock.CmdGetDescr("getn"), nullptr);
    EXPECT_EQ(clock.CmdGetArgsDescr("getn"), nullptr);
    EXPECT_EQ(clock.CmdId("getn"), -1);
}

TEST(CmdHandler, IdOfAKnownCommandIsNotReported)
{
    Clock clock;
    ScriptedStream out;
    EXPECT_EQ(clock.CmdId("time", out), 7);
    EXPECT_EQ(out.texts.size(), 0u);
}

TEST(CmdHandler, IdOfAnUnknownCommandIsReportedAndZero)
{
    Clock clock;
    ScriptedStream out;
    EXPECT_EQ(clock.CmdId("getn", out), 0);
    EXPECT_THAT(out.texts, testing::ElementsAre("getn: unknown command.\n"));
    EXPECT_EQ(clock.CmdId(BString(), out), 0);
    EXPECT_THAT(out.texts,
                testing::ElementsAre("getn: unknown command.\n", ": unknown command.\n"));
}

TEST(CmdHandler, VirtualsKeepTheirSlots)
{
    using Id = int (ICmdHandler::*)(const BString&);
    EXPECT_EQ(VtableSlot(&ICmdStream::GetLine), 2);
    EXPECT_EQ(VtableSlot(&ICmdStream::Write), 3);
    EXPECT_EQ(VtableSlot(&ICmdHandler::CmdHndlrName), 2);
    EXPECT_EQ(VtableSlot(&ICmdHandler::CmdCount), 3);
    EXPECT_EQ(VtableSlot(&ICmdHandler::CmdNameAt), 4);
    EXPECT_EQ(VtableSlot(Id(&ICmdHandler::CmdId)), 5);
    EXPECT_EQ(VtableSlot(&ICmdHandler::CmdGetDescr), 6);
    EXPECT_EQ(VtableSlot(&ICmdHandler::CmdGetArgsDescr), 7);
    EXPECT_EQ(VtableSlot(&ICmdHandler::CmdExecute), 8);
    EXPECT_EQ(VtableSlot(&BCmdHandler::CmdExecute), 8);
    EXPECT_EQ(VtableSlot(&BCmdHandler::CmdGetHndlrName), 9);
    EXPECT_EQ(VtableSlot(&BCmdHandler::CmdGetMap), 10);
    EXPECT_EQ(VtableSlot(&BCmdHandler::CmdAt), -1);
    EXPECT_EQ(VtableSlot(&BCmdHandler::CmdFind), -1);
    EXPECT_EQ(sizeof(BCmdHandler), sizeof(void*));
}

} // namespace
} // namespace VLK
