// Variable binding list.
#include "tests/support/ValueText.h"

#include <gtest/gtest.h>
#include <type_traits>
#include <utility>

using namespace VLK;
using namespace VLKTest;

namespace {

BObjectSyntax Value(const std::string& text)
{
    BObjectSyntax value;
    value.SetOctets(BString(text.c_str()));
    return value;
}

// Bindings 1.0=v0, 1.1=v1, ...
BVarBindList Make(unsigned count)
{
    BVarBindList list;
    for (unsigned i = 0; i < count; ++i)
        list.Append(Oid({1, i}), Value("v" + std::to_string(i)));
    return list;
}

std::string Show(const BVarBind& binding)
{
    return Text(binding.Name()) + "=" + Text(binding.Value().ValToStr());
}

std::string Show(const BVarBindList& list)
{
    std::string text;
    for (unsigned i = 0; i < list.Count(); ++i)
        text += (i ? " " : "") + Show(list[static_cast<int>(i)]);
    return text;
}

} // namespace

TEST(VarBindList, NewListsAreEmptyWithoutStorage)
{
    const BVarBindList list;
    EXPECT_EQ(list.Count(), 0u);
    EXPECT_EQ(list.Capacity(), 0u);
    EXPECT_EQ(BVarBindList(list).Capacity(), 0u);
}

TEST(VarBindList, CapacityGrowsByFourAndCopiesHaveNoneToSpare)
{
    EXPECT_EQ(BVarBindList::s_growBy, 4u);
    BVarBindList list;
    for (unsigned i = 1; i <= 13; ++i) {
        EXPECT_TRUE(list.Append(Oid({1, i})));
        EXPECT_EQ(list.Count(), i);
        EXPECT_EQ(list.Capacity(), (i + 3) / 4 * 4);
    }
    const BVarBindList five = Make(5);
    EXPECT_EQ(five.Capacity(), 8u);
    BVarBindList copy(five);
    EXPECT_EQ(copy.Capacity(), 5u);
    EXPECT_EQ(Show(copy), Show(five));
    EXPECT_TRUE(copy.Append(Oid("9")));
    EXPECT_EQ(copy.Capacity(), 9u);
}

TEST(VarBindList, GrowingMovesBindingsWithoutCopyingWhatTheyOwn)
{
    BVarBindList list = Make(4);
    const unsigned* arcs[4];
    const unsigned char* bytes[4];
    for (int i = 0; i < 4; ++i) {
        arcs[i] = list[i].Name().Arcs();
        bytes[i] = list[i].Value().Octets().Data();
    }
    EXPECT_TRUE(list.Append(Oid("9")));
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(list[i].Name().Arcs(), arcs[i]);
        EXPECT_EQ(list[i].Value().Octets().Data(), bytes[i]);
    }
    EXPECT_EQ(Show(list), "1.0=v0 1.1=v1 1.2=v2 1.3=v3 9=Null");
}

TEST(VarBindList, WithRoomReservedAppendingMovesNothing)
{
    BVarBindList list = Make(3);
    const unsigned* const arcs = list[0].Name().Arcs();
    EXPECT_TRUE(list.Reserve(7));
    EXPECT_EQ(list.Capacity(), 7u);
    EXPECT_EQ(list[0].Name().Arcs(), arcs);
    EXPECT_EQ(Show(list), Show(Make(3)));
    const BVarBind* const first = &list.First();
    for (unsigned i = 3; i < 7; ++i)
        EXPECT_TRUE(list.Append(Oid({1, i}), Value("v" + std::to_string(i))));
    EXPECT_EQ(&list.First(), first);
    EXPECT_EQ(Show(list), Show(Make(7)));
    for (unsigned less : {0u, 3u, 7u}) {
        EXPECT_TRUE(list.Reserve(less));
        EXPECT_EQ(list.Capacity(), 7u);
        EXPECT_EQ(&list.First(), first);
    }
    EXPECT_TRUE(list.Append(Oid("9")));
    EXPECT_EQ(list.Capacity(), 7 + BVarBindList::s_growBy);
}

TEST(VarBindList, AppendForms)
{
    BVarBindList list;
    EXPECT_TRUE(list.Append(BVarBind(Oid("1"), Value("a"))));
    EXPECT_TRUE(list.Append(Oid("2")));
    EXPECT_TRUE(list.Append(Oid("3"), Value("c")));
    EXPECT_TRUE(list.Append(Make(2)));
    EXPECT_TRUE(list.Append(BVarBindList()));
    EXPECT_EQ(Show(list), "1=a 2=Null 3=c 1.0=v0 1.1=v1");
    EXPECT_EQ(Show(list.First()), "1=a");
    EXPECT_EQ(Show(list.Last()), "1.1=v1");
    list.First().Set(Oid("7"));
    list.Last().Set(Oid("8"));
    EXPECT_EQ(Text(list[0].Name()), "7");
    EXPECT_EQ(Text(list[4].Name()), "8");
}

