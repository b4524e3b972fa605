// Object identifier: construction, storage, assignment and building.
#include "tests/support/ValueText.h"

#include <climits>
#include <gtest/gtest.h>
#include <type_traits>
#include <utility>

using namespace VLK;
using namespace VLKTest;

TEST(ObjectIdentifier, DefaultIsEmptyWithoutStorage)
{
    BObjectIdentifier oid;
    EXPECT_EQ(oid.Length(), 0u);
    EXPECT_EQ(oid.Capacity(), 0u);
    EXPECT_EQ(oid.Arcs(), nullptr);
}

TEST(ObjectIdentifier, OneNumberIsOneArcNotACapacity)
{
    BObjectIdentifier oid(40u);
    EXPECT_EQ(ArcsOf(oid), Arcs{40});
    EXPECT_EQ(oid.Capacity(), 16u);
}

TEST(ObjectIdentifier, CopiesTheEnginesPlainStructure)
{
    unsigned arcs[] = {1, 3, 6};
    const SASNObjectId plain{3, arcs};
    BObjectIdentifier oid(plain);
    arcs[0] = 9;
    EXPECT_EQ(ArcsOf(oid), (Arcs{1, 3, 6}));
    EXPECT_EQ(BObjectIdentifier(SASNObjectId{3, nullptr}).Length(), 0u);
}

TEST(ObjectIdentifier, ConstructorFromTextIgnoresBadText)
{
    EXPECT_EQ(ArcsOf(BObjectIdentifier(BString("1.3.6"))), (Arcs{1, 3, 6}));
    BObjectIdentifier bad(BString("1.x"));
    EXPECT_EQ(bad.Length(), 0u);
    EXPECT_EQ(bad.Capacity(), 0u);
}

TEST(ObjectIdentifier, CopyIsDeep)
{
    BObjectIdentifier a = Oid({1, 3, 6});
    BObjectIdentifier b(a);
    BObjectIdentifier c;
    c = a;
    a[0] = 2;
    EXPECT_EQ(ArcsOf(b), (Arcs{1, 3, 6}));
    EXPECT_EQ(ArcsOf(c), (Arcs{1, 3, 6}));
}

TEST(ObjectIdentifier, MoveHandsTheStorageOverAndLeavesTheSourceEmpty)
{
    static_assert(std::is_nothrow_move_constructible<BObjectIdentifier>::value, "noexcept");
    static_assert(std::is_nothrow_move_assignable<BObjectIdentifier>::value, "noexcept");
    BObjectIdentifier a = Oid({1, 3, 6});
    const unsigned* storage = a.Arcs();
    BObjectIdentifier b(std::move(a));
    EXPECT_EQ(b.Arcs(), storage);
    EXPECT_EQ(a.Length(), 0u);
    EXPECT_EQ(a.Arcs(), nullptr);
    EXPECT_EQ(a.Capacity(), 0u);
    BObjectIdentifier c = Oid({9});
    c = std::move(b);
    EXPECT_EQ(c.Arcs(), storage);
    EXPECT_EQ(b.Arcs(), nullptr);
    BObjectIdentifier& self = c;
    c = std::move(self);
    EXPECT_EQ(ArcsOf(c), (Arcs{1, 3, 6}));
}

TEST(ObjectIdentifier, StorageGrowsInStepsOf16)
{
    EXPECT_EQ(BObjectIdentifier::s_growBy, 16u);
    BObjectIdentifier oid;
    for (unsigned i = 0; i < 16; ++i)
        EXPECT_TRUE(oid.Append(i));
    EXPECT_EQ(oid.Capacity(), 16u);
    EXPECT_TRUE(oid.Append(16u));
    EXPECT_EQ(oid.Capacity(), 32u);
    for (unsigned i = 0; i < 17; ++i)
        EXPECT_EQ(oid[i], i);
}

