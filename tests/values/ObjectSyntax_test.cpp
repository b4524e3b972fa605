// Tagged value: setters, copies, ownership and text.
#include "tests/support/ValueText.h"

#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <type_traits>
#include <utility>

using namespace VLK;
using namespace VLKTest;

namespace {

// An object of all zero bytes, as a removed binding leaves one behind.
class ZeroValue {
public:
    ZeroValue() { std::memset(m_storage, 0, sizeof m_storage); }
    ~ZeroValue() { Get().~BObjectSyntax(); }
    BObjectSyntax& Get() { return *std::launder(reinterpret_cast<BObjectSyntax*>(m_storage)); }

private:
    alignas(BObjectSyntax) unsigned char m_storage[sizeof(BObjectSyntax)];
};

struct Case {
    const char* name;
    unsigned char tag;
    const char* text;
    std::function<void(BObjectSyntax&)> set;
};

const Case kCases[] = {
    {"int", 2, "-5", [](BObjectSyntax& v) { v.SetInt(-5); }},
    {"counter", 65, "4294967295", [](BObjectSyntax& v) { v.SetCounter(4294967295u); }},
    {"gauge", 66, "7", [](BObjectSyntax& v) { v.SetGauge(7); }},
    {"ticks", 67, "0", [](BObjectSyntax& v) { v.SetTimeTicks(0); }},
    {"ctr64", 70, "4294967298",
     [](BObjectSyntax& v) {
         v.SetCtr64(SCTR64{1, 2});
     }},
    {"ctr64 zero", 70, "0", [](BObjectSyntax& v) { v.SetCtr64(BCounter64()); }},
    {"null", 5, "Null", [](BObjectSyntax& v) { v.SetNull(); }},
    {"noSuchObject", 128, "Null/noSuchObject",
     [](BObjectSyntax& v) { v.SetV2Exception(eNoSuchObject); }},
    {"noSuchInstance", 129, "Null/noSuchInstance",
     [](BObjectSyntax& v) { v.SetV2Exception(eNoSuchInstance); }},
    {"endOfMibView", 130, "Null/endOfMibView",
     [](BObjectSyntax& v) { v.SetV2Exception(eEndOfMibView); }},
    {"octets", 4, "abc", [](BObjectSyntax& v) { v.SetOctets(Octets("abc")); }},
    {"binary octets", 4, "00:01",
     [](BObjectSyntax& v) { v.SetOctets(Octets(std::string("\0\x01", 2))); }},
    {"no octets", 4, "", [](BObjectSyntax& v) { v.SetOctets(BOctetString()); }},
    {"string", 4, "eth0", [](BObjectSyntax& v) { v.SetOctets(BString("eth0")); }},
    {"no string", 4, "", [](BObjectSyntax& v) { v.SetOctets(BString()); }},
    {"bits", 4, "80:40", [](BObjectSyntax& v) { v.SetBits(Octets("\x80\x40")); }},
    {"opaque", 68, "9f:78:04", [](BObjectSyntax& v) { v.SetOpaque(Octets("\x9f\x78\x04")); }},
    {"text opaque", 68, "hi", [](BObjectSyntax& v) { v.SetOpaque(Octets("hi")); }},
    {"no opaque", 68, "", [](BObjectSyntax& v) { v.SetOpaque(BOctetString()); }},
    {"oid", 6, "1.3.6.1", [](BObjectSyntax& v) { v.SetObjectId(Oid("1.3.6.1")); }},
    {"no oid", 6, "", [](BObjectSyntax& v) { v.SetObjectId(BObjectIdentifier()); }},
    {"address", 64, "192.168.1.254",
     [](BObjectSyntax& v) { v.SetIpAddress(BIpAddress(192, 168, 1, 254)); }},
};

} // namespace

TEST(ObjectSyntax, EverySetterGivesItsTagAndText)
{
    for (const Case& c : kCases) {
        BObjectSyntax value;
        c.set(value);
        EXPECT_EQ(value.Syntax(), c.tag) << c.name;
        EXPECT_EQ(Text(value.ValToStr()), c.text) << c.name;
        EXPECT_EQ(value.IsException(), c.tag >= 128) << c.name;
    }
}

