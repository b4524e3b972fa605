#include "host/access/Communities.h"

#include <gtest/gtest.h>
#include <vkmibh/labels.h>

using namespace VLK;
using namespace VLK::host;

namespace {

BTransportAddress From(const char* text)
{
    BTransportAddress address;
    EXPECT_TRUE(address.Parse(text));
    return address;
}

std::vector<BNetwork> Networks(const std::vector<const char*>& texts)
{
    std::vector<BNetwork> networks(texts.size());
    for (size_t i = 0; i < texts.size(); ++i)
        EXPECT_EQ(networks[i].Parse(texts[i]), "");
    return networks;
}

class Communities : public testing::Test {
protected:
    BCommunities::EAdmission Admission(const std::string& community,
                                       const char* source = "udp:127.0.0.1:5")
    {
        BCommunities::EAdmission admission;
        const SRequester* requester = known.Admit(community, From(source), admission);
        EXPECT_EQ(requester != nullptr, admission == BCommunities::eAdmitted);
        return admission;
    }

    BCommunities known{{{"touch", "operators", "bridge", BNetwork::Anywhere()},
                        {"look", "look", "", BNetwork::ThisMachine()},
                        {"far", "far", "", Networks({"10.0.0.0/8", "2001:db8::/32"})},
                        {"nobody", "nobody", "", {}}}};
};

} // namespace

TEST_F(Communities, ARequesterHasItsNameItsModelAndItsContext)
{
    BCommunities::EAdmission admission;
    const SRequester* requester = known.Admit("touch", From("udp:127.0.0.1:5"), admission);
    ASSERT_TRUE(requester);
    EXPECT_STREQ(requester->context.c_str(), "bridge");
    for (EProtocol protocol : {eSnmpV1, eSnmpV2c}) {
        const BSecurityParams& security = requester->Security(protocol);
        EXPECT_EQ(security.securityModel, protocol == eSnmpV1 ? 1 : 2);
        EXPECT_STREQ(security.securityName.c_str(), "operators");
        EXPECT_EQ(security.securityLevel, eNoAuthNoPriv);
    }
}

TEST_F(Communities, NamesAreComparedAsBytesInFullLength)
{
    EXPECT_EQ(Admission("touch"), BCommunities::eAdmitted);
    for (const std::string& name :
         {std::string("touc"), std::string("touch "), std::string("Touch"),
          std::string("touch\0", 6), std::string(), std::string("operators"), std::string("zz")})
        EXPECT_EQ(Admission(name), BCommunities::eUnknownCommunity) << name;
}

TEST_F(Communities, OfManyOfOneNameTheFirstCounts)
{
    std::vector<SCommunity> all;
    for (int i = 0; i < 100; ++i)
        all.push_back({"c", "s" + std::to_string(i), "", BNetwork::Anywhere()});
    BCommunities::EAdmission admission;
    BCommunities many(all);
    const SRequester* requester = many.Admit("c", From("udp:127.0.0.1:5"), admission);
    ASSERT_TRUE(requester);
    EXPECT_STREQ(requester->v1.securityName.c_str(), "s0");
}

TEST_F(Communities, ARequestMayComeFromItsCommunitysSources)
{
    EXPECT_EQ(Admission("touch", "udp:10.0.0.1:5"), BCommunities::eAdmitted);
    EXPECT_EQ(Admission("touch", "udp6:[2001:db8::1]:5"), BCommunities::eAdmitted);
    EXPECT_EQ(Admission("look", "udp:127.0.0.1:5"), BCommunities::eAdmitted);
    EXPECT_EQ(Admission("look", "udp6:[::1]:5"), BCommunities::eAdmitted);
    EXPECT_EQ(Admission("look", "udp:10.0.0.1:5"), BCommunities::eForeignSource);
    EXPECT_EQ(Admission("far", "udp:10.0.0.1:5"), BCommunities::eAdmitted);
    EXPECT_EQ(Admission("far", "udp6:[::ffff:10.0.0.1]:5"), BCommunities::eAdmitted);
    EXPECT_EQ(Admission("far", "udp6:[2001:db8::1]:5"), BCommunities::eAdmitted);
    EXPECT_EQ(Admission("far", "udp:127.0.0.1:5"), BCommunities::eForeignSource);
    EXPECT_EQ(Admission("nobody"), BCommunities::eForeignSource);
}