TEST(VarBindList, AppendsItsOwnBindingsAlsoWhileGrowing)
{
    for (unsigned count = 1; count <= 9; ++count) {
        for (int index = 0; index < static_cast<int>(count); ++index) {
            const std::string expected = Show(Make(count)) + " " + Show(Make(count)[index]);
            BVarBindList list = Make(count);
            EXPECT_TRUE(list.Append(list[index]));
            EXPECT_EQ(Show(list), expected);
            BVarBindList parts = Make(count);
            EXPECT_TRUE(parts.Append(parts[index].Name(), parts[index].Value()));
            EXPECT_EQ(Show(parts), expected);
            BVarBindList names = Make(count);
            EXPECT_TRUE(names.Append(names[index].Name()));
            EXPECT_EQ(Text(names.Last().Name()), "1." + std::to_string(index));
        }
    }
}

TEST(VarBindList, RemoveClosesTheGap)
{
    BVarBindList list = Make(3);
    EXPECT_FALSE(list.Remove(3));
    EXPECT_FALSE(list.Remove(-1));
    EXPECT_EQ(list.Count(), 3u);
    EXPECT_TRUE(list.Remove(0));
    EXPECT_EQ(Show(list), "1.1=v1 1.2=v2");
    EXPECT_FALSE(list.Remove(2));
    EXPECT_TRUE(list.Remove(1));
    EXPECT_EQ(Show(list), "1.1=v1");
    EXPECT_TRUE(list.Remove(0));
    EXPECT_FALSE(list.Remove(0));
    EXPECT_EQ(list.Count(), 0u);
    EXPECT_EQ(list.Capacity(), 4u);
}

TEST(VarBindList, RemoveLeavesAnAllZeroSlotThatIsUsedAgain)
{
    BVarBindList list = Make(3);
    EXPECT_TRUE(list.Remove(1));
    const BVarBind& freed = list[2];
    EXPECT_EQ(freed.Name().Arcs(), nullptr);
    EXPECT_EQ(freed.Value().Syntax(), 0);
    EXPECT_EQ(Show(freed), "=");
    EXPECT_TRUE(list.Append(Oid("5")));
    EXPECT_EQ(Show(list), "1.0=v0 1.2=v2 5=Null");
    EXPECT_EQ(list[2].Value().Syntax(), eAsnNull);
    list.Remove(0);
    EXPECT_TRUE(list.Append(BVarBind(Oid("6"), Value("x"))));
    EXPECT_EQ(Show(list), "1.2=v2 5=Null 6=x");
}

TEST(VarBindList, ClearReleasesTheStorage)
{
    BVarBindList list = Make(3);
    list.Clear();
    EXPECT_EQ(list.Count(), 0u);
    EXPECT_EQ(list.Capacity(), 0u);
    EXPECT_TRUE(list.Append(Oid("1")));
    EXPECT_EQ(list.Capacity(), 4u);
}

TEST(VarBindList, AssignReplacesTheWholeContents)
{
    BVarBindList list = Make(6);
    EXPECT_TRUE(list.Assign(Make(2)));
    EXPECT_EQ(Show(list), "1.0=v0 1.1=v1");
    EXPECT_EQ(list.Capacity(), 2u);
    list = Make(3);
    EXPECT_EQ(list.Count(), 3u);
    EXPECT_TRUE(list.Assign(BVarBindList()));
    EXPECT_EQ(list.Count(), 0u);
    EXPECT_EQ(list.Capacity(), 0u);
}

TEST(VarBindList, AssigningItselfKeepsIt)
{
    BVarBindList list = Make(3);
    EXPECT_TRUE(list.Assign(list));
    BVarBindList& self = list;
    list = self;
    EXPECT_EQ(Show(list), Show(Make(3)));
    EXPECT_EQ(list.Capacity(), 4u);
}

TEST(VarBindList, MoveLeavesTheSourceEmpty)
{
    static_assert(std::is_nothrow_move_constructible<BVarBindList>::value, "noexcept");
    static_assert(std::is_nothrow_move_assignable<BVarBindList>::value, "noexcept");
    BVarBindList source = Make(3);
    const BVarBind* first = &source.First();
    BVarBindList moved(std::move(source));
    EXPECT_EQ(&moved.First(), first);
    EXPECT_EQ(source.Count(), 0u);
    EXPECT_EQ(source.Capacity(), 0u);
    BVarBindList assigned = Make(1);
    assigned = std::move(moved);
    EXPECT_EQ(&assigned.First(), first);
    EXPECT_EQ(moved.Count(), 0u);
    BVarBindList& self = assigned;
    assigned = std::move(self);
    EXPECT_EQ(Show(assigned), Show(Make(3)));
}
