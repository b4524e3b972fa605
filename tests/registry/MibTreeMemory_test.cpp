// The registration tree without memory: a handler is served at all of its names or
// refused, with its node as it should be, and nothing leaks.
#include "tests/support/AllocationSweep.h"
#include "tests/support/Oids.h"
#include "tests/support/PlainHandler.h"

#include <memory>
#include <vkmibh/tree.h>

namespace VLK {
namespace {

using Test::Arcs;
using Test::MakeOid;
using VLKTest::SweepAllocations;

// A tree in which 1.3.5 has many children, so that they are looked up by an index.
std::unique_ptr<BMibTree> CrowdedTree(unsigned children)
{
    auto tree = std::make_unique<BMibTree>();
    for (unsigned i = 0; i < children; ++i)
        EXPECT_NE(nullptr, tree->InsertMissingNodes(MakeOid(Arcs{1, 3, 5, 2 * i}), 4));
    return tree;
}

void ExpectRegistered(BMibTree& tree, CPlainHandler& handler, const BObjectIdentifier& oid)
{
    const BMibNode* const node = tree.FindSubtreeHandlerNode(oid);
    ASSERT_NE(nullptr, node);
    EXPECT_EQ(&handler, node->SubtreeHandler());
    BObjectIdentifier name;
    node->GetOid(name);
    EXPECT_EQ(oid, name);
}

TEST(MibTreeMemory, AHandlerIsRegisteredUnderItsNameOrRefused)
{
    for (const unsigned children : {0u, 40u, 2000u})
        for (const char* oid : {"1.3.5.7", "1.3.5.7.1.2.3.4.5", "9.9.9", "1.3.5.3"}) {
            CPlainHandler handler(oid);
            const unsigned allocations = SweepAllocations(
                [&] { return CrowdedTree(children); },
                [&](auto& tree) { return tree->Register(&handler); },
                [&](auto& tree, int registered) {
                    if (registered == 0) {
                        EXPECT_EQ(nullptr, tree->FindSubtreeHandlerNode(handler.Oid()));
                        EXPECT_EQ(0, tree->Unregister(&handler));
                        EXPECT_EQ(1, tree->Register(&handler)) << "now that there is memory";
                    }
                    ExpectRegistered(*tree, handler, handler.Oid());
                    EXPECT_EQ(handler.Name(), tree->FindNode(handler.Oid())->Name());
                    EXPECT_EQ(1, tree->Unregister(&handler));
                });
            EXPECT_GT(allocations, 1u);
        }
}

TEST(MibTreeMemory, WellKnownNodesAllHaveTheirNamesOrNoneIsThere)
{
    SweepAllocations([] { return std::unique_ptr<BMibTree>(); },
                     [](auto& tree) {
                         tree.reset(new (std::nothrow) BMibTree);
                         return tree != nullptr;
                     },
                     [](auto& tree, bool made) {
                         if (!made || !tree->GetFirstRoot())
                             return;
                         const BMibNode* node = tree->GetFirstRoot();
                         EXPECT_STREQ("iso", node->Name().c_str());
                         for (; node; node = node->Next())
                             EXPECT_FALSE(node->Name().empty());
                         EXPECT_NE(nullptr, tree->FindNode(MakeOid("1.3.6.1.6.3")));
                     });
}

TEST(MibTreeMemory, ARangeThatIsRefusedKeepsTheInstancesBeforeTheFailedOne)
{
    SweepAllocations(
        [] {
            struct SRange {
                CPlainHandler handler{"1.3.5.7", 3, 9};
                BMibTree tree;
            };
            return std::make_unique<SRange>();
        },
        [](auto& range) { return range->tree.Register(&range->handler); },
        [](auto& range, int registered) {
            bool served = true;
            for (unsigned value = 5; value <= 9; ++value) {
                const BObjectIdentifier oid = MakeOid(Arcs{1, 3, value, 7});
                const bool before = served;
                served = range->tree.FindSubtreeHandlerNode(oid) != nullptr;
                EXPECT_TRUE(before || !served) << "one after the failed one";
                if (served)
                    ExpectRegistered(range->tree, range->handler, oid);
            }
            EXPECT_EQ(registered == 1, served);
        });
}

TEST(MibTreeMemory, LookUpsAndTheEndOfARegistrationTakeNone)
{
    const std::unique_ptr<BMibTree> tree = CrowdedTree(2000);
    CPlainHandler handler("1.3.5.7.1.2");
    ASSERT_EQ(1, tree->Register(&handler));
    BObjectIdentifier inside = MakeOid("1.3.5.7.1.2.3");
    FailingAlloc fail(0);
    EXPECT_NE(nullptr, tree->FindSubtreeHandlerNode(inside));
    EXPECT_NE(nullptr, tree->FindNextSubtreeHandlerNode(inside));
    EXPECT_EQ(nullptr, tree->FindNode(inside));
    EXPECT_EQ(1, tree->Unregister(&handler));
    EXPECT_FALSE(fail.Failed());
}

} // namespace
} // namespace VLK
