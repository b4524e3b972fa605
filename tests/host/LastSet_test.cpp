// The last SET, as the console tells it.
#include "VerbsTest.h"

#include <vkmibh/testing/recorder.h>

#include <algorithm>
#include <regex>

#include <gtest/gtest.h>

using namespace VLK;
using namespace VLK::host;
using VLK::Test::RecorderHandler;

namespace {

const char kConfiguration[] = R"(
contexts = ["sun"]

[[view]]
name = "mine"
include = ["1.3.6.1.4.1.32473.1"]

[[community]]
name = "secret"
read = "mine"
write = "everything"

[[community]]
name = "hidden"
securityName = "noc"

[[community]]
name = "look"
read = "mine"

[[community]]
name = "part"
write = "mine"

[[group]]
name = "ops"
members = ["noc"]

[[access]]
group = "ops"
write = "everything"
)";

class LastSet : public VerbsTest {
protected:
    LastSet() : VerbsTest(kConfiguration)
    {
        handler.RegisterSubtreeHandler(&first);
        handler.RegisterSubtreeHandler(&second);
    }

    // Two bindings of A, one of B.
    static SRequest Three(const std::string& community, EProtocol protocol = eSnmpV2c)
    {
        SRequest request = WireRequest(community, ePduSet, "1.3.6.1.4.1.32473.1.1.0", protocol);
        Add(request, "1.3.6.1.4.1.32473.1.2.0", "two");
        Add(request, "1.3.6.1.4.1.32473.2.1.0", "three");
        return request;
    }
    void Set(SRequest request)
    {
        SResponse response;
        ASSERT_TRUE(dispatcher.Handle(request, response));
    }
    // Without the time.
    std::string Lines()
    {
        const std::string text = Type("lastset");
        static const std::regex time(R"(^at           20\d\d-\d\d-\d\d \d\d:\d\d:\d\d\n)");
        EXPECT_TRUE(std::regex_search(text, time)) << text;
        return std::regex_replace(text, time, "");
    }

    VLK::Test::SetLog log;
    RecorderHandler first{'A', "1.3.6.1.4.1.32473.1", log};
    RecorderHandler second{'B', "1.3.6.1.4.1.32473.2", log};
};

const std::string kBindings = R"(bindings     1. 1.3.6.1.4.1.32473.1.1.0 = x
             2. 1.3.6.1.4.1.32473.1.2.0 = two
             3. 1.3.6.1.4.1.32473.2.1.0 = three
)";
const std::string kSecret = "by           a community (not shown) with SNMPv2c from "
                            "udp:127.0.0.1:4000\n";

} // namespace

TEST_F(LastSet, ThereWasNone)
{
    EXPECT_EQ(Type("lastset"), "there was no set yet\n");
    EXPECT_EQ(Type("lastset 1"), "lastset: invalid argument(s)\nUsage lastset\n");
}

TEST_F(LastSet, ThatWentWell)
{
    Set(Three("secret"));
    EXPECT_EQ(Lines(), kSecret + kBindings + R"(test         bindings 1 to 2 of A: done
             binding 3 of B: done
commit       bindings 1 to 2 of A: done
             binding 3 of B: done
undo         not run
cleanup      bindings 1 to 2 of A: done
             binding 3 of B: done
answer       Success
)");
}

TEST_F(LastSet, ThatFailedItsTest)
{
    first.failAt = {{eSetTest, 1}};
    first.failWith = eSnmpWrongValue;
    Set(Three("secret", eSnmpV1));
    EXPECT_EQ(Lines(), R"(by           a community (not shown) with SNMPv1 from udp:127.0.0.1:4000
)" + kBindings + R"(test         bindings 1 to 2 of A: wrongValue at binding 2
commit       not run
undo         not run
cleanup      bindings 1 to 2 of A: done
answer       wrongValue at binding 2, sent as badValue
)");
}

TEST_F(LastSet, ThatFailedItsCommit)
{
    second.failAt = {{eSetCommit, 2}};
    Set(Three("secret"));
    EXPECT_EQ(Lines(), kSecret + kBindings + R"(test         bindings 1 to 2 of A: done
             binding 3 of B: done
commit       bindings 1 to 2 of A: done
             binding 3 of B: commitFail at binding 3
undo         bindings 1 to 2 of A: done
             binding 3 of B: done
cleanup      bindings 1 to 2 of A: done
             binding 3 of B: done
answer       commitFail at binding 3
)");
}

TEST_F(LastSet, ThatCouldNotBeUndone)
{
    second.failAt = {{eSetCommit, 2}};
    first.failAt = {{eSetUndo, 1}};
    first.failWith = eSnmpUndoFailed;
    Set(Three("secret"));
    EXPECT_EQ(Lines(), kSecret + kBindings + R"(test         bindings 1 to 2 of A: done
             binding 3 of B: done
commit       bindings 1 to 2 of A: done
             binding 3 of B: commitFail at binding 3
undo         bindings 1 to 2 of A: undoFail at binding 2
cleanup      bindings 1 to 2 of A: done
             binding 3 of B: done
answer       undoFail at no binding
)");
}

TEST_F(LastSet, WhoseCleanupThrew)
{
    first.failAt = {{eSetCleanup, 0}};
    first.throwInstead = true;
    Set(Three("secret"));
    EXPECT_EQ(Line("lastset", "cleanup"), "bindings 1 to 2 of A: failed, the module threw");
    EXPECT_EQ(Line("lastset", "answer"), "generalError at binding 1");
}

