// What the console commands get, getnext and set print: every answer and every
// complaint, to the letter.
#include "tests/support/CallbackHandler.h"
#include "tests/support/CommandConsole.h"
#include "tests/support/ListHandler.h"

#include <gtest/gtest.h>

#include <climits>

namespace VLK {
namespace Test {
namespace {

using Texts = CommandConsole::Texts;

constexpr char kGetUsage[] = "<oid> [<oid> ...] [-aIpAddress]";
constexpr char kSetUsage[] = "<oid> <tag> <value> [<oid> <tag> <value> ...] [-aIpAddress]";

// Counts what comes by the one entry of all requests.
class CountingHandler : public BMibHandler {
public:
    using BMibHandler::BMibHandler;
    int Query(int pduType, int transactionId, const BSecurityParams& security,
              const BString& context, BVarBindList& list, int& errorIndex) override
    {
        pduTypes.push_back(pduType);
        errorIndices.push_back(errorIndex);
        return BMibHandler::Query(pduType, transactionId, security, context, list, errorIndex);
    }
    std::vector<int> pduTypes;
    std::vector<int> errorIndices;
};

class HandlerCommands : public testing::Test {
protected:
    HandlerCommands() : handler(nullptr), module("1.3.9"), setModule("1.3.8"), console(handler)
    {
        module.Add("1.3.9.1.0", 17);
        module.Add("1.3.9.2.0", -3);
        module.AddCounter64("1.3.9.3.0");
        handler.RegisterSubtreeHandler(&module);
        handler.RegisterSubtreeHandler(&setModule);
    }
    ~HandlerCommands() override
    {
        handler.UnregisterSubtreeHandler(&module);
        handler.UnregisterSubtreeHandler(&setModule);
    }
    // What the command complains of, in one text and without a request.
    void ExpectComplaint(const std::string& line, const std::string& complaint)
    {
        handler.pduTypes.clear();
        EXPECT_EQ(Texts{complaint}, console.Type(line)) << line;
        EXPECT_EQ(0, console.result);
        EXPECT_TRUE(handler.pduTypes.empty()) << line;
    }

