// The rows with objects of their own as managers see them.
#include "Manager.h"

namespace {

class Fans : public testing::TestWithParam<const char*> {
protected:
    Manager m_manager{"row", "1.3.6.1.4.1.32473.2.5.1", GetParam()};
};

} // namespace

VERSIONS(Fans);

TEST_P(Fans, AppearAsOneTable)
{
    const Arguments all{"2.1 \"intake\"", "2.2 \"exhaust\"", "3.1 0", "3.2 0"};
    EXPECT_EQ(m_manager.Walk(), all);
    EXPECT_EQ(m_manager.Walk("3"), Arguments(all.begin() + 2, all.end()));
    EXPECT_EQ(m_manager.Next({"2", "3"}), (Arguments{all[0], all[2]}));
    EXPECT_EQ(m_manager.Next({"2.1", "3.1", "2.2"}), (Arguments{all[1], all[3], all[2]}));
    EXPECT_EQ(m_manager.Next({"1", "2.0", "2.1.9", "3.1.1"}),
              (Arguments{all[0], all[0], all[1], all[3]}));
    if (m_manager.IsV1())
        return;
    for (const char* repetitions : {"1", "3", "50"})
        EXPECT_EQ(m_manager.BulkWalk("", repetitions), all) << repetitions;
}

TEST_P(Fans, EachHasASpeedOfItsOwn)
{
    EXPECT_EQ(m_manager.Set("3.2 u 100"), "");
    EXPECT_EQ(m_manager.Walk("3"), (Arguments{"3.1 0", "3.2 100"}));
    EXPECT_EQ(m_manager.Set("3.1 u 40; 3.2 u 60"), "");
    EXPECT_EQ(m_manager.Walk("3"), (Arguments{"3.1 40", "3.2 60"}));
}

TEST_P(Fans, OneRefusedBindingLeavesAllUnchanged)
{
    EXPECT_EQ(m_manager.Set("3.1 u 40; 3.2 u 101"), m_manager.Refused("wrongValue", "3.2"));
    EXPECT_EQ(m_manager.Set("3.1 u 40; 2.2 s x"), m_manager.Refused("notWritable", "2.2"));
    EXPECT_EQ(m_manager.Set("3.1 u 40; 3.2 i 40"), m_manager.Refused("wrongType", "3.2"));
    EXPECT_EQ(m_manager.Walk("3"), (Arguments{"3.1 0", "3.2 0"}));
}

TEST_P(Fans, OtherNamesHaveNoValue)
{
    for (const char* name : {"1.1", "2.0", "2.3", "4.1", "2", "2.1.1", "1", "4"})
        EXPECT_EQ(m_manager.Get(name), "none") << name;
    EXPECT_EQ(m_manager.Set("3.3 u 5"), m_manager.Refused("notWritable", "3.3"));
    EXPECT_EQ(m_manager.Set("4.1 u 5"), m_manager.Refused("notWritable", "4.1"));
}
