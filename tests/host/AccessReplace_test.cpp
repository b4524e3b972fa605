// Rights that are replaced while requests are decided by them.
#include "host/access/Access.h"
#include "tests/support/FailingAlloc.h"
#include "tests/support/Oids.h"
#include "tests/support/Threads.h"

#include <gtest/gtest.h>
#include <vector>

using namespace VLK;
using namespace VLK::host;
using namespace VLK::Test;

namespace {

const char* const kFirst = "1.3.6.1.2.1.1.1.0";
const char* const kSecond = "1.3.6.1.2.1.1.5.0";

// `one` reads one of the two objects, by a view of always the same name.
SConfiguration Showing(const char* object)
{
    SConfiguration configuration;
    SView view;
    view.name = "v";
    view.families.push_back({MakeOid(object), BOctetString(), eFilterIncluded});
    configuration.views.push_back(view);
    AddCommunity(configuration, {"one", "one", "", BNetwork::Anywhere()}, {"v", "", ""});
    configuration.alarms.security = SecurityOf(configuration.communities[0], eSnmpV2c);
    return configuration;
}

// Tells it also when something is thrown.
struct FailedAfter {
    FailedAfter(const FailingAlloc& watched, bool& failed) : fail(watched), result(failed) {}
    ~FailedAfter() { result = fail.Failed(); }
    const FailingAlloc& fail;
    bool& result;
};

class AccessReplace : public testing::Test {
protected:
    bool Shows(const char* object) const
    {
        const BRightsOfRequest rights(access);
        return rights->vacm.Decide(one, eViewRead, BString(), MakeOid(object)).answer ==
               eVacmAllowed;
    }
    // As the library asks.
    bool Allows(const char* object)
    {
        return access.CheckAccess(one, eAccessRead, BString(), BVarBind(MakeOid(object))) == 0;
    }

    BSecurityParams one = SecurityOf({"one", "one", "", {}}, eSnmpV2c);
    BAccess access{Showing(kFirst), nullptr};
};

} // namespace

TEST_F(AccessReplace, RequestsThatComeFindTheNewRightsAndOthersKeepTheirs)
{
    {
        const BRightsOfRequest begun(access);
        access.Replace(Showing(kSecond));
        for (int i = 0; i < 3; ++i) {
            EXPECT_TRUE(Shows(kFirst)) << "one inside another has the same";
            EXPECT_FALSE(Shows(kSecond));
            EXPECT_TRUE(Allows(kFirst));
            EXPECT_FALSE(Allows(kSecond));
            access.Replace(Showing(i % 2 ? kFirst : kSecond)); // once more, and back
        }
    }
    EXPECT_TRUE(Shows(kSecond));
    EXPECT_FALSE(Shows(kFirst));
    EXPECT_TRUE(Allows(kSecond));
    EXPECT_FALSE(Allows(kFirst));
}

// A requester who is expected is decided about like any other, and nobody else for him.
TEST_F(AccessReplace, WhoIsExpectedHasNoOtherRights)
{
    SConfiguration configuration = Showing(kFirst);
    configuration.contexts.emplace_back("elsewhere");
    configuration.groups.back().access[0].isPrefix = false; // in the context without a name
    configuration.groups.back().access[0].views[eViewWrite] = "w";
    SView other;
    other.name = "w";
    other.families.push_back({MakeOid(kSecond), BOctetString(), eFilterIncluded});
    configuration.views.push_back(other);
    AddCommunity(configuration, {"two", "two", "", BNetwork::Anywhere()}, {"w", "", ""});
    access.Replace(configuration);

    const BSecurityParams two = SecurityOf({"two", "two", "", {}}, eSnmpV2c);
    const BSecurityParams sameAsOne = one;
    const BString here;
    const BString alsoHere;
    const BString elsewhere("elsewhere");
    const auto expectSame = [&] {
        for (const BSecurityParams* security :
             std::vector<const BSecurityParams*>{&one, &two, &sameAsOne}) {
            for (const BString* context : {&here, &alsoHere, &elsewhere}) {
                for (EAccessKind kind : {eAccessRead, eAccessWrite}) {
                    for (const char* object : {kFirst, kSecond}) {
                        const BVarBind asked(MakeOid(object));
                        EXPECT_EQ(
                            access.CheckAccess(*security, kind, *context, asked),
                            access.Current()->vacm.CheckAccess(*security, kind, *context, asked));
                    }
                }
            }
        }
    };
    BRightsOfRequest rights(access);
    for (EViewType type : {eViewRead, eViewWrite}) {
        rights.Expect(one, type, here);
        const BRightsOfRequest inside(access);
        ReplaceViews(access.Views(), configuration.views);
        EXPECT_TRUE(Allows(kFirst));
        expectSame();
        // What managers change counts at once.
        ReplaceViews(access.Views(), {});
        EXPECT_FALSE(Allows(kFirst));
        expectSame();
    }
}

TEST_F(AccessReplace, OldRightsGoWithTheirLastRequest)
{
    std::weak_ptr<SRights> first;
    {
        const BRightsOfRequest begun(access);
        first = access.Current();
        access.Replace(Showing(kSecond));
        EXPECT_FALSE(first.expired());
    }
    EXPECT_TRUE(first.expired());
}

TEST_F(AccessReplace, TheRightsOfOneAgentAreNotThoseOfAnother)
{
    BAccess other(Showing(kSecond), nullptr);
    const BRightsOfRequest begun(access);
    EXPECT_EQ(BRightsOfRequest::OfThisThread(other), nullptr);
    EXPECT_NE(other.CheckAccess(one, eAccessRead, BString(), BVarBind(MakeOid(kFirst))), 0);
    EXPECT_TRUE(Allows(kFirst));
}

// Without memory the old rights stay, whole.
TEST_F(AccessReplace, WithoutMemoryNothingIsReplaced)
{
    const SConfiguration first = Showing(kFirst);
    const SConfiguration second = Showing(kSecond);
    for (FailingAlloc::EThen then : {FailingAlloc::eAllLater, FailingAlloc::eNextOnly}) {
        bool hasFailed = true;
        for (int allowed = 0; hasFailed; ++allowed) {
            bool isDone = true;
            access.Replace(first);
            try {
                FailingAlloc fail(allowed, then);
                FailedAfter failed(fail, hasFailed);
                access.Replace(second);
            } catch (const std::bad_alloc&) {
                isDone = false;
            }
            EXPECT_EQ(Shows(kFirst), !isDone) << allowed;
            EXPECT_EQ(Shows(kSecond), isDone) << allowed;
        }
    }
}

TEST_F(AccessReplace, NoRequestIsDecidedByAMixture)
{
    std::atomic<bool> isOver{false};
    std::atomic<int> mixed{0};
    std::atomic<int> asked{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i)
        threads.emplace_back([&] {
            while (!isOver) {
                const BRightsOfRequest request(access);
                const bool first = Shows(kFirst);
                for (int again = 0; again < 4; ++again)
                    mixed += Allows(kSecond) == first || Shows(kFirst) != first;
                ++asked;
            }
        });
    EXPECT_TRUE(Eventually([&] { return asked > 100; }));
    for (int i = 0; i < 500; ++i)
        access.Replace(Showing(i % 2 ? kFirst : kSecond));
    isOver = true;
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(mixed, 0);
}
