#include <vkmibh/tree.h>

#include "tests/support/PlainHandler.h"

#include <gtest/gtest.h>
#include <memory>
#include <vector>

using namespace VLK;

namespace {

BString NameAt(const BMibTree& tree, const char* dotted)
{
    const BMibNode* node = tree.FindNode(OidOf(dotted));
    return node ? node->Name() : BString("(no node)");
}

const BMibSubtreeHandler* HandlerAt(const BMibTree& tree, const char* dotted)
{
    const BMibNode* node = tree.FindNode(OidOf(dotted));
    return node ? node->SubtreeHandler() : nullptr;
}

const BMibSubtreeHandler* Next(const BMibTree& tree, const char* dotted)
{
    const BMibNode* node = tree.FindNextSubtreeHandlerNode(OidOf(dotted));
    return node ? node->SubtreeHandler() : nullptr;
}

} // namespace

TEST(MibTree, StartsWithTheWellKnownNodes)
{
    const struct {
        const char* oid;
        const char* name;
    } kNodes[] = {
        {"1", "iso"},
        {"1.3", "org"},
        {"1.3.6", "dod"},
        {"1.3.6.1", "internet"},
        {"1.3.6.1.1", "directory"},
        {"1.3.6.1.2", "mgmt"},
        {"1.3.6.1.3", "experimental"},
        {"1.3.6.1.4", "private"},
        {"1.3.6.1.4.1", "enterprises"},
        {"1.3.6.1.5", "security"},
        {"1.3.6.1.6", "snmpV2"},
        {"1.3.6.1.6.1", "snmpDomains"},
        {"1.3.6.1.6.2", "snmpProxys"},
        {"1.3.6.1.6.3", "snmpModules"},
    };
    BMibTree tree;
    const BMibNode* walk = tree.GetFirstRoot();
    for (const auto& expected : kNodes) {
        const BMibNode* node = tree.FindNode(OidOf(expected.oid));
        ASSERT_NE(nullptr, node) << expected.oid;
        EXPECT_EQ(BString(expected.name), node->Name());
        EXPECT_FALSE(node->HasSubtreeHandler());
        // The table stands in the order of identifiers, so the walk shows that there is no more.
        EXPECT_EQ(node, walk);
        walk = BMibNode::Next(walk);
    }
    EXPECT_EQ(nullptr, walk);
}

TEST(MibTree, KeepsTheSpellingOfSnmpProxys)
{
    BMibTree tree;
    EXPECT_EQ(BString("snmpProxys"), NameAt(tree, "1.3.6.1.6.2"));
}

TEST(MibTree, TopIsNoPartOfAnyOid)
{
    BMibTree tree;
    const BMibNode* iso = tree.GetRoot(1);
    ASSERT_NE(nullptr, iso);
    EXPECT_EQ(iso, tree.GetFirstRoot());
    EXPECT_EQ(nullptr, tree.GetRoot(2));
    ASSERT_NE(nullptr, iso->Parent());
    EXPECT_EQ(BString("root"), iso->Parent()->Name());
    EXPECT_EQ(0u, iso->Parent()->Id());
    EXPECT_EQ(nullptr, iso->Parent()->Parent());
    BObjectIdentifier oid;
    tree.FindNode(OidOf("1.3.6.1.4.1"))->GetOid(oid);
    EXPECT_EQ(OidOf("1.3.6.1.4.1"), oid);
}

TEST(MibTree, SecondInitializeFailsAndLeavesTheTree)
{
    BMibTree tree;
    EXPECT_EQ(0, tree.Initialize());
    EXPECT_EQ(BString("enterprises"), NameAt(tree, "1.3.6.1.4.1"));
}

TEST(MibTree, InsertHangsANodeUnderAParent)
{
    BMibTree tree;
    BMibNode* node = new BMibNode("mine", 9, nullptr);
    EXPECT_EQ(1, tree.Insert(node, tree.GetFirstRoot()));
    EXPECT_EQ(node, tree.FindNode(OidOf("1.9")));
    BMibNode twin("twin", 9, nullptr);
    EXPECT_EQ(0, tree.Insert(&twin, tree.GetFirstRoot()));
    EXPECT_EQ(0, tree.Insert(&twin, nullptr));
}

