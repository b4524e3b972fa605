// The scalars as managers see them.
#include "Manager.h"

namespace {

class Thermostat : public testing::TestWithParam<const char*> {
protected:
    std::string Set(const std::string& bindings) { return m_manager.Set(bindings); }
    std::string Refused(const std::string& reason, const std::string& object) const
    {
        return m_manager.Refused(reason, object);
    }

    Manager m_manager{"scalar", "1.3.6.1.4.1.32473.2.1", GetParam()};
};

} // namespace

VERSIONS(Thermostat);

TEST_P(Thermostat, BothAreReadAndSet)
{
    EXPECT_EQ(m_manager.Walk(), (Arguments{"1.0 20", "2.0 1"}));
    for (const char* target : {"5", "30"}) {
        EXPECT_EQ(Set("1.0 i " + std::string(target)), "");
        EXPECT_EQ(m_manager.Get("1.0"), target);
    }
    for (const char* mode : {"2", "3", "1"}) {
        EXPECT_EQ(Set("2.0 i " + std::string(mode)), "");
        EXPECT_EQ(m_manager.Get("2.0"), mode);
    }
}

TEST_P(Thermostat, ValuesOutOfRangeAreRefused)
{
    EXPECT_EQ(Set("1.0 i 4"), Refused("wrongValue", "1.0"));
    EXPECT_EQ(Set("1.0 i 31"), Refused("wrongValue", "1.0"));
    EXPECT_EQ(Set("2.0 i 0"), Refused("wrongValue", "2.0"));
    EXPECT_EQ(Set("2.0 i 4"), Refused("wrongValue", "2.0"));
    EXPECT_EQ(Set("1.0 s warm"), Refused("wrongType", "1.0"));
    EXPECT_EQ(Set("1.0 u 20"), Refused("wrongType", "1.0"));
    EXPECT_EQ(m_manager.Walk(), (Arguments{"1.0 20", "2.0 1"}));
}

TEST_P(Thermostat, OneRefusedBindingLeavesAllUnchanged)
{
    EXPECT_EQ(Set("1.0 i 25; 2.0 i 4"), Refused("wrongValue", "2.0"));
    EXPECT_EQ(Set("2.0 i 2; 1.0 i 25; 1.1 i 5"), Refused("noCreation", "1.1"));
    EXPECT_EQ(Set("2.0 i 2; .1.3.6.1.2.1.1.1.0 s x"), Refused("notWritable", ".1.3.6.1.2.1.1.1.0"));
    EXPECT_EQ(m_manager.Walk(), (Arguments{"1.0 20", "2.0 1"}));
}

TEST_P(Thermostat, OnlyInstanceZeroIsThere)
{
    for (const char* name : {"1", "1.1", "1.0.0", "3.0"})
        EXPECT_EQ(m_manager.Get(name), "none") << name;
    EXPECT_EQ(m_manager.Next({"1", "1.0", "1.0.0"}), (Arguments{"1.0 20", "2.0 1", "2.0 1"}));
}