TEST(ObjectSyntax, EveryValueReplacesEveryOther)
{
    for (const Case& from : kCases) {
        for (const Case& to : kCases) {
            BObjectSyntax value;
            from.set(value);
            to.set(value);
            EXPECT_EQ(value.Syntax(), to.tag) << from.name << " to " << to.name;
            EXPECT_EQ(Text(value.ValToStr()), to.text) << from.name << " to " << to.name;
        }
    }
}

TEST(ObjectSyntax, EveryValueIsAssignedOverEveryOther)
{
    for (const Case& from : kCases) {
        for (const Case& to : kCases) {
            BObjectSyntax source;
            to.set(source);
            BObjectSyntax value;
            from.set(value);
            value = source;
            EXPECT_EQ(value.Syntax(), to.tag) << from.name << " to " << to.name;
            EXPECT_EQ(Text(value.ValToStr()), to.text) << from.name << " to " << to.name;
            source.SetInt(1);
            EXPECT_EQ(Text(value.ValToStr()), to.text) << from.name << " to " << to.name;
            BObjectSyntax moved;
            from.set(moved);
            moved = std::move(value);
            EXPECT_EQ(moved.Syntax(), to.tag);
            EXPECT_EQ(Text(moved.ValToStr()), to.text);
            EXPECT_EQ(value.Syntax(), eAsnNull);
        }
    }
}

TEST(ObjectSyntax, CopiesAreDeepAndMovesHandOver)
{
    static_assert(std::is_nothrow_move_constructible<BObjectSyntax>::value, "noexcept");
    static_assert(std::is_nothrow_move_assignable<BObjectSyntax>::value, "noexcept");
    BObjectSyntax octets;
    octets.SetOctets(Octets("abc"));
    const BObjectSyntax copy(octets);
    EXPECT_NE(copy.Octets().Data(), octets.Octets().Data());
    EXPECT_EQ(BytesOf(copy.Octets()), "abc");
    const unsigned char* storage = octets.Octets().Data();
    const BObjectSyntax moved(std::move(octets));
    EXPECT_EQ(moved.Octets().Data(), storage);
    EXPECT_EQ(octets.Syntax(), eAsnNull);
    EXPECT_EQ(octets.Octets().Length(), 0u);
}

TEST(ObjectSyntax, NewObjectsHaveTheTagAndNoValue)
{
    EXPECT_EQ(BObjectSyntax().Syntax(), eAsnNull);
    const BObjectSyntax octets(eAsnOctetString);
    EXPECT_EQ(octets.Syntax(), 4);
    EXPECT_EQ(octets.Octets().Length(), 0u);
    EXPECT_EQ(octets.Octets().Data(), nullptr);
    const BObjectSyntax oid(eAsnObjectId);
    EXPECT_EQ(oid.Syntax(), 6);
    EXPECT_EQ(oid.ObjectId().Length(), 0u);
    EXPECT_EQ(Text(BObjectSyntax(eAsnInteger).ValToStr()), "0");
    EXPECT_EQ(Text(BObjectSyntax(eAsnIpAddress).ValToStr()), "0.0.0.0");
    EXPECT_EQ(Text(BObjectSyntax(eAsnCounter64).ValToStr()), "0");
}

TEST(ObjectSyntax, AssigningItselfKeepsTheValue)
{
    for (const Case& c : kCases) {
        BObjectSyntax value;
        c.set(value);
        const unsigned char* storage = value.Octets().Data();
        value.Assign(value);
        BObjectSyntax& self = value;
        value = self;
        value = std::move(self);
        EXPECT_EQ(value.Syntax(), c.tag) << c.name;
        EXPECT_EQ(Text(value.ValToStr()), c.text) << c.name;
        EXPECT_EQ(value.Octets().Data(), storage) << c.name;
    }
}

TEST(ObjectSyntax, ItsOwnPartsMayBeGivenToItsSetters)
{
    const auto make = [] {
        BObjectSyntax value;
        value.SetOctets(Octets("abc"));
        return value;
    };
    BObjectSyntax value = make();
    value.SetOctets(value.Octets());
    EXPECT_EQ(Text(value.ValToStr()), "abc");
    value.SetBits(value.Octets());
    EXPECT_EQ(Text(value.ValToStr()), "abc");
    value.SetOpaque(value.Octets());
    EXPECT_EQ(value.Syntax(), eAsnOpaque);
    EXPECT_EQ(Text(value.ValToStr()), "abc");
    value.SetObjectId(Oid("1.3.6"));
    value.SetObjectId(value.ObjectId());
    EXPECT_EQ(Text(value.ValToStr()), "1.3.6");
    // The empty stand-ins for other tags are no part of the value.
    value.SetOctets(value.Octets());
    EXPECT_EQ(value.Syntax(), eAsnOctetString);
    EXPECT_EQ(Text(value.ValToStr()), "");
}

