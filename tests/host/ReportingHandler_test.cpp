// What the operator reads about refusals.
#include "host/access/ReportingHandler.h"

#include "host/Options.h"
#include "host/RequestTransaction.h"
#include "host/config/ConfigFile.h"

#include "tests/support/ListHandler.h"
#include "tests/support/TempDir.h"
#include "tests/support/Threads.h"

using namespace VLK;
using namespace VLK::host;
using VLK::Test::ListHandler;
using VLK::Test::MakeOid;

namespace {

const char kConfiguration[] = R"(
contexts = ["ports"]

[[view]]
name = "mine"
include = ["1.3.6.1.4.1.32473.1"]
exclude = ["1.3.6.1.4.1.32473.1.2"]

[[community]]
name = "look"
read = "mine"

[[group]]
name = "ops"
members = ["blind", "noc", { securityName = "old", securityModel = "SNMPv1" }]

[[access]]
group = "ops"
securityModel = "SNMPv2c"
write = "mine"

[[group]]
name = "idle"
members = ["idle"]
)";

class NoSaves : public ISetSaves {
public:
    void Hold() override {}
    bool SaveHeld() override { return true; }
};

class ReportingHandler : public testing::Test {
protected:
    ReportingHandler()
    {
        for (const char* name :
             {"1.3.6.1.4.1.32473.1.1.0", "1.3.6.1.4.1.32473.1.2.0", "1.3.6.1.4.1.32473.1.3.0"})
            module.Add(name, 1);
        module.keepsLog = false; // it has no lock
        handler.RegisterSubtreeHandler(&module);
    }

    static BSecurityParams Security(const char* name, int model)
    {
        BSecurityParams security;
        security.securityModel = model;
        security.securityName = BString(name);
        security.securityLevel = eNoAuthNoPriv;
        return security;
    }

    // The line that a request of the wire leaves, or "".
    std::string Wire(int pduType, EProtocol protocol, const char* name,
                     const std::vector<const char*>& objects, const char* context = "")
    {
        SRequest request;
        request.protocol = protocol;
        request.remote.Parse("udp6:[2001:db8::1]:4000");
        BSecurityParams security = Security(name, protocol == eSnmpV1 ? 1 : 2);
        BString contextName(context);
        BRequestTransaction transaction(request, security, contextName);
        return Ask(pduType, static_cast<int>(transaction.Id()), security, contextName, objects);
    }
    std::string Console(int pduType, const char* name, int model,
                        const std::vector<const char*>& objects)
    {
        BTransaction transaction(6);
        unsigned id = BTransactions::GetInstance()->StartTransaction(&transaction);
        std::string line =
            Ask(pduType, static_cast<int>(id), Security(name, model), BString(), objects);
        BTransactions::GetInstance()->EndTransaction(id);
        return line;
    }
    std::string Ask(int pduType, int id, const BSecurityParams& security, const BString& context,
                    const std::vector<const char*>& objects)
    {
        BVarBindList list;
        for (const char* object : objects)
            list.Append(MakeOid(object));
        int errorIndex = 0;
        testing::internal::CaptureStderr();
        status = handler.Query(pduType, id, security, context, list, errorIndex);
        std::string line = testing::internal::GetCapturedStderr();
        first = list.Count() ? VLK::Test::TextOf(list[0].Name()) : "";
        return line.substr(0, line.find('\n'));
    }

    NoSaves saves;
    BAccess access{ReadConfigText(kConfiguration, "f"), nullptr};
    ListHandler module{"1.3.6.1.4.1.32473.1"};
    BReportingHandler handler{access, saves};
    int status = 0;
    std::string first;
};

const char* const kName = "test_host: ";

} // namespace

TEST_F(ReportingHandler, ARefusedGetTellsWhoWhatAndWhy)
{
    EXPECT_EQ(
        Wire(ePduGet, eSnmpV2c, "look", {"1.3.6.1.4.1.32473.1.1.0", "1.3.6.1.4.1.32473.1.2.0"}),
        kName + std::string("refused get of 1.3.6.1.4.1.32473.1.2.0 to 'look' with SNMPv2c "
                            "from udp6:[2001:db8::1]:4000: it is not in the view 'mine'"));
    EXPECT_EQ(status, eSnmpAuthorizationError);
}

