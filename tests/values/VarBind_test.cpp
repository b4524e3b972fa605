// Variable binding.
#include "tests/support/ValueText.h"

#include <cstring>
#include <gtest/gtest.h>
#include <type_traits>
#include <utility>

using namespace VLK;
using namespace VLKTest;

namespace {

BObjectSyntax Value(const char* text)
{
    BObjectSyntax value;
    value.SetOctets(BString(text));
    return value;
}

std::string Show(const BVarBind& binding)
{
    return Text(binding.Name()) + "=" + Text(binding.Value().ValToStr());
}

} // namespace

TEST(VarBind, NewBindingsHaveANullValue)
{
    BVarBind binding;
    EXPECT_EQ(binding.Name().Length(), 0u);
    EXPECT_EQ(binding.Value().Syntax(), eAsnNull);
    EXPECT_EQ(Show(BVarBind(Oid("1.3"))), "1.3=Null");
    EXPECT_EQ(Show(BVarBind(Oid("1.3"), Value("x"))), "1.3=x");
}

TEST(VarBind, SetReplacesTheNameOrBoth)
{
    BVarBind binding(Oid("1.3"), Value("x"));
    binding.Set(Oid("1.4"));
    EXPECT_EQ(Show(binding), "1.4=x");
    binding.Set(Oid("1.5"), Value("y"));
    EXPECT_EQ(Show(binding), "1.5=y");
}

TEST(VarBind, SetFromItsOwnValue)
{
    BVarBind binding;
    binding.Value().SetObjectId(Oid("1.3.6"));
    binding.Set(binding.Value().ObjectId(), Value("x"));
    EXPECT_EQ(Show(binding), "1.3.6=x");
    binding.Set(binding.Name(), binding.Value());
    EXPECT_EQ(Show(binding), "1.3.6=x");
}

TEST(VarBind, CopiesAreDeep)
{
    BVarBind source(Oid("1.3"), Value("x"));
    BVarBind copy(source);
    BVarBind assigned;
    assigned = source;
    source.Set(Oid("9"), Value("z"));
    EXPECT_EQ(Show(copy), "1.3=x");
    EXPECT_EQ(Show(assigned), "1.3=x");
}

TEST(VarBind, AssigningItselfDoesNothing)
{
    BVarBind binding(Oid("1.3"), Value("x"));
    const unsigned* arcs = binding.Name().Arcs();
    const unsigned char* bytes = binding.Value().Octets().Data();
    binding.Assign(binding);
    BVarBind& self = binding;
    binding = self;
    EXPECT_EQ(binding.Name().Arcs(), arcs);
    EXPECT_EQ(binding.Value().Octets().Data(), bytes);
    EXPECT_EQ(Show(binding), "1.3=x");
}

TEST(VarBind, MoveLeavesTheSourceEmpty)
{
    static_assert(std::is_nothrow_move_constructible<BVarBind>::value, "noexcept");
    static_assert(std::is_nothrow_move_assignable<BVarBind>::value, "noexcept");
    BVarBind source(Oid("1.3"), Value("x"));
    const unsigned* arcs = source.Name().Arcs();
    BVarBind moved(std::move(source));
    EXPECT_EQ(moved.Name().Arcs(), arcs);
    EXPECT_EQ(Show(source), "=Null"); // cppcheck-suppress accessMoved ; as promised
    BVarBind assigned(Oid("7"), Value("old"));
    assigned = std::move(moved);
    EXPECT_EQ(Show(assigned), "1.3=x");
    EXPECT_EQ(Show(moved), "=Null"); // cppcheck-suppress accessMoved
}

TEST(VarBind, AnAllZeroBindingIsValid)
{
    alignas(BVarBind) unsigned char storage[sizeof(BVarBind)];
    std::memset(storage, 0, sizeof storage);
    BVarBind& zero = *std::launder(reinterpret_cast<BVarBind*>(storage));
    EXPECT_EQ(Show(zero), "=");
    const BVarBind copy(zero);
    EXPECT_EQ(copy.Value().Syntax(), 0);
    zero.Assign(BVarBind(Oid("1.3"), Value("x")));
    EXPECT_EQ(Show(zero), "1.3=x");
    zero.~BVarBind();
}
