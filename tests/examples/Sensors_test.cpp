// The read-only table as managers see it, while its file changes.
#include "Manager.h"

namespace {

class Sensors : public testing::TestWithParam<const char*> {
protected:
    void Write(const std::string& text) { WriteFile(m_files.File("sensors"), text); }

    TempDir m_files;
    Manager m_manager{"table", "1.3.6.1.4.1.32473.2.2.1", GetParam(), {m_files.File("sensors")}};
};

} // namespace

VERSIONS(Sensors);

TEST_P(Sensors, WithoutAFileThereAreNone)
{
    EXPECT_EQ(m_manager.Walk(), Arguments());
    EXPECT_EQ(m_manager.Get("2.3"), "none");
}

TEST_P(Sensors, RowsComeAndGoWithTheLines)
{
    Write("3 21 kitchen\n7 -18 cold store\n");
    EXPECT_EQ(m_manager.Walk(),
              (Arguments{"2.3 \"kitchen\"", "2.7 \"cold store\"", "3.3 21", "3.7 -18"}));
    Write("7 -16 cold store\n4 20 office\n");
    EXPECT_EQ(m_manager.Walk(),
              (Arguments{"2.4 \"office\"", "2.7 \"cold store\"", "3.4 20", "3.7 -16"}));
    EXPECT_EQ(m_manager.Get("3.3"), "none");
    std::filesystem::remove(m_files.File("sensors"));
    EXPECT_EQ(m_manager.Walk(), Arguments());
}

TEST_P(Sensors, AWalkGoesOnWhereARowHasGone)
{
    Write("3 1 a\n5 2 b\n9 3 c\n");
    EXPECT_EQ(m_manager.Next({"2.3", "3.5"}), (Arguments{"2.5 \"b\"", "3.9 3"}));
    Write("9 4 c\n");
    EXPECT_EQ(m_manager.Next({"2.5", "3.5"}), (Arguments{"2.9 \"c\"", "3.9 4"}));
}

TEST_P(Sensors, OtherLinesArePassedOver)
{
    Write("\n# comment\n0 1 zero\n-3 1 negative\n2147483648 1 beyond\n5 much text\n6 7\n6 7 \n"
          "99999999999 1 beyond\n8 99999999999 beyond\n2147483647 -2147483648 last\n 1  2   one  ");
    EXPECT_EQ(m_manager.Walk(), (Arguments{"2.1 \"one  \"", "2.2147483647 \"last\"", "3.1 2",
                                           "3.2147483647 -2147483648"}));
}

TEST_P(Sensors, NamesThatAreNoRowsHaveNoValue)
{
    Write("3 21 kitchen\n");
    for (const char* name : {"2", "3", "1.3", "4.3", "2.3.1", "2.4"})
        EXPECT_EQ(m_manager.Get(name), "none") << name;
}

TEST_P(Sensors, NothingIsWritable)
{
    Write("3 21 kitchen\n");
    EXPECT_EQ(m_manager.Set("3.3 i 5"), m_manager.Refused("notWritable", "3.3"));
    EXPECT_EQ(m_manager.Set("2.3 s x"), m_manager.Refused("notWritable", "2.3"));
    EXPECT_EQ(m_manager.Set("1.3 i 4"), m_manager.Refused("notWritable", "1.3"));
    EXPECT_EQ(ReadFile(m_files.File("sensors")), "3 21 kitchen\n");
}

TEST_P(Sensors, BulkRequestsReadTheSame)
{
    std::string text;
    for (int i = 1; i <= 40; ++i)
        text += std::to_string(i) + " " + std::to_string(i * i) + " s" + std::to_string(i) + "\n";
    Write(text);
    const Arguments all = m_manager.Walk();
    ASSERT_EQ(all.size(), 80u);
    EXPECT_EQ(all[79], "3.40 1600");
    if (m_manager.IsV1())
        return;
    for (const char* repetitions : {"7", "100"})
        EXPECT_EQ(m_manager.BulkWalk("", repetitions), all) << repetitions;
}