    CountingHandler handler;
    ListHandler module;
    CallbackHandler setModule;
    CommandConsole console;
};

TEST_F(HandlerCommands, TheTableHoldsThreeCommands)
{
    const SCmdMapEntry expected[] = {{0, "get", "Get", kGetUsage},
                                     {1, "getnext", "Get Next", kGetUsage},
                                     {2, "set", "Set", kSetUsage}};
    BCmdHandler& asConsole = handler;
    EXPECT_EQ(BMibHandler::s_cliEntries, asConsole.CmdGetMap());
    ASSERT_EQ(3, asConsole.CmdCount());
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(expected[i].id, asConsole.CmdAt(i)->id);
        EXPECT_STREQ(expected[i].name, asConsole.CmdAt(i)->name);
        EXPECT_STREQ(expected[i].description, asConsole.CmdAt(i)->description);
        EXPECT_STREQ(expected[i].argsDescription, asConsole.CmdAt(i)->argsDescription);
    }
    const SCmdMapEntry& end = BMibHandler::s_cliEntries[3];
    EXPECT_EQ(-1, end.id);
    EXPECT_EQ(nullptr, end.name);
    EXPECT_EQ(nullptr, end.description);
    EXPECT_EQ(nullptr, end.argsDescription);
}

TEST_F(HandlerCommands, ItsNameOnTheConsoleIsQuoted)
{
    BCmdHandler& asConsole = handler;
    EXPECT_STREQ("\"BMibHandler\"", asConsole.CmdHndlrName());
    EXPECT_EQ(BMibHandler::s_cmdHandlerName, asConsole.CmdGetHndlrName());
}

TEST_F(HandlerCommands, GetPrintsOneLinePerBindingInOrder)
{
    EXPECT_EQ((Texts{"1.3.9.2.0 = -3\n", "1.3.9.1.0 = 17\n", "1.3.9.2.0 = -3\n"}),
              console.Type("get 1.3.9.2.0 .1.3.9.1.0 1.3.9.2.0."));
    EXPECT_EQ(std::vector<int>{160}, handler.pduTypes);
    EXPECT_EQ(std::vector<int>{0}, handler.errorIndices);
    EXPECT_EQ(0, console.result);
}

TEST_F(HandlerCommands, GetNextPrintsTheSuccessors)
{
    EXPECT_EQ((Texts{"1.3.9.1.0 = 17\n", "1.3.9.2.0 = -3\n"}),
              console.Type("getnext 1.3.9 1.3.9.1.0"));
    EXPECT_EQ(std::vector<int>{161}, handler.pduTypes);
}

TEST_F(HandlerCommands, ALoneDotIsTheEmptyNameAndNothingFollowsIt)
{
    EXPECT_EQ(Texts{" = Null/noSuchObject\n"}, console.Type("get ."));
    EXPECT_EQ(Texts{" = Null/endOfMibView\n"}, console.Type("getnext ."));
    EXPECT_EQ(Texts{"1.3.9.1.0 = 17\n"}, console.Type("getnext 1")) << "a walk starts here";
}

TEST_F(HandlerCommands, SetPrintsWhatWasSet)
{
    EXPECT_EQ((Texts{"1.3.8.1 = 5\n", "1.3.8.2 = text\n"}),
              console.Type("set 1.3.8.1 2 5 1.3.8.2 4 text"));
    EXPECT_EQ(std::vector<int>{163}, handler.pduTypes);
    EXPECT_EQ(std::vector<int>{0}, handler.errorIndices);
}

TEST_F(HandlerCommands, WhatNoRegionServesIsNoSuchObjectAndNoError)
{
    EXPECT_EQ((Texts{"1.9.9 = Null/noSuchObject\n", "1.3.9.1.0 = 17\n"}),
              console.Type("get 1.9.9 1.3.9.1.0"));
    EXPECT_EQ(Texts{"1.3.9.7 = Null/noSuchInstance\n"}, console.Type("get 1.3.9.7"));
    EXPECT_EQ(Texts{"1.9.9 = Null/endOfMibView\n"}, console.Type("getnext 1.9.9"));
}

TEST_F(HandlerCommands, ProtocolSixKnowsCounter64)
{
    EXPECT_EQ(Texts{"1.3.9.3.0 = 4294967298\n"}, console.Type("get 1.3.9.3.0"));
    EXPECT_EQ(Texts{"1.3.9.3.0 = 4294967298\n"}, console.Type("getnext 1.3.9.2.0"));
}

TEST_F(HandlerCommands, AFailedRequestIsOneTextWithoutLineEnd)
{
    module.onGet = [](BVarBind& binding) {
        return TextOf(binding.Name()) == "1.3.9.2.0" ? eSnmpNoSuchName : eSnmpNoError;
    };
    EXPECT_EQ(Texts{"snmpErr: noSuchName at index 2"},
              console.Type("get 1.3.9.1.0 1.3.9.2.0 1.3.9.3.0"));
    EXPECT_EQ(Texts{"snmpErr: notWritable at index 1"}, console.Type("set 1.3.9.1.0 2 5"));
    EXPECT_EQ(Texts{"snmpErr: noSuchName at index 2"}, console.Type("set 1.3.8.1 2 5 1.9 2 5"));
}

struct SLabel {
    int status;
    const char* label;
};

const SLabel kLabels[] = {{1, "tooBig"},
                          {2, "noSuchName"},
                          {3, "badValue"},
                          {4, "readOnly"},
                          {5, "generalError"},
                          {6, "noAccess"},
                          {7, "wrongType"},
                          {8, "wrongLength"},
                          {9, "wrongEncoding"},
                          {10, "wrongValue"},
                          {11, "noCreation"},
                          {12, "inconsistentValue"},
                          {13, "resourcesUnavailable"},
                          {14, "commitFail"},
                          {15, "undoFail"},
                          {16, "authorizationError"},
                          {17, "notWritable"},
                          {18, "inconsistentName"},
                          {19, "? unknown error status?"},
                          {255, "? unknown error status?"},
                          {INT_MAX, "? unknown error status?"},
                          {-1, "? unknown error status?"},
                          {INT_MIN, "? unknown error status?"}};

TEST_F(HandlerCommands, EveryErrorStatusHasItsLabel)
{
    for (const SLabel& row : kLabels) {
        module.onGet = [&](BVarBind&) { return row.status; };
        EXPECT_EQ(Texts{std::string("snmpErr: ") + row.label + " at index 1"},
                  console.Type("get 1.3.9.1.0"));
        setModule.onSet = [&](unsigned, const BVarBindList&, ESnmpSetOpCode op, int& index) {
            index = 1;
            return op == eSetTest ? row.status : eSnmpNoError;
        };
        EXPECT_EQ(Texts{std::string("snmpErr: ") + row.label + " at index 2"},
                  console.Type("set 1.3.8.1 2 5 1.3.8.2 2 5"));
    }
}

TEST_F(HandlerCommands, AnyErrorIndexIsPrintedAsItIs)
{
    const BVarBindList list;
    ScriptedStream out;
    for (const int index : {0, 1, 100, INT_MAX, -1, INT_MIN})
        handler.CmdFormatResult(out, 2, index, list);
    EXPECT_EQ(
        (Texts{"snmpErr: noSuchName at index 0", "snmpErr: noSuchName at index 1",
               "snmpErr: noSuchName at index 100", "snmpErr: noSuchName at index 2147483647",
               "snmpErr: noSuchName at index -1", "snmpErr: noSuchName at index -2147483648"}),
        out.texts);
}

TEST_F(HandlerCommands, ASuccessOfNothingPrintsNothing)
{
    ScriptedStream out;
    handler.CmdFormatResult(out, 0, 7, BVarBindList());
    EXPECT_TRUE(out.texts.empty());
}

TEST_F(HandlerCommands, NamesArePrintedUnsignedAndValuesAreNot)
{
    const BObjectIdentifier big = MakeOid("1.3.4294967295");
    BVarBindList list;
    BObjectSyntax value;
    value.SetObjectId(big);
    list.Append(big, value);
    ScriptedStream out;
    handler.CmdFormatResult(out, 0, 0, list);
    EXPECT_EQ(Texts{"1.3.4294967295 = 1.3.-1\n"}, out.texts);
}

TEST_F(HandlerCommands, AValueIsWrittenWhole)
{
    const std::string bytes("ab\0cd\r\n\x7f", 8);
    BObjectSyntax value;
    value.SetOctets(StringOf(bytes));
    BVarBindList list;
    list.Append(MakeOid("1.3"), value);
    const std::string longText(70000, 'x');
    value.SetOctets(StringOf(longText));
    list.Append(MakeOid("1.4"), value);
    ScriptedStream out;
    handler.CmdFormatResult(out, 0, 0, list);
    EXPECT_EQ((Texts{"1.3 = " + bytes + "\n", "1.4 = " + longText + "\n"}), out.texts);
}

TEST_F(HandlerCommands, ArgumentsAreRequired)
{
    const std::string required = "argument(s) required.\nUsage ";
    ExpectComplaint("get", "get: " + required + "get " + kGetUsage);
    ExpectComplaint("getnext", "getnext: " + required + "getnext " + kGetUsage);
    ExpectComplaint("set", "set: " + required + "set " + kSetUsage);
    ExpectComplaint("get -a10.0.0.1 -x -5", "get: " + required + "get " + kGetUsage);
    ExpectComplaint("set -a10.0.0.1", "set: " + required + "set " + kSetUsage);
}

TEST_F(HandlerCommands, SetTakesTriples)
{
    const std::string complaint = std::string("set: invalid argument(s)\nUsage set ") + kSetUsage;
    ExpectComplaint("set 1.3.8.1", complaint);
    ExpectComplaint("set 1.3.8.1 2", complaint);
    ExpectComplaint("set 1.3.8.1 2 5 1.3.8.2", complaint);
    ExpectComplaint("set 1.3.8.1 2 5 1.3.8.2 2", complaint);
    ExpectComplaint("set x y z 4", complaint);
}

TEST_F(HandlerCommands, ANegativeNumberIsASwitch)
{
    const std::string complaint = std::string("set: invalid argument(s)\nUsage set ") + kSetUsage;
    ExpectComplaint("set 1.3.8.1 2 -5", complaint);
    ExpectComplaint("set 1.3.8.1 -2 5", complaint);
    ExpectComplaint("set 1.3.8.1 4 -hello", complaint);
    EXPECT_EQ(Texts{"1.3.8.1 = -\n"}, console.Type("set 1.3.8.1 4 -")) << "a lone dash is none";
    // What the wrapping of large numbers is good for.
    EXPECT_EQ(Texts{"1.3.8.1 = -5\n"}, console.Type("set 1.3.8.1 2 4294967291"));
}

TEST_F(HandlerCommands, ABadIdentifierIsNamed)
{
    for (const char* bad : {"x", "1..3", "1.3.x", "sysDescr.0", "1.12345678901", "1,3", "+1"}) {
        const std::string word = bad;
        const std::string complaint = ": invalid oid '" + word + "'";
        ExpectComplaint("get " + word, "get" + complaint);
        ExpectComplaint("get 1.3.9.1.0 " + word + " y", "get" + complaint);
        ExpectComplaint("getnext -a1.2.3.4 1.3 -q 1.4 " + word, "getnext" + complaint);
        ExpectComplaint("set " + word + " 2 5", "set" + complaint);
        ExpectComplaint("set 1.3.8.1 2 5 " + word + " 2 5", "set" + complaint);
        ExpectComplaint("set 1.3.8.1 -z 6 -y " + word, "set" + complaint);
    }
    EXPECT_EQ(Texts{"get: invalid oid ''"}, console.Run("get", {""}));
    EXPECT_EQ(Texts{"get: invalid oid ' '"}, console.Run("get", {"1.3", " "}));
}

TEST_F(HandlerCommands, ABadAddressIsNamed)
{
    for (const char* bad : {"256.1.1.1", "1.2.3", "1.2.3.4.5", "1.2.3.x", "1234567890.1.1.1", "x"})
        ExpectComplaint(std::string("set 1.3.8.1 2 5 1.3.8.1 64 ") + bad,
                        std::string("set: invalid ip address '") + bad + "'");
    EXPECT_EQ(Texts{"set: invalid ip address ''"}, console.Run("set", {"1.3.8.1", "64", ""}));
}

TEST_F(HandlerCommands, ABadTagIsNamed)
{
    for (const char* bad : {"0", "1", "3", "5", "7", "63", "69", "71", "128", "129", "130", "255",
                            "260", "+5", "x", "2147483648"}) {
        const std::string complaint = std::string("set: invalid tag '") + bad + "'";
        ExpectComplaint(std::string("set 1.3.8.1 ") + bad + " 5", complaint);
        ExpectComplaint(std::string("set 1.3.8.1 2 5 -q 1.3.8.1 ") + bad + " -a1 5", complaint);
    }
    EXPECT_EQ(Texts{"set: invalid tag ''"}, console.Run("set", {"1.3.8.1", "", "5"}));
}

TEST_F(HandlerCommands, TheFirstErrorIsTheOnePrinted)
{
    ExpectComplaint("set 1.3.8.1 64 x bad 99 x", "set: invalid ip address 'x'");
    ExpectComplaint("set 1.3.8.1 2 5 bad 99 x", "set: invalid oid 'bad'");
    ExpectComplaint("set 1.3.8.1 99 x bad 2 5", "set: invalid tag '99'");
    ExpectComplaint("get bad worse", "get: invalid oid 'bad'");
}

TEST_F(HandlerCommands, AnUnknownWordIsReportedAndRunsAsGet)
{
    EXPECT_EQ((Texts{"fetch: unknown command.\n", "1.3.9.1.0 = 17\n"}),
              console.Type("fetch 1.3.9.1.0"));
    EXPECT_EQ(std::vector<int>{160}, handler.pduTypes);
    EXPECT_EQ((Texts{"getn: unknown command.\n", "getn: invalid oid 'x'"}), console.Type("getn x"));
    EXPECT_EQ((Texts{"SET: unknown command.\n", "SET: argument(s) required.\nUsage SET "}),
              console.Type("SET"))
        << "a command that is in no table has no usage";
    EXPECT_EQ((Texts{": unknown command.\n", ": argument(s) required.\nUsage  "}),
              console.Run("", {}));
}

// A host may give a handler of its own more commands.
class ExtendedHandler : public CountingHandler {
public:
    using CountingHandler::CountingHandler;
    const SCmdMapEntry* CmdGetMap() const override { return s_entries; }
    static const SCmdMapEntry s_entries[];
};
const SCmdMapEntry ExtendedHandler::s_entries[] = {{-2, "hidden", nullptr, nullptr},
                                                   {2, "put", nullptr, nullptr},
                                                   {3, "more", nullptr, nullptr},
                                                   {-1, nullptr, nullptr, nullptr}};

TEST_F(HandlerCommands, IdsOutsideTheTableDoNothing)
{
    ExtendedHandler extended(nullptr);
    CommandConsole other(extended);
    for (const char* line : {"hidden", "hidden 1.3", "more", "more 1.3"}) {
        EXPECT_TRUE(other.Type(line).empty()) << line;
        EXPECT_EQ(0, other.result);
    }
    EXPECT_TRUE(extended.pduTypes.empty());
}

TEST_F(HandlerCommands, ACommandWithoutUsageTextIsReportedWithoutIt)
{
    ExtendedHandler extended(nullptr);
    CommandConsole other(extended);
    EXPECT_EQ(Texts{"put: argument(s) required.\nUsage put "}, other.Type("put"));
    EXPECT_EQ(Texts{"put: invalid argument(s)\nUsage put "}, other.Type("put 1.3"));
}

TEST_F(HandlerCommands, FormatErrCountsPlainArgumentsOnly)
{
    const BStringArray args = ArgsOf({"-a1.2.3.4", "one", "-x", "-", "two"});
    ScriptedStream out;
    for (const int index : {0, 1, 2, 3, -1, INT_MAX, INT_MIN})
        handler.CmdFormatErr(out, -5, "get", args, index);
    handler.CmdFormatErr(out, -6, "set", args, 2);
    handler.CmdFormatErr(out, -7, "set", args, 0);
    EXPECT_EQ(
        (Texts{"get: invalid oid 'one'", "get: invalid oid '-'", "get: invalid oid 'two'",
               "get: invalid oid ''", "get: invalid oid ''", "get: invalid oid ''",
               "get: invalid oid ''", "set: invalid ip address 'two'", "set: invalid tag 'one'"}),
        out.texts);
}

TEST_F(HandlerCommands, FormatErrKnowsNoOtherCodes)
{
    ScriptedStream out;
    for (const int code : {0, 1, -1, -2, -8, INT_MIN, INT_MAX}) {
        out.texts.clear();
        handler.CmdFormatErr(out, code, "get", BStringArray(), 0);
        EXPECT_EQ(Texts{"get: ?unknown err?"}, out.texts) << code;
    }
}

TEST_F(HandlerCommands, ARequestMayHaveAHundredBindingsAndMore)
{
    constexpr int kCount = 150;
    std::vector<std::string> names, triples;
    Texts expectedGet, expectedSet;
    for (int i = 0; i < kCount; ++i) {
        const std::string number = std::to_string(i);
        module.Add(("1.3.9.5." + number).c_str(), i);
        names.push_back("1.3.9.5." + number);
        expectedGet.push_back("1.3.9.5." + number + " = " + number + "\n");
        triples.insert(triples.end(), {"1.3.8." + number, "66", number});
        expectedSet.push_back("1.3.8." + number + " = " + number + "\n");
    }
    EXPECT_EQ(expectedGet, console.Run("get", names));
    EXPECT_EQ(expectedSet, console.Run("set", triples));
    names[140] = "bad";
    EXPECT_EQ(Texts{"get: invalid oid 'bad'"}, console.Run("get", names));
    triples[3 * 149 + 1] = "99";
    EXPECT_EQ(Texts{"set: invalid tag '99'"}, console.Run("set", triples));
    triples.pop_back();
    EXPECT_EQ(Texts{std::string("set: invalid argument(s)\nUsage set ") + kSetUsage},
              console.Run("set", triples));
}

} // namespace
} // namespace Test
} // namespace VLK