TEST_F(LastSet, ThatWasRefused)
{
    Set(Three("part"));
    EXPECT_EQ(Line("lastset", "test"), "not run");
    EXPECT_EQ(Line("lastset", "cleanup"), "not run");
    EXPECT_EQ(Line("lastset", "answer"),
              "authorizationError at binding 3, sent as noAccess: it is not in the write view");
    Set(Three("look"));
    EXPECT_EQ(Line("lastset", "answer"), "authorizationError at binding 1, sent as noAccess: the "
                                         "group has no write view, or one without rows");
}

TEST_F(LastSet, OutsideOfAllRegions)
{
    Set(WireRequest("secret", ePduSet, "1.3.6.1.99.0"));
    EXPECT_EQ(Line("lastset", "test"), "not run");
    EXPECT_EQ(Line("lastset", "answer"), "noSuchName at binding 1, sent as noCreation");
}

TEST_F(LastSet, ThatCouldNotBeSaved)
{
    saves.works = false;
    Set(Three("secret"));
    EXPECT_EQ(Line("lastset", "answer"), "commitFail at binding 3: it could not be saved");
    EXPECT_EQ(Line("lastset", "undo"), "bindings 1 to 2 of A: done");
}

TEST_F(LastSet, OfACommunityWithANameForItAndOfTheConsole)
{
    Set(Three("hidden"));
    EXPECT_EQ(Line("lastset", "by"), "'noc' with SNMPv2c from udp:127.0.0.1:4000");
    VLK::Test::ScriptedStream out;
    const BStringArray words = VLK::Test::ArgsOf({"1.3.6.1.4.1.32473.1.1.0", "2", "5"});
    handler.CmdExecute(out, BString("set"), words, console, context);
    EXPECT_EQ(Line("lastset", "by"), "the operator with USM at the console");
    console.securityName = BString("noc");
    console.securityModel = eModelV2c;
    handler.CmdExecute(out, BString("set"), words, console, BString("moon"));
    EXPECT_EQ(Line("lastset", "by"), "'noc' with SNMPv2c at the console in context 'moon'");
    EXPECT_EQ(Line("lastset", "answer"),
              "authorizationError at binding 1: there is no such context");
}

TEST_F(LastSet, OfWhoHasNoRightsIsToldSo)
{
    VLK::Test::ScriptedStream out;
    const BStringArray words = VLK::Test::ArgsOf({"1.3.6.1.4.1.32473.1.1.0", "2", "5"});
    console.securityModel = eModelV2c;
    console.securityName = BString("nobody");
    handler.CmdExecute(out, BString("set"), words, console, context);
    EXPECT_EQ(Line("lastset", "answer"),
              "authorizationError at binding 1: who asked is in no group");
    console.securityName = BString("noc");
    handler.CmdExecute(out, BString("set"), words, console, BString("sun"));
    EXPECT_EQ(Line("lastset", "answer"),
              "authorizationError at binding 1: no access entry of the group fits");
}

TEST_F(LastSet, WithoutBindings)
{
    SRequest request = Three("secret");
    request.bindings = BVarBindList();
    Set(std::move(request));
    EXPECT_EQ(Line("lastset", "bindings"), "none");
    EXPECT_EQ(Line("lastset", "answer"), "Success");
}

TEST_F(LastSet, OfManyBindingsAndRunsIsCutAndTheFailureIsShown)
{
    SRequest request = WireRequest("secret", ePduSet, "1.3.6.1.4.1.32473.1.0");
    for (int i = 1; i < 1000; ++i)
        Add(request, i % 2 ? "1.3.6.1.4.1.32473.2.0" : "1.3.6.1.4.1.32473.1.0");
    second.failAt = {{eSetCommit, 901}};
    Set(std::move(request));
    const std::string text = Type("lastset");
    EXPECT_LT(std::count(text.begin(), text.end(), '\n'), 100);
    EXPECT_NE(text.find("            20. 1.3.6.1.4.1.32473.2.0 = x\n             and 980 more\n"),
              text.npos)
        << text;
    EXPECT_NE(text.find("             binding 16 of B: done\n             and 984 more runs of "
                        "bindings\ncommit       "),
              text.npos)
        << text;
    EXPECT_NE(text.find("             and 886 more runs of bindings\n             binding 902 of "
                        "B: commitFail at binding 902\n"),
              text.npos)
        << text;
}

TEST_F(LastSet, WithALongValueIsCut)
{
    SRequest request = WireRequest("secret", ePduSet, "1.3.6.1.4.1.32473.1.0");
    Add(request, "1.3.6.1.4.1.32473.1.1", std::string(1000, 'a').c_str());
    Set(std::move(request));
    EXPECT_NE(Type("lastset").find("= " + std::string(256, 'a') + " (and 744 octets more)\n"),
              std::string::npos);
    Set(Three("secret"));
    EXPECT_EQ(Lines().find("octets more"), std::string::npos);
    request = WireRequest("secret", ePduSet, "1.3.6.1.4.1.32473.1.0");
    request.bindings[0].Value().SetOpaque(BOctetString(BString(std::string(257, 'b').c_str())));
    Set(std::move(request));
    EXPECT_NE(Type("lastset").find(" (and 1 octets more)\n"), std::string::npos);
}
