// The subtree served by hand as managers see it.
#include "Manager.h"

namespace {

class Parameters : public testing::TestWithParam<const char*> {
protected:
    // Of several depths, not in their order; one is a beginning of another.
    Manager m_manager{"subtree",
                      "1.3.6.1.4.1.32473.2.6",
                      GetParam(),
                      {"2.7.1=40", "1.0=5", "2.7=-1", "4294967295=2147483647", "nonsense"}};
};

} // namespace

VERSIONS(Parameters);

TEST_P(Parameters, AWalkIsInOrder)
{
    const Arguments all{"1.0 5", "2.7 -1", "2.7.1 40", "4294967295 2147483647"};
    EXPECT_EQ(m_manager.Walk(), all);
    EXPECT_EQ(m_manager.Walk("2"), Arguments(all.begin() + 1, all.begin() + 3));
    EXPECT_EQ(m_manager.Next({"0", "1.0", "2.7", "2.7.1.0"}), all);
    if (m_manager.IsV1())
        return;
    for (const char* repetitions : {"1", "3", "50"})
        EXPECT_EQ(m_manager.BulkWalk("", repetitions), all) << repetitions;
}

TEST_P(Parameters, NamesThatWereNotAddedHaveNoValue)
{
    for (const char* name : {"", "1", "1.0.0", "2", "2.7.2"})
        EXPECT_EQ(m_manager.Get(name), "none") << name;
    EXPECT_EQ(m_manager.Set("1 i 5"), m_manager.Refused("noCreation", "1"));
}

TEST_P(Parameters, ValuesAreSetTogetherOrNotAtAll)
{
    EXPECT_EQ(m_manager.Set("2.7 i 8; 1.0 i -2147483648"), "");
    EXPECT_EQ(m_manager.Walk("1"), Arguments{"1.0 -2147483648"});
    EXPECT_EQ(m_manager.Get("2.7"), "8");
    EXPECT_EQ(m_manager.Set("2.7 i 9; 1.0 s x"), m_manager.Refused("wrongType", "1.0"));
    EXPECT_EQ(m_manager.Set("2.7 i 9; 2.8 i 1"), m_manager.Refused("noCreation", "2.8"));
    EXPECT_EQ(m_manager.Get("2.7"), "8");
}
