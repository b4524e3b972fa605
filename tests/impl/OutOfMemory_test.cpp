// No memory: a status, never a value that was not asked for.

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <vkmibh/tree.h>

#include "tests/impl/Probe.h"
#include "tests/support/AllocationSweep.h"

namespace VLK {
namespace {

// Handlers that say themselves when they found no memory, and allocate nothing
// but their value.
class CLean : public BMibTableImpl {
public:
    CLean() : BMibTableImpl("lean", OidOf("1.3.9")) { Initialize(); }
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    int NextIndex(unsigned, unsigned, const BObjectIdentifier& index,
                  BObjectIdentifier& nextIndex) override
    {
        return index.Length() == 0 && nextIndex.Set(20, kIndex);
    }
    int OnGet_Text(const BObjectIdentifier&, unsigned, BString& value)
    {
        value = BString("some text");
        return value.empty() ? eSnmpResourceUnavailable : 0;
    }
    int OnGet_Octets(const BObjectIdentifier&, unsigned, BOctetString& value)
    {
        return value.Assign("some text", 9) ? 0 : eSnmpResourceUnavailable;
    }
    int OnGet_Id(const BObjectIdentifier&, unsigned, BObjectIdentifier& value)
    {
        return value.Set(20, kIndex) ? 0 : eSnmpResourceUnavailable;
    }
    int OnSet_Text(const BObjectIdentifier&, ESnmpSetOpCode, unsigned, const BString&, void**)
    {
        ++m_calls;
        return 0;
    }