TEST(MibTree, LastMatchCountsTheLeadingArcs)
{
    BMibTree tree;
    unsigned matched = 77;
    EXPECT_EQ(nullptr, tree.FindLastMatchNode(BObjectIdentifier(), matched));
    EXPECT_EQ(77u, matched) << "not written for an empty identifier";
    EXPECT_EQ(nullptr, tree.FindLastMatchNode(OidOf("2.5"), matched));
    EXPECT_EQ(0u, matched);
    EXPECT_EQ(tree.GetRoot(1), tree.FindLastMatchNode(OidOf("1.4.6"), matched));
    EXPECT_EQ(1u, matched);
    EXPECT_EQ(tree.FindNode(OidOf("1.3.6.1")), tree.FindLastMatchNode(OidOf("1.3.6.1"), matched));
    EXPECT_EQ(4u, matched);
}

TEST(MibTree, FindNodeWantsTheWholeIdentifier)
{
    BMibTree tree;
    EXPECT_NE(nullptr, tree.FindNode(OidOf("1.3.6")));
    EXPECT_EQ(nullptr, tree.FindNode(OidOf("1.3.6.9")));
    EXPECT_EQ(nullptr, tree.FindNode(OidOf("2")));
    EXPECT_EQ(nullptr, tree.FindNode(BObjectIdentifier()));
}

TEST(MibTree, MissingNodesAreMadeUpToTheCount)
{
    BMibTree tree;
    EXPECT_EQ(nullptr, tree.InsertMissingNodes(OidOf("1.3"), 3));
    EXPECT_EQ(nullptr, tree.InsertMissingNodes(OidOf("1.3"), 0));
    BMibNode* node = tree.InsertMissingNodes(OidOf("2.5.4.3"), 3);
    ASSERT_NE(nullptr, node);
    EXPECT_EQ(node, tree.FindNode(OidOf("2.5.4")));
    EXPECT_EQ(nullptr, tree.FindNode(OidOf("2.5.4.3")));
    EXPECT_EQ(BString(""), NameAt(tree, "2"));
    EXPECT_EQ(BString(""), NameAt(tree, "2.5"));
    EXPECT_EQ(node, tree.InsertMissingNodes(OidOf("2.5.4.3"), 3)) << "made once";
    EXPECT_EQ(tree.FindNode(OidOf("1.3")), tree.InsertMissingNodes(OidOf("1.3.6"), 2));
}

TEST(MibTree, RegisterMakesThePathAndNamesTheLeaf)
{
    BMibTree tree;
    CPlainHandler handler("1.3.6.1.2.1.1");
    EXPECT_EQ(1, tree.Register(&handler));
    EXPECT_EQ(BString(""), NameAt(tree, "1.3.6.1.2.1"));
    EXPECT_EQ(BString("plain"), NameAt(tree, "1.3.6.1.2.1.1"));
    EXPECT_EQ(BString("mgmt"), NameAt(tree, "1.3.6.1.2")) << "what is there stays";
    EXPECT_EQ(&handler, HandlerAt(tree, "1.3.6.1.2.1.1"));
}

TEST(MibTree, RegisterAtAnExistingNodeKeepsItsName)
{
    BMibTree tree;
    CPlainHandler handler("1.3.6.1.4.1");
    EXPECT_EQ(1, tree.Register(&handler));
    EXPECT_EQ(BString("enterprises"), NameAt(tree, "1.3.6.1.4.1"));
    EXPECT_EQ(&handler, HandlerAt(tree, "1.3.6.1.4.1"));
}

TEST(MibTree, SecondHandlerAtAnOidIsRefusedAndTheFirstStays)
{
    BMibTree tree;
    CPlainHandler first("1.3.6.1.2.1.1"), second("1.3.6.1.2.1.1");
    EXPECT_EQ(1, tree.Register(&first));
    EXPECT_EQ(0, tree.Register(&second));
    EXPECT_EQ(0, tree.Register(&first));
    EXPECT_EQ(&first, HandlerAt(tree, "1.3.6.1.2.1.1"));
}

TEST(MibTree, OneArcRegistersUnderTheTopAndNoArcFails)
{
    BMibTree tree;
    CPlainHandler one("2"), iso("1"), none{BObjectIdentifier()};
    EXPECT_EQ(1, tree.Register(&one));
    EXPECT_EQ(&one, HandlerAt(tree, "2"));
    EXPECT_EQ(1, tree.Register(&iso));
    EXPECT_EQ(BString("iso"), NameAt(tree, "1"));
    EXPECT_EQ(0, tree.Register(&none));
    EXPECT_EQ(0, tree.Register(nullptr));
}