TEST_F(ReportingHandler, EachReasonHasItsOwnWords)
{
    struct SCase {
        int pduType;
        EProtocol protocol;
        const char* name;
        const char* context;
        const char* who;
        const char* why;
    };
    const SCase cases[] = {
        {ePduGet, eSnmpV1, "look", "none",
         "'look' with SNMPv1 from udp6:[2001:db8::1]:4000 in "
         "context 'none'",
         "there is no such context"},
        {ePduGet, eSnmpV2c, "eve", "", "'eve' with SNMPv2c from udp6:[2001:db8::1]:4000",
         "it is in no group"},
        {ePduGet, eSnmpV2c, "old", "", "'old' with SNMPv2c from udp6:[2001:db8::1]:4000",
         "it is in no group"},
        {ePduGet, eSnmpV1, "old", "", "'old' with SNMPv1 from udp6:[2001:db8::1]:4000",
         "its group 'ops' has no access entry for it"},
        {ePduGet, eSnmpV2c, "noc", "ports",
         "'noc' with SNMPv2c from udp6:[2001:db8::1]:4000 in context 'ports'",
         "its group 'ops' has no access entry for it"},
        {ePduGet, eSnmpV2c, "noc", "", "'noc' with SNMPv2c from udp6:[2001:db8::1]:4000",
         "its group 'ops' has no read view"},
        {ePduSet, eSnmpV2c, "look", "ports",
         "'look' with SNMPv2c from udp6:[2001:db8::1]:4000 in context 'ports'",
         "its group 'look' has no write view"},
        {ePduSet, eSnmpV2c, "noc", "", "'noc' with SNMPv2c from udp6:[2001:db8::1]:4000",
         "it is not in the view 'mine'"},
    };
    for (const SCase& test : cases) {
        std::string what = test.pduType == ePduGet ? "get" : "set";
        EXPECT_EQ(Wire(test.pduType, test.protocol, test.name, {"1.3.6.1.2.1.1.1.0"}, test.context),
                  kName + ("refused " + what + " of 1.3.6.1.2.1.1.1.0 to ") + test.who + ": " +
                      test.why);
        EXPECT_EQ(status, eSnmpAuthorizationError);
    }
}

TEST_F(ReportingHandler, AViewWithoutSubtreesIsNamed)
{
    access.Views().Clear();
    EXPECT_EQ(Wire(ePduGet, eSnmpV1, "look", {"1.3.6.1.4.1.32473.1.1.0"}),
              kName + std::string("refused get of 1.3.6.1.4.1.32473.1.1.0 to 'look' with SNMPv1 "
                                  "from udp6:[2001:db8::1]:4000: there is no view 'mine'"));
}

TEST_F(ReportingHandler, AnInstanceSteppedOverLeavesNoLine)
{
    for (EProtocol protocol : {eSnmpV1, eSnmpV2c}) {
        for (int type : {ePduGetNext, ePduGetBulk}) {
            EXPECT_EQ(Wire(type, protocol, "look", {"1.3.6.1.4.1.32473.1.1.0"}), "");
            EXPECT_EQ(status, 0);
            EXPECT_EQ(first, "1.3.6.1.4.1.32473.1.3.0");
        }
        EXPECT_EQ(Wire(ePduGetNext, protocol, "look", {"1.3.6.1.4.1.32473.1.3.0"}), "")
            << "the end of a view is no refusal";
        EXPECT_EQ(first, "1.3.6.1.4.1.32473.1.3.0");
    }
}