TEST(ObjectSyntax, FreeResourcesZeroesTheValueAndKeepsTheTag)
{
    for (const Case& c : kCases) {
        BObjectSyntax value;
        c.set(value);
        value.FreeResources();
        EXPECT_EQ(value.Syntax(), c.tag) << c.name;
        EXPECT_EQ(Text(value.ValToStr()),
                  Text(BObjectSyntax(static_cast<EAsnSyntax>(c.tag)).ValToStr()))
            << c.name;
        value.FreeResources();
    }
}

TEST(ObjectSyntax, WhatAValueDoesNotUseOfItsAreaIsZero)
{
    for (const Case& c : kCases) {
        std::size_t used = 4;
        if (c.tag == eAsnCounter64)
            used = sizeof(SCTR64);
        else if (c.tag == eAsnOctetString || c.tag == eAsnOpaque || c.tag == eAsnObjectId)
            continue;
        else if (c.tag == eAsnNull || c.tag >= 128)
            used = 0;
        BObjectSyntax value;
        value.SetObjectId(Oid("1.3.6.1"));
        c.set(value);
        unsigned char bytes[sizeof value];
        std::memcpy(bytes, static_cast<const void*>(&value), sizeof bytes);
        for (std::size_t i = alignof(BObjectSyntax) + used; i < sizeof bytes; ++i)
            EXPECT_EQ(bytes[i], 0) << c.name << " at " << i;
    }
}

TEST(ObjectSyntax, CopiesAllocateExactly)
{
    BObjectSyntax grown;
    grown.SetOctets(Octets("abcde"));
    EXPECT_EQ(grown.Octets().Capacity(), 8u);
    const BObjectSyntax copy(grown);
    EXPECT_EQ(copy.Octets().Capacity(), 5u);
    BObjectSyntax oid;
    oid.SetObjectId(Oid("1.3.6"));
    EXPECT_EQ(BObjectSyntax(oid).ObjectId().Capacity(), 3u);
    BObjectSyntax empty;
    empty.SetOctets(BOctetString());
    EXPECT_EQ(BObjectSyntax(empty).Octets().Data(), nullptr);
}

TEST(ObjectSyntax, ExactSettersLeaveTheCapacityWordZero)
{
    BObjectSyntax value;
    value.SetOctets(BString("abc"));
    EXPECT_EQ(value.Octets().Capacity(), 0u);
    value.SetBits(Octets("abc"));
    EXPECT_EQ(value.Octets().Capacity(), 0u);
    value.SetOpaque(Octets("abc"));
    EXPECT_EQ(value.Octets().Capacity(), 0u);
    value.SetObjectId(Oid("1.3.6"));
    EXPECT_EQ(value.ObjectId().Capacity(), 0u);
    // Such a value can be taken out and changed like any other.
    BObjectIdentifier oid(value.ObjectId());
    EXPECT_TRUE(oid.Append(1u));
    EXPECT_EQ(Text(oid), "1.3.6.1");
}

TEST(ObjectSyntax, BitsAreStoredAsAnOctetString)
{
    BObjectSyntax value;
    value.SetBits(Octets("\xc0"));
    EXPECT_EQ(value.Syntax(), eAsnOctetString);
    EXPECT_EQ(BytesOf(value.Octets()), "\xc0");
}

TEST(ObjectSyntax, StringsAreStoredWithoutATerminator)
{
    BObjectSyntax value;
    value.SetOctets(BString("a\0b", 3));
    EXPECT_EQ(BytesOf(value.Octets()), std::string("a\0b", 3));
}

TEST(ObjectSyntax, ExceptionsCopyTheirTagOnly)
{
    BObjectSyntax source;
    source.SetOctets(Octets("abc"));
    source.SetV2Exception(eEndOfMibView);
    BObjectSyntax target;
    target.SetOctets(Octets("old"));
    target.Assign(source);
    EXPECT_EQ(target.Syntax(), 130);
    EXPECT_EQ(Text(target.ValToStr()), "Null/endOfMibView");
    EXPECT_EQ(target.Octets().Data(), nullptr);
}