TEST(ObjectIdentifier, ReallocArrayTable)
{
    const struct {
        unsigned needed, capacity;
    } rows[] = {{0, 0}, {1, 16}, {16, 16}, {17, 32}, {32, 32}, {33, 48}, {1000, 1008}};
    for (const auto& row : rows) {
        BObjectIdentifier oid;
        EXPECT_TRUE(oid.ReallocArray(row.needed, false));
        EXPECT_EQ(oid.Capacity(), row.capacity) << row.needed;
    }
}

TEST(ObjectIdentifier, ReallocArrayKeepsOrDiscardsTheContents)
{
    BObjectIdentifier oid = Oid({1, 2, 3});
    EXPECT_TRUE(oid.ReallocArray(20, false));
    EXPECT_EQ(ArcsOf(oid), (Arcs{1, 2, 3}));
    const unsigned* storage = oid.Arcs();
    EXPECT_TRUE(oid.ReallocArray(0, true));
    EXPECT_EQ(oid.Length(), 0u);
    EXPECT_EQ(oid.Arcs(), storage);
    EXPECT_EQ(oid.Capacity(), 32u);
}

TEST(ObjectIdentifier, GrowthStartsFromAnAttachedCapacity)
{
    BObjectIdentifier oid;
    oid.Attach(5, new unsigned[5]{1, 2, 3, 4, 5}, 0);
    EXPECT_EQ(oid.Capacity(), 5u);
    EXPECT_TRUE(oid.Append(6u));
    EXPECT_EQ(oid.Capacity(), 21u);
    EXPECT_EQ(ArcsOf(oid), (Arcs{1, 2, 3, 4, 5, 6}));
}

TEST(ObjectIdentifier, RefusesACapacityBeyond32Bits)
{
    BObjectIdentifier oid = Oid({1, 2});
    EXPECT_FALSE(oid.ReallocArray(UINT_MAX, false));
    EXPECT_EQ(ArcsOf(oid), (Arcs{1, 2}));
    EXPECT_EQ(oid.Capacity(), 16u);
    EXPECT_FALSE(oid.Set(UINT_MAX - 3, oid.Arcs()));
    EXPECT_EQ(oid.Length(), 0u);
}

TEST(ObjectIdentifier, SetReplacesTheContents)
{
    BObjectIdentifier oid = Oid({1, 3, 6, 1});
    const unsigned arcs[] = {2, 5};
    EXPECT_TRUE(oid.Set(2, arcs));
    EXPECT_EQ(ArcsOf(oid), (Arcs{2, 5}));
    EXPECT_TRUE(oid.Set(7u));
    EXPECT_EQ(ArcsOf(oid), Arcs{7});
    EXPECT_TRUE(oid.Set(0, nullptr));
    EXPECT_EQ(oid.Length(), 0u);
}

TEST(ObjectIdentifier, SetToItselfDoesNothing)
{
    BObjectIdentifier oid = Oid({1, 3, 6});
    const unsigned* storage = oid.Arcs();
    EXPECT_TRUE(oid.Set(oid));
    BObjectIdentifier& self = oid;
    oid = self;
    EXPECT_EQ(oid.Arcs(), storage);
    EXPECT_EQ(ArcsOf(oid), (Arcs{1, 3, 6}));
}

TEST(ObjectIdentifier, SetToPartOfItsOwnArcs)
{
    BObjectIdentifier oid = Oid({1, 3, 6, 1, 4});
    EXPECT_TRUE(oid.Set(3, oid.Arcs() + 2));
    EXPECT_EQ(ArcsOf(oid), (Arcs{6, 1, 4}));
    EXPECT_TRUE(oid.Set(oid, 1, ~0u));
    EXPECT_EQ(ArcsOf(oid), (Arcs{1, 4}));
}