TEST(MibTree, RangeRegistersEveryValueOfAnInteriorArc)
{
    BMibTree tree;
    CPlainHandler handler("1.3.5.7", 3, 6);
    EXPECT_EQ(1, tree.Register(&handler));
    EXPECT_EQ(&handler, HandlerAt(tree, "1.3.5.7"));
    EXPECT_EQ(&handler, HandlerAt(tree, "1.3.6.7"));
    EXPECT_EQ(nullptr, tree.FindNode(OidOf("1.3.7")));
    EXPECT_EQ(BString("plain"), NameAt(tree, "1.3.6.7"));
    EXPECT_EQ(BString("dod"), NameAt(tree, "1.3.6"));

    CPlainHandler low("1.3.5.7", 3, 4), beyond("1.3.5.7", 5, 9);
    BMibTree fresh;
    EXPECT_EQ(0, fresh.Register(&low));
    EXPECT_EQ(0, fresh.Register(&beyond));
    EXPECT_EQ(nullptr, fresh.FindNode(OidOf("1.3.5")));
}

TEST(MibTree, RangeOnTheLastAndOnTheFirstArc)
{
    BMibTree tree;
    CPlainHandler last("1.9.4", 3, 6), first("5", 1, 7), single("1.8.4", 3, 4);
    EXPECT_EQ(1, tree.Register(&last));
    for (const char* oid : {"1.9.4", "1.9.5", "1.9.6"})
        EXPECT_EQ(&last, HandlerAt(tree, oid)) << oid;
    EXPECT_EQ(nullptr, tree.FindNode(OidOf("1.9.7")));
    EXPECT_EQ(1, tree.Register(&first));
    for (const char* oid : {"5", "6", "7"})
        EXPECT_EQ(&first, HandlerAt(tree, oid)) << oid;
    EXPECT_EQ(1, tree.Register(&single));
    EXPECT_EQ(&single, HandlerAt(tree, "1.8.4"));
}

TEST(MibTree, RangeUpToTheLargestArcDoesNotWrap)
{
    BMibTree tree;
    CPlainHandler handler("1.3.4294967293", 3, 4294967295u);
    EXPECT_EQ(1, tree.Register(&handler));
    EXPECT_EQ(&handler, HandlerAt(tree, "1.3.4294967293"));
    EXPECT_EQ(&handler, HandlerAt(tree, "1.3.4294967295"));
    EXPECT_EQ(nullptr, tree.FindNode(OidOf("1.3.0")));
}

TEST(MibTree, FailingRangeLeavesTheInstancesBefore)
{
    BMibTree tree;
    CPlainHandler blocker("1.9.6"), range("1.9.4", 3, 8);
    ASSERT_EQ(1, tree.Register(&blocker));
    EXPECT_EQ(0, tree.Register(&range));
    EXPECT_EQ(&range, HandlerAt(tree, "1.9.4"));
    EXPECT_EQ(&range, HandlerAt(tree, "1.9.5"));
    EXPECT_EQ(&blocker, HandlerAt(tree, "1.9.6"));
    EXPECT_EQ(nullptr, HandlerAt(tree, "1.9.7"));
}

TEST(MibTree, UnregisterTakesTheHandlerAndKeepsTheNode)
{
    BMibTree tree;
    CPlainHandler handler("1.9.4"), other("1.9.4"), unknown("1.9.4.1"), second("1.9.4");
    ASSERT_EQ(1, tree.Register(&handler));
    EXPECT_EQ(0, tree.Unregister(static_cast<BMibSubtreeHandler*>(nullptr)));
    EXPECT_EQ(0, tree.Unregister(&other)) << "another handler of the same identifier";
    EXPECT_EQ(0, tree.Unregister(&unknown)) << "not matched to its end";
    EXPECT_EQ(1, tree.Unregister(&handler));
    EXPECT_EQ(0, tree.Unregister(&handler));
    EXPECT_EQ(BString("plain"), NameAt(tree, "1.9.4"));
    EXPECT_EQ(1, tree.Register(&second));
}

TEST(MibTree, UnregisterOfARangeLeavesItsOtherInstances)
{
    BMibTree tree;
    CPlainHandler handler("1.9.4", 3, 6);
    ASSERT_EQ(1, tree.Register(&handler));
    EXPECT_EQ(1, tree.Unregister(&handler));
    EXPECT_EQ(nullptr, HandlerAt(tree, "1.9.4"));
    EXPECT_EQ(&handler, HandlerAt(tree, "1.9.5"));
    EXPECT_EQ(&handler, HandlerAt(tree, "1.9.6"));
}

