// Object identifier: order, subtree membership and index decoding.
#include "tests/support/ValueText.h"

#include <algorithm>
#include <climits>
#include <gtest/gtest.h>
#include <random>

using namespace VLK;
using namespace VLKTest;

namespace {

// All lists of at most `longest` arcs over the alphabet.
std::vector<Arcs> AllArcs(const Arcs& alphabet, unsigned longest)
{
    std::vector<Arcs> all{{}};
    for (std::size_t first = 0; longest > 0; --longest) {
        const std::size_t end = all.size();
        for (; first < end; ++first) {
            for (const unsigned arc : alphabet) {
                all.push_back(all[first]);
                all.back().push_back(arc);
            }
        }
    }
    return all;
}

int LexicographicOrder(const Arcs& a, const Arcs& b)
{
    return a == b ? 0
                  : (std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end()) ? -1 : 1);
}

bool IsPrefix(const Arcs& prefix, const Arcs& whole)
{
    return prefix.size() <= whole.size() && std::equal(prefix.begin(), prefix.end(), whole.begin());
}

// The family rule written as plainly as it can be.
bool IsInFamily(const Arcs& arcs, const Arcs& subtree, const std::vector<unsigned char>& mask)
{
    if (subtree.size() > arcs.size())
        return false;
    for (std::size_t i = 0; i < subtree.size(); ++i) {
        const bool wanted = i >= mask.size() * 8 || ((mask[i / 8] >> (7 - i % 8)) & 1) == 1;
        if (wanted && arcs[i] != subtree[i])
            return false;
    }
    return true;
}

const Arcs kSmallAlphabet{0, 1, 2, 4294967295u};

} // namespace

TEST(ObjectIdentifierOrder, ProperPrefixSortsFirst)
{
    EXPECT_EQ(Oid({1, 3, 6}).Compare(Oid({1, 3, 6, 1})), -1);
    EXPECT_EQ(Oid({1, 3, 6, 1}).Compare(Oid({1, 3, 6})), 1);
    EXPECT_EQ(Oid({1, 3, 6, 1}).Compare(Oid({1, 3, 7})), -1);
    EXPECT_EQ(BObjectIdentifier().Compare(BObjectIdentifier(0u)), -1);
    EXPECT_EQ(Oid({1, 3}).Compare(Oid({1, 3})), 0);
    EXPECT_EQ(BObjectIdentifier().Compare(BObjectIdentifier()), 0);
}

TEST(ObjectIdentifierOrder, ArcsCompareUnsigned)
{
    EXPECT_EQ(Oid({1, 4294967295u}).Compare(Oid({1, 0})), 1);
    EXPECT_EQ(Oid({1, 2147483648u}).Compare(Oid({1, 2147483647u})), 1);
}

TEST(ObjectIdentifierOrder, EqualsTheLexicographicOrderOfAllShortOnes)
{
    const std::vector<Arcs> all = AllArcs(kSmallAlphabet, 4);
    ASSERT_EQ(all.size(), 341u);
    std::vector<BObjectIdentifier> oids;
    for (const Arcs& arcs : all)
        oids.push_back(Oid(arcs));
    for (std::size_t a = 0; a < all.size(); ++a) {
        for (std::size_t b = 0; b < all.size(); ++b) {
            const int order = LexicographicOrder(all[a], all[b]);
            ASSERT_EQ(oids[a].Compare(oids[b]), order) << a << ' ' << b;
            ASSERT_EQ(oids[a] == oids[b], order == 0);
            ASSERT_EQ(oids[a] != oids[b], order != 0);
            ASSERT_EQ(oids[a] < oids[b], order < 0);
            ASSERT_EQ(oids[a].IsStartingSubOidOf(oids[b]), IsPrefix(all[a], all[b]));
            ASSERT_EQ(oids[b].IsUnderSubtree(oids[a]), IsPrefix(all[a], all[b]));
        }
    }
}

TEST(ObjectIdentifierOrder, EqualsTheLexicographicOrderOfRandomOnes)
{
    const unsigned seed = std::random_device()();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    for (int round = 0; round < 20000; ++round) {
        Arcs a(random() % 24);
        for (unsigned& arc : a)
            arc =
                random() % 3 == 0 ? kSmallAlphabet[random() % 4] : static_cast<unsigned>(random());
        Arcs b = a;
        b.resize(random() % 24, 7);
        if (!b.empty() && random() % 2)
            b[random() % b.size()] += random() % 2 ? 1 : 4294967295u;
        ASSERT_EQ(Oid(a).Compare(Oid(b)), LexicographicOrder(a, b))
            << Text(Oid(a)) << ' ' << Text(Oid(b));
        ASSERT_EQ(Oid(a).IsStartingSubOidOf(Oid(b)), IsPrefix(a, b));
    }
}