TEST_F(ReportingHandler, AWalkThatMaySeeNothingIsTold)
{
    for (EProtocol protocol : {eSnmpV1, eSnmpV2c}) {
        std::string with = protocol == eSnmpV1 ? "SNMPv1" : "SNMPv2c";
        EXPECT_EQ(Wire(ePduGetNext, protocol, "idle", {"1.3.6.1.4.1"}),
                  kName + ("refused getnext of 1.3.6.1.4.1 to 'idle' with " + with +
                           " from udp6:[2001:db8::1]:4000: its group 'idle' has no access entry "
                           "for it"));
    }
    EXPECT_EQ(Wire(ePduGetBulk, eSnmpV2c, "noc", {"1.3.6.1.4.1"}),
              kName + std::string("refused getbulk of 1.3.6.1.4.1 to 'noc' with SNMPv2c from "
                                  "udp6:[2001:db8::1]:4000: its group 'ops' has no read view"));
    EXPECT_EQ(status, 0);
    EXPECT_EQ(first, "1.3.6.1.4.1");
}

TEST_F(ReportingHandler, WhatTheOperatorTriesAtTheConsoleIsToldToo)
{
    EXPECT_EQ(Console(ePduGet, "look", 3, {"1.3.6.1.4.1.32473.1.1.0"}),
              kName + std::string("refused get of 1.3.6.1.4.1.32473.1.1.0 to 'look' with USM at "
                                  "the console: it is in no group"));
    EXPECT_EQ(Console(ePduGet, "look", 2, {"1.3.6.1.4.1.32473.1.1.0"}), "");
    EXPECT_EQ(status, 0);
}

TEST_F(ReportingHandler, AllowedRequestsAndOtherErrorsLeaveNoLine)
{
    EXPECT_EQ(Wire(ePduGet, eSnmpV2c, "look", {"1.3.6.1.4.1.32473.1.1.0"}), "");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(Wire(ePduSet, eSnmpV2c, "noc", {"1.3.6.1.4.1.32473.1.1.0"}), "");
    EXPECT_EQ(status, eSnmpNotWritable);
    EXPECT_EQ(Wire(ePduGet, eSnmpV2c, "look", {}), "");
}

TEST_F(ReportingHandler, LinesAreLimited)
{
    int lines = 0;
    for (int i = 0; i < 100; ++i)
        lines += Wire(ePduGet, eSnmpV2c, "eve", {"1.3"}).empty() ? 0 : 1;
    EXPECT_EQ(lines, static_cast<int>(BLimitedLog::kBurst));
}

TEST_F(ReportingHandler, RequestsSideBySideAreDecidedEachForItself)
{
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (const char* name : {"look", "noc", "eve", "look"}) {
        threads.emplace_back([this, name, &wrong] {
            bool maySee = std::string(name) == "look";
            for (int i = 0; i < 300; ++i) {
                BTransaction transaction(1);
                unsigned id = BTransactions::GetInstance()->StartTransaction(&transaction);
                BVarBindList list;
                list.Append(MakeOid("1.3.6.1.4.1.32473.1.1.0"));
                int errorIndex = 0;
                int get = handler.Query(ePduGet, static_cast<int>(id), Security(name, 2), BString(),
                                        list, errorIndex);
                handler.Query(ePduGetNext, static_cast<int>(id), Security(name, 2), BString(), list,
                              errorIndex);
                std::string next = VLK::Test::TextOf(list[0].Name());
                std::string expected =
                    maySee ? "1.3.6.1.4.1.32473.1.3.0" : "1.3.6.1.4.1.32473.1.1.0";
                if (get != (maySee ? 0 : eSnmpAuthorizationError) || next != expected)
                    ++wrong;
                BTransactions::GetInstance()->EndTransaction(id);
            }
        });
    }
    // Rows of views that nobody asked for come and go.
    threads.emplace_back([this] {
        for (int i = 0; i < 300; ++i) {
            BObjectIdentifier index;
            access.Views().Insert(BString("other"), MakeOid("1.3"), BOctetString(), eFilterIncluded,
                                  eStorageVolatile, eRowActive, false);
            BFilterTable::MakeIndex(BString("other"), MakeOid("1.3"), false, index);
            delete access.Views().Remove(index);
        }
    });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}
