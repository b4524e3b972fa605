// Rows of RFC 3413 that nothing can be sent by, and what the operator is told of them.
#include "host/agents/Targets.h"

#include <gtest/gtest.h>

using namespace VLK;
using namespace VLK::host;
using modules::SAddressRow;
using modules::SNotifyRow;
using modules::SParamsRow;

namespace {

// One row of each table, which select one another.
class Receivers : public testing::Test {
protected:
    Receivers()
    {
        notify.isActive = address.isActive = params.isActive = true;
        notify.tag = address.tags = "t";
        address.domain = modules::eDomainUdp;
        address.address = std::string("\xc0\x00\x02\x01\x00\xa2", 6);
        address.params = "p";
        params.mpModel = modules::eMpV2c;
        params.securityModel = eModelV2c;
        params.securityName = "noc";
        user.name = "noc";
        user.auth = "SHA-256";
    }
    modules::STargets Rows() const
    {
        modules::STargets rows;
        rows.notifies["n"] = notify;
        rows.addresses["a"] = address;
        rows.params["p"] = params;
        return rows;
    }
    void SpeakV3(int level)
    {
        params.mpModel = modules::eMpV3;
        params.securityModel = eModelUsm;
        params.level = level;
    }
    SReceivers Made() const { return ReceiversOf(Rows(), communities, {user}); }
    void ExpectOne() const
    {
        EXPECT_EQ(Made().sinks.size(), 1u);
        EXPECT_EQ(Made().problems, std::vector<std::string>());
    }
    void ExpectNone() const
    {
        EXPECT_EQ(Made().sinks.size(), 0u);
        EXPECT_EQ(Made().problems, std::vector<std::string>());
    }
    void ExpectProblem(const std::string& why) const
    {
        EXPECT_EQ(Made().sinks.size(), 0u);
        EXPECT_EQ(Made().problems,
                  std::vector<std::string>{"no notification goes to udp:192.0.2.1:162: " + why});
    }

    SNotifyRow notify;
    SAddressRow address;
    SParamsRow params;
    SUser user;
    const BCommunities communities{{{"secret", "noc", "", {}}}};
};

} // namespace

TEST_F(Receivers, WhoHasNoRowOfParametersThatIsActiveIsNone)
{
    ExpectOne();
    params.isActive = false;
    ExpectNone();
    address.params = "q";
    ExpectNone();
}

TEST_F(Receivers, WhoIsAtNoAddressOfTheDomainIsNone)
{
    address.domain = modules::eDomainUdpIpv6;
    ExpectNone();
    address.domain = modules::eDomainUdp;
    address.address.replace(4, 2, 2, '\0');
    ExpectNone();
}

TEST_F(Receivers, AnIPv6AddressIsOneOfItsDomain)
{
    address.domain = modules::eDomainUdpIpv6;
    address.address =
        std::string("\x20\x01\x0d\xb8", 4) + std::string(11, '\0') + std::string("\x09\x00\xa2", 3);
    ASSERT_EQ(Made().sinks.size(), 1u);
    EXPECT_EQ(Made().sinks[0].address.ToString(), "udp6:[2001:db8::9]:162");
}

TEST_F(Receivers, ASecurityModelIsThatOfTheMessages)
{
    params.securityModel = eModelV1;
    ExpectProblem("its securityModel is not that of its messages");
    params.mpModel = modules::eMpV1;
    ExpectOne();
    params.securityModel = eModelUsm;
    ExpectProblem("its securityModel is not that of its messages");
}

TEST_F(Receivers, SnmpV1HasNoInforms)
{
    params.mpModel = modules::eMpV1;
    params.securityModel = eModelV1;
    notify.kind = modules::eNotifyInform;
    ExpectProblem("SNMPv1 has no informs");
}

TEST_F(Receivers, CommunitiesHaveNoSecurityLevels)
{
    params.level = eAuthNoPriv;
    ExpectProblem("SNMPv1 and SNMPv2c have no such securityLevel");
}

TEST_F(Receivers, AUserIsKnownAndHasTheSecurityLevel)
{
    SpeakV3(eAuthNoPriv);
    ExpectOne();
    EXPECT_EQ(Made().sinks[0].user, "noc");
    EXPECT_EQ(Made().sinks[0].level, eAuthNoPriv);
    SpeakV3(eAuthPriv);
    ExpectProblem("the user 'noc' has no such securityLevel");
    params.securityName = "boss";
    ExpectProblem("there is no user 'boss'");
}

TEST_F(Receivers, ManagersMakeNoMoreThanThereAreSocketsFor)
{
    modules::STargets rows = Rows();
    rows.addresses.clear();
    for (size_t i = 0; i < kMostManagedReceivers + 1; ++i)
        rows.addresses["a" + std::to_string(i)] = address;
    address.storage = eStorageReadOnly; // of the configuration
    rows.addresses["z"] = address;
    const SReceivers made = ReceiversOf(rows, communities, {});
    EXPECT_EQ(made.sinks.size(), kMostManagedReceivers + 1);
    EXPECT_EQ(made.problems,
              std::vector<std::string>{"no notification goes to udp:192.0.2.1:162: there are 256 "
                                       "already"});
}