TEST(MibTree, UnregisterByOidClearsWhateverTheNodeCarries)
{
    BMibTree tree;
    CPlainHandler handler("1.9.4");
    ASSERT_EQ(1, tree.Register(&handler));
    BObjectIdentifier missing = OidOf("1.9.5"), oid = OidOf("1.9.4"), path = OidOf("1.9");
    EXPECT_EQ(0, tree.Unregister(missing));
    EXPECT_EQ(1, tree.Unregister(oid));
    EXPECT_EQ(1, tree.Unregister(oid)) << "the node is still there";
    EXPECT_EQ(1, tree.Unregister(path));
    EXPECT_EQ(nullptr, HandlerAt(tree, "1.9.4"));
    EXPECT_NE(nullptr, tree.FindNode(oid));
}

TEST(MibTree, HandlerOfAnOidIsTheOneOfItsLongestRegisteredPrefix)
{
    BMibTree tree;
    CPlainHandler outer("1.3.6.1.2.1"), inner("1.3.6.1.2.1.4.20");
    tree.Register(&outer);
    tree.Register(&inner);
    const auto found = [&](const char* dotted) -> const BMibSubtreeHandler* {
        const BMibNode* node = tree.FindSubtreeHandlerNode(OidOf(dotted));
        return node ? node->SubtreeHandler() : nullptr;
    };
    EXPECT_EQ(&outer, found("1.3.6.1.2.1"));
    EXPECT_EQ(&outer, found("1.3.6.1.2.1.4"));
    EXPECT_EQ(&outer, found("1.3.6.1.2.1.4.21.1"));
    EXPECT_EQ(&inner, found("1.3.6.1.2.1.4.20.1.7"));
    EXPECT_EQ(nullptr, found("1.3.6.1.2"));
    EXPECT_EQ(nullptr, found("2.5"));
    EXPECT_EQ(nullptr, tree.FindSubtreeHandlerNode(BObjectIdentifier()));
}

TEST(MibTree, NextHandlerHoldsTheOidOrComesAfterIt)
{
    BMibTree tree;
    CPlainHandler system("1.3.6.1.2.1.1"), ip("1.3.6.1.2.1.4");
    tree.Register(&system);
    tree.Register(&ip);
    EXPECT_EQ(&system, Next(tree, "1"));
    EXPECT_EQ(&system, Next(tree, "1.3.6.1.2.1"));
    EXPECT_EQ(&system, Next(tree, "1.3.6.1.2.1.1"));
    EXPECT_EQ(&system, Next(tree, "1.3.6.1.2.1.1.9.9")) << "the region that holds it";
    EXPECT_EQ(&ip, Next(tree, "1.3.6.1.2.1.2"));
    EXPECT_EQ(&ip, Next(tree, "1.3.6.1.2.1.3.7.7"));
    EXPECT_EQ(nullptr, Next(tree, "1.3.6.1.2.1.5"));
    EXPECT_EQ(nullptr, tree.FindNextSubtreeHandlerNode(BObjectIdentifier()));
}

TEST(MibTree, NextHandlerForAnUnknownFirstArcStartsAfterTheFollowingRoot)
{
    BMibTree tree;
    CPlainHandler handler("1.9"), iso("1");
    EXPECT_EQ(nullptr, Next(tree, "2.5"));
    EXPECT_EQ(nullptr, Next(tree, "0.1"));
    ASSERT_EQ(1, tree.Register(&handler));
    EXPECT_EQ(nullptr, Next(tree, "2.5"));
    EXPECT_EQ(&handler, Next(tree, "0.1"));
    ASSERT_EQ(1, tree.Register(&iso));
    EXPECT_EQ(&handler, Next(tree, "0.1")) << "the root itself is not examined";
}

TEST(MibTree, NextHandlerSkipsRangeInstancesWhoseOwnOidIsBefore)
{
    BMibTree tree;
    CPlainHandler range("1.9.5.7", 3, 9), after("1.9.20");
    tree.Register(&range);
    tree.Register(&after);
    EXPECT_EQ(&range, Next(tree, "1.9.6.7"));
    EXPECT_EQ(&after, Next(tree, "1.9.6.8")) << "1.9.7.7 carries a handler of 1.9.5.7";
}

TEST(MibTree, HundredThousandInstancesOfOneRangeAreFound)
{
    BMibTree tree;
    CPlainHandler handler("1.3.6.1.4.1.1.5", 7, 100000);
    ASSERT_EQ(1, tree.Register(&handler));
    EXPECT_EQ(&handler, HandlerAt(tree, "1.3.6.1.4.1.1.5"));
    EXPECT_EQ(&handler, HandlerAt(tree, "1.3.6.1.4.1.54321.5"));
    EXPECT_EQ(&handler, HandlerAt(tree, "1.3.6.1.4.1.100000.5"));
    EXPECT_EQ(nullptr, tree.FindNode(OidOf("1.3.6.1.4.1.100001")));
}
