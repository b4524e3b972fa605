// SETs of view families whose allocations fail one after the other.
#include "modules/ViewTreeFamily.h"
#include <vkmibh/testing/module.h>

#include "tests/support/AllocationSweep.h"
#include "tests/support/ViewRows.h"

#include <gtest/gtest.h>

using namespace VLK;
using namespace VLK::Test;
using namespace VLK::modules;

namespace {

constexpr const char* kEntry = "1.3.6.1.6.3.16.1.5.2.1";
enum EColumn { eMask = 3, eType = 4, eStatus = 6 };

// The rows "old" and "gone", and a SET that is ready to be asked for.
struct STable {
    STable()
    {
        EXPECT_TRUE(Insert(views, {"gone", "1.2"}));
        EXPECT_TRUE(Insert(views, {"old", "1.3.6", eFilterIncluded, {0xf0, 1, 2, 3, 4}}));
        before = client.Walk();
    }
    void Add(EColumn column, const std::string& index, const BObjectSyntax& value)
    {
        set.Append(
            MakeOid((std::string(kEntry) + "." + std::to_string(column) + "." + index).c_str()),
            value);
    }
    int Ask()
    {
        VLK::Test::Client asking(client.handler);
        return asking.Query(ePduSet, set);
    }

    BFilterTable views{nullptr};
    CViewModule module{views, nullptr};
    ModuleClient client{module, kEntry};
    BVarBindList set;
    std::vector<std::string> before;
};

const std::string kNew = FamilyIndex("a name that takes some memory", "1.3.6.1.2.1.1");
const std::string kOld = FamilyIndex("old", "1.3.6");
const std::string kGone = FamilyIndex("gone", "1.2");

std::unique_ptr<STable> WithChanges()
{
    auto table = std::make_unique<STable>();
    table->Add(eMask, kNew, Bytes(std::string(16, '\x7f')));
    table->Add(eMask, kOld, Bytes(std::string(16, '\x3f')));
    table->Add(eType, kOld, Number(eFilterExcluded));
    table->Add(eStatus, kNew, Number(eRowCreateAndGo));
    table->Add(eStatus, kOld, Number(eRowNotInService));
    return table;
}

class ViewTreeFamilyMemory : public testing::Test {
protected:
    // The first one makes singletons that stay, and room in them.
    ViewTreeFamilyMemory() { EXPECT_EQ(WithChanges()->Ask(), 0); }
};

} // namespace

TEST_F(ViewTreeFamilyMemory, ASetChangesAllOrNothing)
{
    const unsigned allocations = VLKTest::SweepAllocations(
        WithChanges, [](auto& table) { return table->Ask(); },
        [](auto& table, int status) {
            if (status != eSnmpNoError) {
                EXPECT_NE(status, eSnmpUndoFailed);
                EXPECT_EQ(table->client.Walk(), table->before);
                return;
            }
            const BFilterTable::Entry* const made = table->views.GetRow(MakeOid(kNew.c_str()));
            const BFilterTable::Entry* const old = table->views.GetRow(MakeOid(kOld.c_str()));
            ASSERT_TRUE(made && old);
            EXPECT_EQ(made->mask, MaskOf(Octets(16, 0x7f)));
            EXPECT_EQ(made->rowStatus, eRowActive);
            EXPECT_EQ(Shown(made), "a name that takes some memory 1.3.6.1.2.1.1");
            EXPECT_EQ(old->mask, MaskOf(Octets(16, 0x3f)));
            EXPECT_EQ(old->type, eFilterExcluded);
            EXPECT_EQ(old->rowStatus, eRowNotInService);
        });
    EXPECT_GE(allocations, 20u);
}

TEST_F(ViewTreeFamilyMemory, ADestroyedRowThatCannotComeBackIsToldOf)
{
    VLKTest::SweepAllocations(
        [] {
            auto table = std::make_unique<STable>();
            table->Add(eStatus, kGone, Number(eRowDestroy));
            table->Add(eMask, kOld, Bytes(std::string(16, '\x3f')));
            return table;
        },
        [](auto& table) { return table->Ask(); },
        [](auto& table, int status) {
            const bool isThere = table->views.GetRow(MakeOid(kGone.c_str())) != nullptr;
            EXPECT_EQ(isThere, status != eSnmpNoError && status != eSnmpUndoFailed) << status;
            if (isThere) {
                EXPECT_EQ(table->client.Walk(), table->before);
            }
        });
}
