// What values and containers promise when memory runs out.
#include "tests/support/AllocationSweep.h"
#include "tests/support/ValueText.h"

#include <cstring>
#include <functional>
#include <memory>
#include <vkmibh/containers.h>

using namespace VLK;
using namespace VLKTest;

namespace {

const Arcs kSixteen(16, 7);
const Arcs kSeventeen(17, 8);

// For operations without a result.
const auto kNoResult = [](auto operate) {
    return [operate](auto& object) {
        operate(object);
        return true;
    };
};

// Sweeps an operation on an identifier of 16 arcs; refused means `refused`.
unsigned SweepOid(const std::function<bool(BObjectIdentifier&)>& operate, const Arcs& done,
                  const Arcs& refused)
{
    return SweepAllocations([] { return Oid(kSixteen); }, operate,
                            [&](BObjectIdentifier& oid, bool result) {
                                EXPECT_EQ(ArcsOf(oid), result ? done : refused);
                            });
}

Arcs Joined(Arcs a, const Arcs& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

unsigned SweepOctets(const std::function<bool(BOctetString&)>& operate, const std::string& done,
                     const std::string& refused)
{
    return SweepAllocations([] { return Octets("abcd"); }, operate,
                            [&](BOctetString& octets, bool result) {
                                EXPECT_EQ(BytesOf(octets), result ? done : refused);
                            });
}

BObjectSyntax Value(const char* text)
{
    BObjectSyntax value;
    value.SetOctets(BString(text));
    return value;
}

std::string Show(const BVarBindList& list)
{
    std::string text;
    for (unsigned i = 0; i < list.Count(); ++i) {
        const BVarBind& binding = list[static_cast<int>(i)];
        text += Text(binding.Name()) + "=" + Text(binding.Value().ValToStr()) + ";";
    }
    return text;
}

BVarBindList MakeList(unsigned count)
{
    BVarBindList list;
    for (unsigned i = 0; i < count; ++i)
        list.Append(Oid({1, i}), Value("v"));
    return list;
}

} // namespace

TEST(AllocationSweep, SeesARefusedAllocation)
{
    unsigned refused = 0;
    const unsigned allocations =
        SweepAllocations([] { return 0; },
                         [](int&) {
                             // Volatile, or a compiler may do without the allocation.
                             int* volatile memory = new (std::nothrow) int(1);
                             const bool done = memory != nullptr;
                             delete memory;
                             return done;
                         },
                         [&](int&, bool done) { refused += done ? 0 : 1; });
    EXPECT_EQ(allocations, 1u);
    EXPECT_EQ(refused, 2u);
}

TEST(AllocationSweep, AnIdentifierThatCannotGrowKeepsItsArcs)
{
    const BObjectIdentifier other = Oid({1, 3});
    EXPECT_EQ(SweepOid([](BObjectIdentifier& oid) { return oid.Append(9u); }, Joined(kSixteen, {9}),
                       kSixteen),
              1u);
    EXPECT_EQ(SweepOid([&](BObjectIdentifier& oid) { return oid.Append(other, false); },
                       Joined(kSixteen, {2, 1, 3}), kSixteen),
              1u);
    EXPECT_EQ(SweepOid([](BObjectIdentifier& oid) { return oid.Append(oid, true); },
                       Joined(kSixteen, kSixteen), kSixteen),
              1u);
    EXPECT_EQ(SweepOid([](BObjectIdentifier& oid) { return oid.ReallocArray(17, false); }, kSixteen,
                       kSixteen),
              1u);
}

TEST(AllocationSweep, StorageGrowsOnceForAWholeIndex)
{
    const Arcs hundred(100, 5);
    const BObjectIdentifier other = Oid(hundred);
    const std::string text(100, 'x');
    EXPECT_EQ(SweepOid([&](BObjectIdentifier& oid) { return oid.Append(other, false); },
                       Joined(Joined(kSixteen, {100}), hundred), kSixteen),
              1u);
    EXPECT_EQ(SweepOid([&](BObjectIdentifier& oid) { return oid.Append(other, true); },
                       Joined(kSixteen, hundred), kSixteen),
              1u);
    EXPECT_EQ(SweepOid([&](BObjectIdentifier& oid) { return oid.Set(text.data(), 100, false); },
                       Joined({100}, Arcs(100, 'x')), {}),
              1u);
    FailingAlloc fail(1);
    BObjectIdentifier oid;
    oid.Append(text.data(), 100, false);
    EXPECT_FALSE(fail.Failed());
    EXPECT_EQ(oid.Length(), 101u);
}

TEST(AllocationSweep, AnIdentifierThatCannotBeReplacedIsEmpty)
{
    const BObjectIdentifier other = Oid(kSeventeen);
    const std::string text(17, 'x');
    EXPECT_EQ(SweepOid([&](BObjectIdentifier& oid) { return oid.Set(other); }, kSeventeen, {}), 1u);
    EXPECT_EQ(
        SweepOid([&](BObjectIdentifier& oid) { return oid.Set(other, 0, ~0u); }, kSeventeen, {}),
        1u);
    EXPECT_EQ(
        SweepOid([&](BObjectIdentifier& oid) { return oid.Set(17, other.Arcs()); }, kSeventeen, {}),
        1u);
    EXPECT_EQ(SweepOid([&](BObjectIdentifier& oid) { return oid.Set(text.data(), 17, true); },
                       Arcs(17, 'x'), {}),
              1u);
}

TEST(AllocationSweep, AnIdentifierCopiedWithoutMemoryIsEmpty)
{
    const BObjectIdentifier other = Oid({1, 3, 6});
    const unsigned allocations =
        SweepAllocations([] { return 0; }, [&](int&) { return BObjectIdentifier(other); },
                         [&](int&, const BObjectIdentifier& copy) {
                             EXPECT_TRUE(copy.Length() == 0 || copy == other);
                         });
    EXPECT_EQ(allocations, 1u);
}

TEST(AllocationSweep, AFailedArcOfAStringIndexDoesNotStopTheOthers)
{
    const Arcs whole = Joined(kSixteen, {3, 97, 98, 99});
    unsigned lengths[8] = {};
    unsigned runs = 0;
    SweepAllocations([] { return Oid(kSixteen); },
                     kNoResult([](BObjectIdentifier& oid) { oid.Append("abc", 3, false); }),
                     [&](BObjectIdentifier& oid, bool) {
                         EXPECT_TRUE(oid.IsStartingSubOidOf(Oid(whole)));
                         lengths[runs++] = oid.Length();
                     });
    // One refusal is made good by the single appends; all of them leave nothing.
    ASSERT_EQ(runs, 4u);
    EXPECT_EQ(lengths[0], 20u);
    EXPECT_EQ(lengths[1], 20u);
    EXPECT_EQ(lengths[2], 16u);
    EXPECT_EQ(lengths[3], 20u);
}

TEST(AllocationSweep, ATextThatCannotBeStoredIsRefusedAndNeverHalfFilled)
{
    std::string text = "1";
    for (unsigned i = 0; i < 16; ++i)
        text += ".2";
    const BString dotted(text.c_str());
    const unsigned allocations = SweepAllocations(
        [] {
            return Oid({9, 9});
        },
        [&](BObjectIdentifier& oid) { return oid.AssignFromDottedDecimalStr(dotted); },
        [&](BObjectIdentifier& oid, bool done) {
            EXPECT_EQ(Text(oid), done ? text : "");
            if (!done) {
                EXPECT_EQ(oid.Arcs(), nullptr);
                EXPECT_EQ(oid.Capacity(), 0u);
            }
        });
    EXPECT_EQ(allocations, 2u);
}

TEST(AllocationSweep, AStringOfOctetsThatCannotGrowKeepsItsBytes)
{
    const unsigned char piece[] = {'x', 'y'};
    EXPECT_EQ(SweepOctets([](BOctetString& o) { return o.Append('e'); }, "abcde", "abcd"), 1u);
    EXPECT_EQ(SweepOctets([&](BOctetString& o) { return o.Append(2u, piece); }, "abcdxy", "abcd"),
              1u);
    EXPECT_EQ(SweepOctets([](BOctetString& o) { return o.Append(o); }, "abcdabcd", "abcd"), 1u);
    EXPECT_EQ(SweepOctets([](BOctetString& o) { return o.ReallocArray(9, false); }, "abcd", "abcd"),
              1u);
    EXPECT_EQ(SweepOctets([](BOctetString& o) { return o.Reserve(9, 0); }, "", "abcd"), 1u);
}

TEST(AllocationSweep, AStringOfOctetsThatCannotBeReplacedIsEmpty)
{
    const BOctetString other = Octets("abcdefgh");
    const BString text("abcdefgh");
    EXPECT_EQ(SweepOctets([&](BOctetString& o) { return o.Assign(other); }, "abcdefgh", ""), 1u);
    EXPECT_EQ(SweepOctets([&](BOctetString& o) { return o.Assign(text); }, "abcdefgh", ""), 1u);
    EXPECT_EQ(SweepOctets([](BOctetString& o) { return o.Assign("abcdefgh", 0); }, "abcdefgh", ""),
              1u);
    EXPECT_EQ(SweepOctets([](BOctetString& o) { return o.AssignFromHexString("61:62"); }, "ab", ""),
              1u);
}

// Sweeps a text form: what is printed is the whole text or nothing, for a text
// with a hole in it would be another value's.
template <class Value>
void SweepText(const Value& value, const std::function<BString(const Value&)>& print)
{
    const std::string whole = Text(print(value));
    unsigned empty = 0;
    const unsigned allocations =
        SweepAllocations([] { return 0; }, [&](int&) { return print(value); },
                         [&](int&, const BString& text) {
                             empty += text.empty() ? 1 : 0;
                             EXPECT_TRUE(text.empty() || Text(text) == whole) << Text(text);
                         });
    EXPECT_GE(allocations, 1u);
    EXPECT_EQ(empty, 2 * allocations);
    EXPECT_EQ(Text(print(value)), whole);
}

TEST(AllocationSweep, ATextFormIsWholeOrEmpty)
{
    for (const unsigned arcs : {1u, 23u, 24u, 47u, 100u, 300u}) {
        const BObjectIdentifier oid = Oid(Arcs(arcs, 4294967295u));
        SweepText<BObjectIdentifier>(oid, [](const auto& o) { return o.ToString(); });
        BObjectSyntax value;
        value.SetObjectId(oid);
        SweepText<BObjectSyntax>(value, [](const auto& v) { return v.ValToStr(); });
        const BOctetString octets = Octets(std::string(std::size_t{4} * arcs, '\x80'));
        SweepText<BOctetString>(octets, [](const auto& o) { return o.ToString(); });
    }
    SweepText<BCounter64>(BCounter64(~0u, ~0u), [](const auto& c) { return c.ToString(); });
}

TEST(AllocationSweep, AStringThatCannotHoldATextFormIsEmptied)
{
    const BObjectIdentifier oid = Oid(Arcs(100, 4294967295u));
    SweepAllocations([] { return BString("old"); },
                     [&](BString& text) {
                         oid.ToString(text);
                         return true;
                     },
                     [&](BString& text, bool) {
                         EXPECT_TRUE(text.empty() || text == oid.ToString()) << Text(text);
                     });
}

TEST(AllocationSweep, ATaggedValueWithoutMemoryHasItsTagAndReadsAsEmpty)
{
    const BOctetString octets = Octets("abc");
    const BString string("abc");
    const BObjectIdentifier oid = Oid("1.3.6");
    const struct {
        unsigned char tag;
        const char* text;
        std::function<void(BObjectSyntax&)> set;
    } rows[] = {
        {4, "abc", [&](BObjectSyntax& v) { v.SetOctets(octets); }},
        {4, "abc", [&](BObjectSyntax& v) { v.SetOctets(string); }},
        {4, "abc", [&](BObjectSyntax& v) { v.SetBits(octets); }},
        {68, "abc", [&](BObjectSyntax& v) { v.SetOpaque(octets); }},
        {6, "1.3.6", [&](BObjectSyntax& v) { v.SetObjectId(oid); }},
    };
    for (const auto& row : rows) {
        unsigned empty = 0;
        const unsigned allocations =
            SweepAllocations([] { return Value("old"); }, kNoResult(row.set),
                             [&](BObjectSyntax& value, bool) {
                                 EXPECT_EQ(value.Syntax(), row.tag);
                                 const std::string text = Text(value.ValToStr());
                                 EXPECT_TRUE(text.empty() || text == row.text) << text;
                                 empty += text.empty() ? 1 : 0;
                                 // Such a value can be copied and replaced like any other.
                                 BObjectSyntax copy(value);
                                 EXPECT_EQ(copy.Syntax(), row.tag);
                                 EXPECT_EQ(Text(copy.ValToStr()), text);
                                 copy = value;
                                 copy.SetOctets(value.Octets());
                                 copy.SetObjectId(value.ObjectId());
                                 copy.FreeResources();
                             });
        EXPECT_EQ(allocations, 1u);
        EXPECT_EQ(empty, 2u);
    }
}

namespace {

// What an encoder reads of a tagged value.
struct SRawOctets {
    const unsigned char* data;
    unsigned length;
    unsigned capacity;
};
struct SRawOid {
    unsigned count;
    const unsigned* arcs;
    unsigned capacity;
};
struct SRawValue {
    unsigned char tag;
    union {
        SRawOctets octets;
        SRawOid oid;
    };
};
static_assert(sizeof(SRawValue) == sizeof(BObjectSyntax), "");

SRawValue Raw(const BObjectSyntax& value)
{
    SRawValue raw;
    std::memcpy(static_cast<void*>(&raw), static_cast<const void*>(&value), sizeof raw);
    return raw;
}

} // namespace

TEST(AllocationSweep, ATaggedValueWithoutMemoryKeepsTheLengthWithoutData)
{
    const BObjectSyntax octets = Value("abc");
    BObjectSyntax oid;
    oid.SetObjectId(Oid("1.3.6.1"));
    const BString string("abcde");
    BObjectSyntax value;
    FailingAlloc fail(0);
    value.Assign(octets);
    EXPECT_EQ(Raw(value).octets.data, nullptr);
    EXPECT_EQ(Raw(value).octets.length, 3u);
    EXPECT_EQ(Raw(value).octets.capacity, 0u);
    value.Assign(oid);
    EXPECT_EQ(Raw(value).oid.arcs, nullptr);
    EXPECT_EQ(Raw(value).oid.count, 4u);
    EXPECT_EQ(Raw(value).oid.capacity, 0u);
    value.SetOctets(string);
    EXPECT_EQ(Raw(value).octets.data, nullptr);
    EXPECT_EQ(Raw(value).octets.length, 5u);
}

TEST(AllocationSweep, AReplacedValueReleasesItsArray)
{
    BObjectSyntax oid;
    oid.SetObjectId(Oid("1.3.6"));
    BObjectSyntax opaque;
    opaque.SetOpaque(Octets("abc"));
    const std::function<void(BObjectSyntax&)> replacements[] = {
        [](BObjectSyntax& v) { v.SetInt(1); },
        [](BObjectSyntax& v) { v.SetNull(); },
        [](BObjectSyntax& v) { v.SetV2Exception(eNoSuchObject); },
        [](BObjectSyntax& v) { v.FreeResources(); },
        [](BObjectSyntax& v) { v = BObjectSyntax(eAsnCounter32); },
    };
    for (const BObjectSyntax& source : {Value("abc"), oid, opaque}) {
        for (const auto& replace : replacements) {
            BObjectSyntax value(source);
            const long before = FailingAlloc::Live();
            replace(value);
            EXPECT_EQ(FailingAlloc::Live(), before - 1);
        }
    }
}

TEST(AllocationSweep, AnAssignedTaggedValueWithoutMemoryReadsAsEmpty)
{
    BObjectSyntax oid;
    oid.SetObjectId(Oid("1.3.6"));
    for (const BObjectSyntax& source : {Value("abc"), oid}) {
        EXPECT_EQ(SweepAllocations([] { return Value("old"); },
                                   [&](BObjectSyntax& value) {
                                       value = source;
                                       return true;
                                   },
                                   [&](BObjectSyntax& value, bool) {
                                       EXPECT_EQ(value.Syntax(), source.Syntax());
                                       EXPECT_TRUE(value.ValToStr().empty() ||
                                                   value.ValToStr() == source.ValToStr());
                                   }),
                  1u);
    }
}

TEST(AllocationSweep, AListThatCannotGrowIsUnchanged)
{
    const BVarBind binding(Oid({7, 7}), Value("new"));
    const std::string before = Show(MakeList(4));
    std::size_t refused = 0;
    const auto check = [&](BVarBindList& list, bool done) {
        refused += done ? 0 : 1;
        EXPECT_EQ(list.Count(), done ? 5u : 4u);
        EXPECT_EQ(list.Capacity(), done ? 8u : 4u);
        EXPECT_EQ(Show(list).substr(0, before.size()), before);
    };
    const auto make = [] { return MakeList(4); };
    EXPECT_EQ(SweepAllocations(
                  make, [&](BVarBindList& l) { return l.Append(binding); }, check),
              3u);
    EXPECT_EQ(SweepAllocations(
                  make, [](BVarBindList& l) { return l.Append(l[1]); }, check),
              3u);
    EXPECT_EQ(SweepAllocations(
                  make, [&](BVarBindList& l) { return l.Append(binding.Name()); }, check),
              2u);
    EXPECT_EQ(refused, 6u);
}

TEST(AllocationSweep, AListAppendedToAListStopsWhereMemoryEnds)
{
    const BVarBindList other = MakeList(3);
    SweepAllocations(
        [] { return MakeList(3); }, [&](BVarBindList& l) { return l.Append(other); },
        [](BVarBindList& list, bool done) { EXPECT_EQ(list.Count(), done ? 6u : 4u); });
}

TEST(AllocationSweep, AListThatCannotBeReplacedIsEmpty)
{
    const BVarBindList other = MakeList(2);
    const unsigned allocations = SweepAllocations(
        [] { return MakeList(3); }, [&](BVarBindList& list) { return list.Assign(other); },
        [](BVarBindList& list, bool done) {
            EXPECT_EQ(list.Count(), done ? 2u : 0u);
            EXPECT_EQ(list.Capacity(), done ? 2u : 0u);
        });
    EXPECT_EQ(allocations, 5u);
}

namespace {

// Sweeps `grow` on a full container: refused means nothing changed.
template <class Container>
void SweepGrowth(const std::function<void(Container&)>& fill,
                 const std::function<bool(Container&)>& grow, unsigned expectedAllocations)
{
    Container full;
    fill(full);
    const unsigned count = full.Count();
    const unsigned capacity = full.Capacity();
    unsigned refused = 0;
    struct SHolder {
        Container container;
    };
    const unsigned allocations = SweepAllocations(
        [&] {
            auto holder = std::make_unique<SHolder>();
            fill(holder->container);
            return holder;
        },
        [&](std::unique_ptr<SHolder>& holder) { return grow(holder->container); },
        [&](std::unique_ptr<SHolder>& holder, bool done) {
            refused += done ? 0 : 1;
            EXPECT_EQ(holder->container.Count(), count + (done ? 1 : 0));
            if (!done) {
                EXPECT_EQ(holder->container.Capacity(), capacity);
            }
        });
    EXPECT_EQ(allocations, expectedAllocations);
    EXPECT_EQ(refused, 2 * expectedAllocations);
}

} // namespace

TEST(AllocationSweep, ArraysThatCannotGrowAreUnchanged)
{
    static int s_thing;
    const BString string("a string with some length");
    const BObjectIdentifier oid = Oid("1.3.6");
    SweepGrowth<BPtrArray>(
        [](BPtrArray& a) {
            for (int i = 0; i < 4; ++i)
                a.PushBack(&s_thing);
        },
        [](BPtrArray& a) { return a.PushBack(&s_thing); }, 1);
    SweepGrowth<BUintArray>(
        [](BUintArray& a) {
            for (int i = 0; i < 8; ++i)
                a.PushBack(i);
        },
        [](BUintArray& a) { return a.PushBack(8); }, 1);
    SweepGrowth<BStringArray>(
        [&](BStringArray& a) {
            a.PushBack(string);
            a.PushBack(string);
        },
        [&](BStringArray& a) { return a.PushBack(string); }, 2);
    SweepGrowth<BStringArray>([&](BStringArray& a) { a.PushBack(string); },
                              [](BStringArray& a) { return a.PushBack(a[0]); }, 1);
    SweepGrowth<BOidArray>(
        [&](BOidArray& a) {
            a.PushBack(oid);
            a.PushBack(oid);
        },
        [&](BOidArray& a) { return a.PushBack(oid); }, 2);
    SweepGrowth<BOidArray>([&](BOidArray& a) { a.PushBack(oid); },
                           [](BOidArray& a) { return a.PushBack(a[0]); }, 1);
}

TEST(AllocationSweep, MapsThatCannotGrowAreUnchanged)
{
    const BString string("a key with some length");
    const BObjectIdentifier oid = Oid("1.3.6");
    SweepGrowth<BMapInt2Ptr>(
        [](BMapInt2Ptr& m) {
            m.Insert(1, nullptr);
            m.Insert(2, nullptr);
        },
        [](BMapInt2Ptr& m) { return m.Insert(0, nullptr); }, 1);
    SweepGrowth<BMapStr2Ptr>(
        [](BMapStr2Ptr& m) {
            m.Insert(BString("x"), nullptr);
            m.Insert(BString("y"), nullptr);
        },
        [&](BMapStr2Ptr& m) { return m.Insert(string, nullptr); }, 2);
    SweepGrowth<BMapOid2Ptr>(
        [](BMapOid2Ptr& m) {
            m.Insert(Oid("1"), nullptr);
            m.Insert(Oid("2"), nullptr);
        },
        [&](BMapOid2Ptr& m) { return m.Insert(oid, nullptr); }, 2);
}

TEST(AllocationSweep, ArraysThatCannotBeAssignedAreUnchanged)
{
    BUintArray numbers;
    BStringArray strings;
    BOidArray oids;
    for (int i = 0; i < 3; ++i) {
        numbers.PushBack(i);
        strings.PushBack(BString("text"));
        oids.PushBack(Oid("1.3"));
    }
    const auto sweep = [](const auto& source, const auto& item) {
        using Array = std::decay_t<decltype(source)>;
        Array before;
        before.PushBack(item);
        unsigned unchanged = 0;
        const unsigned allocations =
            SweepAllocations([&] { return before; },
                             [&](Array& array) {
                                 array = source;
                                 return true;
                             },
                             [&](Array& array, bool) {
                                 const bool done = array.Count() == source.Count();
                                 unchanged += done ? 0 : 1;
                                 const Array& expected = done ? source : before;
                                 ASSERT_EQ(array.Count(), expected.Count());
                                 for (int i = 0; i < static_cast<int>(array.Count()); ++i)
                                     EXPECT_EQ(array[i], expected[i]) << i;
                             });
        EXPECT_EQ(unchanged, 2 * allocations);
        return allocations;
    };
    EXPECT_EQ(sweep(numbers, 7), 1u);
    EXPECT_EQ(sweep(strings, BString("old")), 4u);
    EXPECT_EQ(sweep(oids, Oid("7")), 4u);
}

TEST(AllocationSweep, ASuccessorWhoseKeyCannotBeToldIsNone)
{
    BMapOid2Ptr map;
    map.Insert(Oid("1.3"), nullptr);
    int refused = 0;
    SweepAllocations([] { return BObjectIdentifier(); },
                     [&](BObjectIdentifier& key) { return map.Next(BObjectIdentifier(), key); },
                     [&](BObjectIdentifier& key, int index) {
                         refused += index < 0 ? 1 : 0;
                         EXPECT_EQ(Text(key), index == 0 ? "1.3" : "");
                     });
    EXPECT_EQ(refused, 2);
}
