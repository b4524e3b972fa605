#include "host/MessageSize.h"

#include "Ber.h"

#include <climits>
#include <gtest/gtest.h>
#include <vector>

using namespace VLK;
using namespace VLK::host;

namespace {

unsigned long SizeOf(const BObjectSyntax& value, const char* name = "1.3.6.1.2.1.1.1.0")
{
    return BindingSize(BVarBind(BObjectIdentifier(BString(name)), value));
}

// Sequence, name of ten bytes, then the value.
constexpr unsigned long kAround = 2 + 10;

template <class TSet>
unsigned long ValueSize(TSet set)
{
    BObjectSyntax value;
    set(value);
    return SizeOf(value) - kAround;
}

} // namespace

TEST(MessageSize, IntegersTakeTheFewestBytes)
{
    const std::pair<int, unsigned long> integers[] = {{0, 3},
                                                      {127, 3},
                                                      {128, 4},
                                                      {-128, 3},
                                                      {-129, 4},
                                                      {32767, 4},
                                                      {32768, 5},
                                                      {8388607, 5},
                                                      {8388608, 6},
                                                      {2147483647, 6},
                                                      {-32768, 4},
                                                      {-32769, 5},
                                                      {-2147483647 - 1, 6}};
    for (const auto& [number, size] : integers)
        EXPECT_EQ(ValueSize([n = number](BObjectSyntax& v) { v.SetInt(n); }), size) << number;
}

TEST(MessageSize, UnsignedNumbersNeedALeadingZero)
{
    EXPECT_EQ(ValueSize([](BObjectSyntax& v) { v.SetGauge(127); }), 3u);
    EXPECT_EQ(ValueSize([](BObjectSyntax& v) { v.SetGauge(128); }), 4u);
    EXPECT_EQ(ValueSize([](BObjectSyntax& v) { v.SetCounter(0xffffffff); }), 7u);
    EXPECT_EQ(ValueSize([](BObjectSyntax& v) { v.SetTimeTicks(0x7fffffff); }), 6u);
    EXPECT_EQ(ValueSize([](BObjectSyntax& v) { v.SetCtr64(SCTR64{0xffffffff, 0}); }), 11u);
    EXPECT_EQ(ValueSize([](BObjectSyntax& v) { v.SetCtr64(SCTR64{0, 1}); }), 3u);
}

TEST(MessageSize, OtherValues)
{
    EXPECT_EQ(ValueSize([](BObjectSyntax& v) { v.SetNull(); }), 2u);
    EXPECT_EQ(ValueSize([](BObjectSyntax& v) { v.SetV2Exception(eEndOfMibView); }), 2u);
    EXPECT_EQ(ValueSize([](BObjectSyntax& v) { v.SetIpAddress(BIpAddress(1, 2, 3, 4)); }), 6u);
    EXPECT_EQ(ValueSize([](BObjectSyntax& v) { v.SetOctets(BOctetString("abc", 3)); }), 5u);
    EXPECT_EQ(ValueSize([](BObjectSyntax& v) { v.SetObjectId(BObjectIdentifier(0u)); }), 3u);
}

// The frames grow by a byte at 128 and again at 256 bytes of content.
TEST(MessageSize, LengthsGrowWithTheirContent)
{
    for (unsigned length : {0u, 90u, 113u, 114u, 127u, 128u, 240u, 255u, 256u, 4000u, 65536u}) {
        std::string octets(length, 'x');
        BObjectSyntax value;
        value.SetOctets(BOctetString(octets.data(), length));
        ber::Bytes encoded = ber::Binding({1, 3, 6, 1, 2, 1, 1, 1, 0}, ber::Tlv(4, octets));
        EXPECT_EQ(SizeOf(value), encoded.size()) << length;
    }
}

TEST(MessageSize, NamesAreCountedArcByArc)
{
    const ber::Oid arcs[] = {{0, 0},
                             {1, 3},
                             {2, 47},
                             {1, 3, 127},
                             {1, 3, 128},
                             {1, 3, 16383, 16384},
                             {1, 3, 4294967295}};
    for (const ber::Oid& arc : arcs) {
        BVarBind binding(BObjectIdentifier(static_cast<unsigned>(arc.size()), arc.data()));
        EXPECT_EQ(BindingSize(binding), ber::Binding(arc).size());
    }
}