TEST(ObjectIdentifierSubtree, EveryOidStartsItselfAndTheEmptyOneStartsAll)
{
    EXPECT_TRUE(Oid({1, 3}).IsStartingSubOidOf(Oid({1, 3})));
    EXPECT_TRUE(BObjectIdentifier().IsStartingSubOidOf(Oid({1, 3})));
    EXPECT_TRUE(BObjectIdentifier().IsStartingSubOidOf(BObjectIdentifier()));
    EXPECT_FALSE(Oid({1, 3, 6}).IsStartingSubOidOf(Oid({1, 3})));
    EXPECT_FALSE(Oid({1, 4}).IsStartingSubOidOf(Oid({1, 3, 6})));
}

TEST(ObjectIdentifierSubtree, AZeroBitIsAWildcard)
{
    const unsigned char mask[] = {0xbf};
    const BObjectIdentifier subtree = Oid({1, 3, 6, 1, 2});
    EXPECT_TRUE(Oid({1, 4, 6, 1, 2, 7}).IsUnderSubtree(subtree, mask, 1));
    EXPECT_TRUE(Oid({1, 4, 6, 1, 2}).IsUnderSubtree(subtree, mask, 1));
    EXPECT_FALSE(Oid({1, 3, 7, 1, 2, 7}).IsUnderSubtree(subtree, mask, 1));
    EXPECT_FALSE(Oid({1, 4, 6, 1}).IsUnderSubtree(subtree, mask, 1));
}