TEST(ObjectSyntax, UnknownTagsAreHarmless)
{
    for (const int tag : {0, 1, 3, 7, 48, 63, 69, 71, 127, 131, 255}) {
        BObjectSyntax value(static_cast<EAsnSyntax>(tag));
        EXPECT_EQ(Text(value.ValToStr()), "") << tag;
        BObjectSyntax copy(value);
        EXPECT_EQ(copy.Syntax(), tag);
        copy.SetOctets(Octets("abc"));
        copy = value;
        EXPECT_EQ(copy.Syntax(), tag);
        copy.FreeResources();
    }
}

TEST(ObjectSyntax, AnAllZeroObjectIsValidForEveryCall)
{
    {
        ZeroValue untouched;
        EXPECT_EQ(untouched.Get().Syntax(), 0);
        EXPECT_EQ(Text(untouched.Get().ValToStr()), "");
        EXPECT_EQ(untouched.Get().Octets().Length(), 0u);
        EXPECT_EQ(untouched.Get().ObjectId().Length(), 0u);
        untouched.Get().FreeResources();
        EXPECT_EQ(BObjectSyntax(untouched.Get()).Syntax(), 0);
    }
    for (const Case& c : kCases) {
        ZeroValue zero;
        c.set(zero.Get());
        EXPECT_EQ(Text(zero.Get().ValToStr()), c.text) << c.name;
        ZeroValue assigned;
        assigned.Get().Assign(zero.Get());
        EXPECT_EQ(Text(assigned.Get().ValToStr()), c.text) << c.name;
    }
}

TEST(ObjectSyntax, ReadersAnswerForTheirOwnTagsOnly)
{
    for (const Case& c : kCases) {
        BObjectSyntax value;
        c.set(value);
        EXPECT_EQ(value.Int(), c.tag == 2 ? -5 : 0) << c.name;
        EXPECT_EQ(value.Unsigned(), c.tag == 65 ? 4294967295u : c.tag == 66 ? 7u : 0u) << c.name;
        EXPECT_EQ(Text(value.IpAddress().ToString()), c.tag == 64 ? c.text : "0.0.0.0") << c.name;
        const SCTR64 counter = value.Ctr64();
        EXPECT_EQ(Text(BCounter64(counter).ToString()), c.tag == 70 ? c.text : "0") << c.name;
        EXPECT_TRUE(c.tag == 4 || c.tag == 68 || !value.Octets().Data()) << c.name;
        EXPECT_TRUE(c.tag == 6 || !value.ObjectId().Arcs()) << c.name;
    }
}

TEST(ObjectSyntaxText, ArcsPrintAsSignedNumbers)
{
    BObjectSyntax value;
    value.SetObjectId(Oid({1, 3, 6, 1, 4294967295u}));
    EXPECT_EQ(Text(value.ValToStr()), "1.3.6.1.-1");
    value.SetObjectId(Oid({2147483647u, 2147483648u}));
    EXPECT_EQ(Text(value.ValToStr()), "2147483647.-2147483648");
}

TEST(ObjectSyntaxText, NumbersAtTheirLimits)
{
    BObjectSyntax value;
    value.SetInt(-2147483647 - 1);
    EXPECT_EQ(Text(value.ValToStr()), "-2147483648");
    value.SetInt(2147483647);
    EXPECT_EQ(Text(value.ValToStr()), "2147483647");
    value.SetTimeTicks(4294967295u);
    EXPECT_EQ(Text(value.ValToStr()), "4294967295");
    value.SetIpAddress(BIpAddress(255, 255, 255, 255));
    EXPECT_EQ(Text(value.ValToStr()), "255.255.255.255");
    value.SetCtr64(SCTR64{~0u, ~0u});
    EXPECT_EQ(Text(value.ValToStr()), "18446744073709551615");
}

TEST(ObjectSyntaxText, OctetsPrintAsTextOnlyWhenAllOfThemAre)
{
    BObjectSyntax value;
    value.SetOctets(Octets("line\r\n"));
    EXPECT_EQ(Text(value.ValToStr()), "line\r\n");
    value.SetOctets(Octets(std::string("a\0", 2)));
    EXPECT_EQ(Text(value.ValToStr()), std::string("a\0", 2));
    value.SetOctets(Octets("a\x80"));
    EXPECT_EQ(Text(value.ValToStr()), "61:80");
}