TEST(ObjectIdentifier, SetRangeTable)
{
    const struct {
        unsigned from, to;
        bool done;
        Arcs arcs;
    } rows[] = {
        {0, 4, true, {1, 3, 6, 1}}, {2, ~0u, true, {6, 1}}, {0, ~0u, true, {1, 3, 6, 1}},
        {1, 3, true, {3, 6}},       {3, 2, false, {9}},     {0, 5, false, {9}},
        {4, ~0u, true, {}},         {5, ~0u, false, {9}},   {2, 2, true, {}},
        {5, 5, false, {9}},
    };
    const BObjectIdentifier source = Oid({1, 3, 6, 1});
    for (const auto& row : rows) {
        BObjectIdentifier oid(9u);
        EXPECT_EQ(oid.Set(source, row.from, row.to), row.done) << row.from << ' ' << row.to;
        EXPECT_EQ(ArcsOf(oid), row.arcs) << row.from << ' ' << row.to;
    }
}

TEST(ObjectIdentifier, AnEmptyRangeTouchesNoStorage)
{
    BObjectIdentifier empty;
    EXPECT_TRUE(empty.Set(Oid({1, 3}), 1, 1));
    EXPECT_EQ(empty.Arcs(), nullptr);
    BObjectIdentifier oid = Oid({1, 3});
    const unsigned* storage = oid.Arcs();
    EXPECT_TRUE(oid.Set(Oid({1, 3}), 1, 1));
    EXPECT_EQ(oid.Arcs(), storage);
    EXPECT_EQ(oid.Length(), 0u);
}

TEST(ObjectIdentifier, AppendsAnObjectIdentifierAsAnIndex)
{
    BObjectIdentifier oid(9u);
    EXPECT_TRUE(oid.Append(Oid({1, 3}), false));
    EXPECT_EQ(ArcsOf(oid), (Arcs{9, 2, 1, 3}));
    BObjectIdentifier implied(9u);
    EXPECT_TRUE(implied.Append(Oid({1, 3}), true));
    EXPECT_EQ(ArcsOf(implied), (Arcs{9, 1, 3}));
    EXPECT_TRUE(implied.Append(BObjectIdentifier(), false));
    EXPECT_EQ(ArcsOf(implied), (Arcs{9, 1, 3, 0}));
    BObjectIdentifier empty;
    EXPECT_TRUE(empty.Append(BObjectIdentifier(), true));
    EXPECT_EQ(empty.Arcs(), nullptr);
}

TEST(ObjectIdentifier, AppendsItselfAlsoWhileGrowing)
{
    for (unsigned length = 0; length <= 40; ++length) {
        for (const bool implied : {false, true}) {
            BObjectIdentifier oid;
            Arcs expected;
            for (unsigned i = 0; i < length; ++i) {
                oid.Append(100 + i);
                expected.push_back(100 + i);
            }
            Arcs twice = expected;
            if (!implied)
                twice.push_back(length);
            twice.insert(twice.end(), expected.begin(), expected.end());
            EXPECT_TRUE(oid.Append(oid, implied));
            EXPECT_EQ(ArcsOf(oid), twice);
        }
    }
}

TEST(ObjectIdentifier, AppendsStringIndexes)
{
    const unsigned char bytes[] = {0, 127, 128, 255};
    BObjectIdentifier oid(9u);
    oid.Append(bytes, 4, false);
    EXPECT_EQ(ArcsOf(oid), (Arcs{9, 4, 0, 127, 128, 255}));
    oid.Set(9u);
    oid.Append("\xff"
               "a",
               2, true);
    EXPECT_EQ(ArcsOf(oid), (Arcs{9, 255, 97}));
    oid.Append("", 0, true);
    EXPECT_EQ(oid.Length(), 3u);
    oid.Append("", 0, false);
    EXPECT_EQ(ArcsOf(oid), (Arcs{9, 255, 97, 0}));
}

TEST(ObjectIdentifier, ALongStringIndexHasTheSameCapacityAsSingleAppends)
{
    const std::string text(100, 'x');
    BObjectIdentifier whole;
    BObjectIdentifier single;
    whole.Append(text.data(), 100, false);
    single.Append(100u);
    for (const char c : text)
        single.Append(static_cast<unsigned>(c));
    EXPECT_EQ(whole, single);
    EXPECT_EQ(whole.Capacity(), single.Capacity());
}