TEST(ObjectIdentifierSubtree, PositionsBeyondTheMaskMustMatch)
{
    const unsigned char mask[] = {0x00};
    const Arcs subtree{1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    for (unsigned i = 0; i < 10; ++i) {
        Arcs arcs = subtree;
        arcs[i] = 99;
        EXPECT_EQ(Oid(arcs).IsUnderSubtree(Oid(subtree), mask, 1), i < 8) << i;
    }
}

TEST(ObjectIdentifierSubtree, TheSecondMaskByteCoversPositions8To15)
{
    const unsigned char mask[] = {0xff, 0x7f};
    const Arcs subtree{1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    for (unsigned i = 0; i < 10; ++i) {
        Arcs arcs = subtree;
        arcs[i] = 99;
        EXPECT_EQ(Oid(arcs).IsUnderSubtree(Oid(subtree), mask, 2), i == 8) << i;
    }
}

TEST(ObjectIdentifierSubtree, WithoutAMaskThePrefixDecides)
{
    const unsigned char mask[] = {0};
    EXPECT_TRUE(Oid({1, 3, 6}).IsUnderSubtree(Oid({1, 3}), mask, 0));
    EXPECT_FALSE(Oid({1, 3, 6}).IsUnderSubtree(Oid({1, 4}), mask, 0));
    EXPECT_FALSE(Oid({1, 3, 6}).IsUnderSubtree(Oid({1, 4}), nullptr, 0));
    EXPECT_FALSE(Oid({1, 3, 6}).IsUnderSubtree(Oid({1, 4}), nullptr, 5));
    EXPECT_TRUE(Oid({1, 3, 6}).IsUnderSubtree(BObjectIdentifier(), mask, 1));
    EXPECT_TRUE(BObjectIdentifier().IsUnderSubtree(BObjectIdentifier(), mask, 1));
    EXPECT_FALSE(BObjectIdentifier().IsUnderSubtree(Oid({1}), mask, 1));
}

TEST(ObjectIdentifierSubtree, EqualsTheFamilyRuleForAllShortMasks)
{
    const std::vector<Arcs> all = AllArcs({0, 1, 4294967295u}, 3);
    for (const Arcs& subtree : all) {
        for (const Arcs& arcs : all) {
            for (unsigned bits = 0; bits < 16; ++bits) {
                const std::vector<unsigned char> mask{static_cast<unsigned char>(bits << 4)};
                ASSERT_EQ(Oid(arcs).IsUnderSubtree(Oid(subtree), mask.data(), 1),
                          IsInFamily(arcs, subtree, mask))
                    << Text(Oid(arcs)) << " under " << Text(Oid(subtree)) << " mask " << bits;
            }
        }
    }
}

namespace {

enum EKind { kOctets, kAscii, kAddress };

bool Decode(const BObjectIdentifier& oid, EKind kind, bool implied, int& pos)
{
    if (kind == kAddress)
        return oid.IsCreatedFromIpAddr(pos);
    return kind == kOctets ? oid.IsCreatedFromOctetStr(pos, implied)
                           : oid.IsCreatedFromAsciiStr(pos, implied);
}

} // namespace

TEST(ObjectIdentifierIndex, DecodingTable)
{
    const struct {
        Arcs arcs;
        EKind kind;
        bool implied;
        int pos;
        int end; // -1: refused
    } rows[] = {
        {{2, 97, 98}, kOctets, false, 0, 3},
        {{3, 97, 98}, kOctets, false, 0, -1},
        {{2, 97, 98, 5}, kOctets, false, 0, 3},
        {{0}, kOctets, false, 0, 1},
        {{0, 9}, kOctets, false, 0, 1},
        {{0}, kOctets, false, 1, -1},
        {{}, kOctets, false, 0, -1},
        {{}, kOctets, true, 0, -1},
        {{97, 98}, kOctets, true, 0, 2},
        {{97, 98}, kOctets, true, 1, 2},
        {{97, 98}, kOctets, true, 2, -1},
        {{1, 255}, kOctets, false, 0, 2},
        {{1, 256}, kOctets, false, 0, -1},
        {{256}, kOctets, true, 0, -1},
        {{1, 0}, kOctets, false, 0, 2},
        {{4294967295u, 1}, kOctets, false, 0, -1},
        {{9, 1, 65}, kOctets, false, 1, 3},
        {{1, 65}, kOctets, false, -1, -1},
        {{1, 65}, kOctets, true, -1, -1},
        {{1, 65}, kOctets, false, INT_MAX, -1},
        {{1, 65}, kOctets, false, INT_MIN, -1},
        {{1, 31}, kAscii, false, 0, -1},
        {{1, 32}, kAscii, false, 0, 2},
        {{1, 126}, kAscii, false, 0, 2},
        {{1, 128}, kAscii, false, 0, -1},
        {{0}, kAscii, false, 0, 1},
        {{65, 66}, kAscii, true, 0, 2},
        {{65, 10}, kAscii, true, 0, -1},
        {{2, 65}, kAscii, false, 0, -1},
        {{1, 65}, kAscii, false, -1, -1},
        {{10, 0, 0, 255}, kAddress, false, 0, 4},
        {{10, 0, 0, 256}, kAddress, false, 0, -1},
        {{10, 0, 0}, kAddress, false, 0, -1},
        {{}, kAddress, false, 0, -1},
        {{7, 10, 0, 0, 1, 8}, kAddress, false, 1, 5},
        {{7, 10, 0, 0, 1}, kAddress, false, 2, -1},
        {{10, 0, 0, 1}, kAddress, false, -1, -1},
        {{10, 0, 0, 1}, kAddress, false, INT_MAX, -1},
    };
    for (const auto& row : rows) {
        int pos = row.pos;
        const bool done = Decode(Oid(row.arcs), row.kind, row.implied, pos);
        EXPECT_EQ(done, row.end >= 0) << Text(Oid(row.arcs)) << " at " << row.pos;
        EXPECT_EQ(pos, row.end >= 0 ? row.end : row.pos) << Text(Oid(row.arcs));
    }
}

TEST(ObjectIdentifierIndex, Arc127PassesAsText)
{
    int pos = 0;
    EXPECT_TRUE(Oid({1, 127}).IsCreatedFromAsciiStr(pos, false));
    EXPECT_EQ(pos, 2);
}

TEST(ObjectIdentifierIndex, ReadsBackWhatWasAppended)
{
    BObjectIdentifier index(7u);
    index.Append("eth0", 4, false);
    index.Append("\x01\xff", 2, false);
    for (const unsigned arc : {10u, 1u, 2u, 3u})
        index.Append(arc);
    index.Append("end", 3, true);
    int pos = 1;
    EXPECT_TRUE(index.IsCreatedFromAsciiStr(pos, false));
    EXPECT_EQ(pos, 6);
    EXPECT_FALSE(index.IsCreatedFromAsciiStr(pos, false));
    EXPECT_TRUE(index.IsCreatedFromOctetStr(pos, false));
    EXPECT_EQ(pos, 9);
    EXPECT_TRUE(index.IsCreatedFromIpAddr(pos));
    EXPECT_EQ(pos, 13);
    EXPECT_TRUE(index.IsCreatedFromAsciiStr(pos, true));
    EXPECT_EQ(pos, 16);
    EXPECT_FALSE(index.IsCreatedFromAsciiStr(pos, true));
}
