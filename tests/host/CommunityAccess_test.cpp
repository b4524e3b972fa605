#include "host/CommunityAccess.h"

#include <gtest/gtest.h>

using namespace VLK;
using namespace VLK::host;

namespace {

BTransportAddress From(const char* text)
{
    BTransportAddress address;
    EXPECT_TRUE(address.Parse(text));
    return address;
}

int Check(BCommunityAccess& access, const char* name, EAccessKind kind)
{
    BSecurityParams security;
    security.securityName = BString(name);
    return access.CheckAccess(security, static_cast<unsigned char>(kind), BString(), BVarBind());
}

} // namespace

TEST(CommunityAccess, WithoutCommunitiesPublicReadsOnThisMachineOnly)
{
    BCommunityAccess access({});
    EXPECT_TRUE(access.Admits("public", From("udp:127.0.0.1:5")));
    EXPECT_TRUE(access.Admits("public", From("udp6:[::1]:5")));
    EXPECT_FALSE(access.Admits("public", From("udp:10.0.0.1:5")));
    EXPECT_FALSE(access.Admits("private", From("udp:127.0.0.1:5")));
    EXPECT_FALSE(access.MayWrite("public"));
    EXPECT_EQ(Check(access, "public", eAccessRead), 0);
    EXPECT_NE(Check(access, "public", eAccessWrite), 0);
    EXPECT_NE(Check(access, "private", eAccessRead), 0);
}

TEST(CommunityAccess, GivenCommunitiesReplaceTheDefaultAndAnswerFromAnywhere)
{
    BCommunityAccess access({{"look", false}, {"touch", true}});
    EXPECT_TRUE(access.Admits("look", From("udp:10.0.0.1:5")));
    EXPECT_TRUE(access.Admits("touch", From("udp6:[2001:db8::1]:5")));
    EXPECT_FALSE(access.Admits("public", From("udp:127.0.0.1:5")));
    EXPECT_EQ(Check(access, "look", eAccessRead), 0);
    EXPECT_NE(Check(access, "look", eAccessWrite), 0);
    EXPECT_EQ(Check(access, "touch", eAccessWrite), 0);
    EXPECT_TRUE(access.MayWrite("touch"));
}

TEST(CommunityAccess, NamesAreComparedAsBytesInFullLength)
{
    BCommunityAccess access({{"touch", true}});
    BTransportAddress from = From("udp:127.0.0.1:5");
    EXPECT_FALSE(access.Admits("touc", from));
    EXPECT_FALSE(access.Admits("touch ", from));
    EXPECT_FALSE(access.Admits("Touch", from));
    EXPECT_FALSE(access.Admits(std::string("touch\0", 6), from));
    EXPECT_FALSE(access.Admits("", from));
}