TEST(MessageSize, ABudgetTakesWhatFitsAndNothingMore)
{
    BVarBind binding(BObjectIdentifier(BString("1.3.6.1.2.1.1.1.0")));
    BMessageBudget roomy(43 + 2 * 14, 6, 1 << 24);
    EXPECT_TRUE(roomy.Take(binding));
    EXPECT_FALSE(BMessageBudget(20, 6, 1).Take(binding));

    int taken = 0;
    BMessageBudget budget(484, 6, 1 << 24);
    while (budget.Take(binding))
        ++taken;
    std::string list;
    for (int i = 0; i < taken; ++i)
        list += ber::Binding({1, 3, 6, 1, 2, 1, 1, 1, 0});
    EXPECT_LE(ber::Message(1, "public", 0xa2, 1, 0, 0, list).size(), 484u + 9u);
    EXPECT_GT(taken, 28);
    EXPECT_FALSE(budget.Take(binding));
}

TEST(MessageSize, AnAnswerMayFillTheMessageToTheLastByte)
{
    const ber::Oid name{1, 3, 6, 1, 2, 1, 1, 1, 0};
    for (int requestId : {1, 0x80, 0x7fff, 0x800000, 0x7fffffff}) {
        ber::Bytes id;
        for (int rest = requestId; rest || id.empty(); rest >>= 8)
            id.insert(id.begin(), static_cast<char>(rest));
        if (id[0] & 0x80)
            id.insert(id.begin(), '\0');
        BVarBind binding{BObjectIdentifier(BString("1.3.6.1.2.1.1.1.0"))};
        binding.Value().SetOctets(BOctetString(1000, nullptr));
        const ber::Bytes byte(1, '\0');
        ber::Bytes pdu = ber::Tlv(2, id) + ber::Tlv(2, byte) + ber::Tlv(2, byte) +
                         ber::Tlv(0x30, ber::Binding(name, ber::Tlv(4, ber::Bytes(1000, 'x'))));
        ber::Bytes message =
            ber::Tlv(0x30, ber::Tlv(2, byte) + ber::Tlv(4, "public") + ber::Tlv(0xa2, pdu));
        auto size = static_cast<unsigned>(message.size());
        EXPECT_TRUE(BMessageBudget(size, 6, requestId).Take(binding)) << requestId;
        EXPECT_FALSE(BMessageBudget(size - 1, 6, requestId).Take(binding)) << requestId;
    }
}

// Of whatever values: what one may take in most is a shortcut only.
TEST(MessageSize, AListFitsWhereItsBindingsFitOneByOne)
{
    std::vector<BObjectSyntax> values(7);
    values[1].SetInt(INT_MIN);
    values[2].SetGauge(UINT_MAX);
    values[3].SetCtr64(BCounter64(UINT_MAX, UINT_MAX));
    values[4].SetOctets(BOctetString(300, nullptr));
    values[5].SetObjectId(BObjectIdentifier(BString("2.4294967215.4294967295.4294967295")));
    values[6].SetIpAddress(BIpAddress(192, 0, 2, 1));
    BVarBindList list;
    unsigned long size = 0;
    for (const BObjectSyntax& value : values) {
        BVarBind binding(BObjectIdentifier(BString("1.3.6.4294967295.4294967295.0")), value);
        size += BindingSize(binding);
        ASSERT_TRUE(list.Append(binding));
        const unsigned least = static_cast<unsigned>(size);
        const unsigned most = least + 80; // more than the frames take
        for (unsigned room = least; room < most; ++room) {
            BMessageBudget oneByOne(room, 6, 1);
            bool fits = true;
            for (unsigned i = 0; i < list.Count(); ++i)
                fits = fits && oneByOne.Take(list[static_cast<int>(i)]);
            EXPECT_EQ(BMessageBudget(room, 6, 1).Fits(list), fits) << list.Count() << ' ' << room;
        }
        EXPECT_FALSE(BMessageBudget(least, 6, 1).Fits(list));
        EXPECT_TRUE(BMessageBudget(most, 6, 1).Fits(list));
    }
}