    static constexpr unsigned kIndex[20] = {5, 6, 7};
    static SRqHndlrMapEntry s_map[];
    unsigned m_calls = 0;
};

VKMIBH_CONSTINIT SRqHndlrMapEntry CLean::s_map[] = {
    ColumnRow<eKindDisplayString, &CLean::OnGet_Text, &CLean::OnSet_Text>(
        1, "text", eAsnOctetString, eRqReadWrite),
    ColumnRow<eKindOctetString, &CLean::OnGet_Octets>(2, "octets", eAsnOctetString, eRqReadOnly),
    ColumnRow<eKindOctetString, &CLean::OnGet_Octets>(3, "opaque", eAsnOpaque, eRqReadOnly),
    ColumnRow<eKindObjectId, &CLean::OnGet_Id>(4, "id", eAsnObjectId, eRqReadOnly), kRqEnd};

TEST(OutOfMemory, GetIsAStatusAtEveryAllocation)
{
    CLean lean;
    const BObjectIdentifier instance(1u);
    for (const SRqHndlrMapEntry* entry = CLean::s_map; entry->kind != eKindEnd; ++entry) {
        int refused = 0;
        for (;; ++refused) {
            BObjectSyntax value;
            FailingAlloc fail(refused);
            const int status = lean.Get(entry, 1, value, &instance);
            if (!fail.Failed()) {
                EXPECT_EQ(0, status) << entry->name;
                EXPECT_EQ(entry->kind == eKindObjectId ? 20u : 0u, value.ObjectId().Length());
                EXPECT_EQ(entry->kind == eKindObjectId ? 0u : 9u, value.Octets().Length());
                break;
            }
            EXPECT_NE(0, status) << entry->name << " without allocation " << refused;
        }
        EXPECT_EQ(2, refused) << entry->name << ": the handler's value and its copy";
    }
}

// The status of one phase that finds no memory for its text.
int SetWithoutMemory(CLean& lean, ESnmpSetOpCode op, SSetSlot& slot)
{
    const BObjectIdentifier instance(1u);
    const BObjectSyntax value = TextValue("new text");
    FailingAlloc fail(0);
    return lean.Set(CLean::s_map, 1, op, &slot.scratch, value, &instance);
}

TEST(OutOfMemory, TestAndCommitAnswerByTheirPhaseAndCallNobody)
{
    CLean lean;
    SSetSlot slot{};
    EXPECT_EQ(eSnmpResourceUnavailable, SetWithoutMemory(lean, eSetTest, slot));
    EXPECT_EQ(eSnmpCommitFailed, SetWithoutMemory(lean, eSetCommit, slot));
    EXPECT_TRUE(slot.tested == 0 && slot.committed == 0);
    EXPECT_EQ(0u, lean.m_calls);
}

TEST(OutOfMemory, UndoAndCleanupStillReachTheHandler)
{
    CLean lean;
    SSetSlot slot{};
    EXPECT_EQ(0, SetWithoutMemory(lean, eSetUndo, slot));
    EXPECT_EQ(0, SetWithoutMemory(lean, eSetCleanup, slot));
    EXPECT_EQ(2u, lean.m_calls);
}

TEST(OutOfMemory, WalkEndsOrGoesWhereItShould)
{
    CLean lean;
    const BObjectIdentifier root = OidOf("1.3.9");
    for (int refused = 0;; ++refused) {
        BVarBind binding(root);
        int found;
        bool failed;
        {
            FailingAlloc fail(refused);
            found = lean.NextInstance(1, binding);
            failed = fail.Failed();
        }
        if (!failed) {
            EXPECT_EQ(1, found);
            EXPECT_EQ(24u, binding.Name().Length());
            EXPECT_EQ(2, refused) << "the index and the longer name";
            break;
        }
        EXPECT_EQ(0, found);
        EXPECT_EQ(int(eEndOfMibView), int(binding.Value().Syntax()));
    }
}

// Every name of the protocol has its place on the stack; longer ones have not.
TEST(OutOfMemory, WalkFromAVeryLongNameIsRightOrAGeneralError)
{
    CLean lean;
    BVarBind asked(OidOf("1.3.9.1"));
    for (unsigned arc = 0; arc < 200; ++arc)
        asked.Name().Append(arc);
    const unsigned allocations = VLKTest::SweepAllocations(
        [&] { return BVarBind(asked); },
        [&](BVarBind& binding) { return lean.GetNext(1, binding); },
        [&](BVarBind& binding, int status) {
            EXPECT_TRUE(status == 0 || status == eSnmpGenErr || status == eSnmpResourceUnavailable)
                << status;
            if (status != eSnmpNoError)
                return;
            const bool found = binding.Value().Syntax() != eEndOfMibView;
            EXPECT_EQ(found ? 24u : 204u, binding.Name().Length());
        });
    EXPECT_GT(allocations, 0u);
}

class CLongScalar : public BMibScalarImpl {
public:
    explicit CLongScalar(unsigned arcs) : BMibScalarImpl("scalar", LongName(arcs)) { Initialize(); }
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    int OnGet_Number(unsigned, int& value)
    {
        value = 1;
        return 0;
    }
    static BObjectIdentifier LongName(unsigned arcs)
    {
        BObjectIdentifier oid(OidOf("1.3.9"));
        for (unsigned arc = 0; arc < arcs; ++arc)
            oid.Append(arc);
        return oid;
    }
    static SRqHndlrMapEntry s_map[];
};

VKMIBH_CONSTINIT SRqHndlrMapEntry CLongScalar::s_map[] = {
    ScalarRow<eKindInteger, &CLongScalar::OnGet_Number>(1, "number", eAsnInteger, eRqReadOnly),
    kRqEnd};

TEST(OutOfMemory, ScalarIsFoundWholeOrNotAtAll)
{
    unsigned allocations = 0;
    for (unsigned arcs = 10; arcs < 50; ++arcs) { // of some the last one takes memory
        CLongScalar scalar(arcs);
        allocations = std::max(
            allocations, VLKTest::SweepAllocations(
                             [] { return BVarBind(OidOf("1.3")); },
                             [&](BVarBind& binding) { return scalar.NextInstance(1, binding); },
                             [&](BVarBind& binding, int found) {
                                 const bool whole =
                                     scalar.Oid().IsStartingSubOidOf(binding.Name()) &&
                                     binding.Name().Length() == scalar.Oid().Length() + 1;
                                 EXPECT_EQ(whole, found == 1);
                                 EXPECT_EQ(whole ? int(eAsnNull) : int(eEndOfMibView),
                                           int(binding.Value().Syntax()));
                             }));
    }
    EXPECT_EQ(2u, allocations);
}

class CPlainRow : public BMibRowImpl {
public:
    CPlainRow(const BObjectIdentifier& prefix, const BObjectIdentifier& suffix)
        : BMibRowImpl("row", prefix, 2, 4, suffix)
    {
    }
};

TEST(OutOfMemory, RowWithoutItsWholeNameIsNotRegistered)
{
    const BObjectIdentifier prefix(OidOf("1.3.9.1"));
    const BObjectIdentifier suffix(CLongScalar::LongName(30));
    bool failed = true;
    int refused = 0;
    for (; failed; ++refused) {
        std::unique_ptr<CPlainRow> row;
        {
            FailingAlloc fail(refused, FailingAlloc::eNextOnly);
            row.reset(new (std::nothrow) CPlainRow(prefix, suffix));
            failed = fail.Failed();
        }
        BMibTree tree;
        if (!row)
            continue;
        const bool whole = row->Oid().Length() == prefix.Length() + 1 + suffix.Length();
        EXPECT_EQ(whole, tree.Register(row.get()) == 1) << refused << " " << TextOf(row->Oid());
        EXPECT_TRUE(whole || failed);
    }
    EXPECT_GT(refused, 2);
}

} // namespace
} // namespace VLK