TEST(ObjectIdentifier, NegativeCountIsKeptAsThePrefixAlone)
{
    BObjectIdentifier oid;
    oid.Append("abc", -1, false);
    EXPECT_EQ(ArcsOf(oid), Arcs{UINT_MAX});
    oid.Append("abc", -1, true);
    EXPECT_EQ(oid.Length(), 1u);
    EXPECT_TRUE(oid.Set("abc", INT_MIN, false));
    EXPECT_EQ(ArcsOf(oid), Arcs{0x80000000u});
    EXPECT_TRUE(oid.Set("abc", INT_MIN, true));
    EXPECT_EQ(oid.Length(), 0u);
}

TEST(ObjectIdentifier, SetsStringIndexes)
{
    BObjectIdentifier oid = Oid({1, 3, 6});
    EXPECT_TRUE(oid.Set("ab", 2, false));
    EXPECT_EQ(ArcsOf(oid), (Arcs{2, 97, 98}));
    const unsigned char bytes[] = {200};
    EXPECT_TRUE(oid.Set(bytes, 1, true));
    EXPECT_EQ(ArcsOf(oid), Arcs{200});
    EXPECT_TRUE(oid.Set(bytes, 0, true));
    EXPECT_EQ(oid.Length(), 0u);
    EXPECT_TRUE(oid.Set(bytes, 0, false));
    EXPECT_EQ(ArcsOf(oid), Arcs{0});
    EXPECT_TRUE(oid.Set(static_cast<const char*>(nullptr), 3, false));
    EXPECT_EQ(ArcsOf(oid), Arcs{0});
}

TEST(ObjectIdentifier, ReverseTable)
{
    const Arcs rows[][2] = {{{}, {}}, {{1}, {1}}, {{1, 2}, {2, 1}}, {{1, 2, 3}, {3, 2, 1}}};
    for (const auto& row : rows) {
        BObjectIdentifier oid = Oid(row[0]);
        oid.Reverse();
        EXPECT_EQ(ArcsOf(oid), row[1]);
    }
}

TEST(ObjectIdentifier, AttachTakesOverAndDetachHandsOut)
{
    unsigned* storage = new unsigned[8]{1, 3, 6};
    BObjectIdentifier oid;
    oid.Attach(3, storage, 8);
    EXPECT_EQ(oid.Arcs(), storage);
    EXPECT_EQ(oid.Capacity(), 8u);
    unsigned length = 0;
    unsigned* out = oid.Detach(length);
    EXPECT_EQ(out, storage);
    EXPECT_EQ(length, 3u);
    EXPECT_EQ(oid.Length(), 0u);
    EXPECT_EQ(oid.Arcs(), nullptr);
    EXPECT_EQ(oid.Capacity(), 0u);
    delete[] out;
}

TEST(ObjectIdentifier, ALengthWithoutStorageReadsAsEmpty)
{
    BObjectIdentifier oid;
    oid.Attach(3, nullptr, 0);
    EXPECT_EQ(oid.Length(), 0u);
    EXPECT_EQ(oid.Compare(BObjectIdentifier()), 0);
    EXPECT_EQ(Text(oid), "");
    EXPECT_TRUE(oid.Append(4u));
    EXPECT_EQ(ArcsOf(oid), Arcs{4});
}

TEST(ObjectIdentifier, ClearKeepsTheStorageAndTruncateShortens)
{
    BObjectIdentifier oid = Oid({1, 3, 6});
    const unsigned* storage = oid.Arcs();
    oid.Truncate(5);
    EXPECT_EQ(oid.Length(), 3u);
    oid.Truncate(1);
    EXPECT_EQ(ArcsOf(oid), Arcs{1});
    oid.Clear();
    EXPECT_EQ(oid.Length(), 0u);
    EXPECT_EQ(oid.Arcs(), storage);
}
