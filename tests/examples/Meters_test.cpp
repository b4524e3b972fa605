// The EntryStatus example as managers see it.
#include "Manager.h"

namespace {

// EntryStatus values, for bindings.
const std::string kValid = " i 1";
const std::string kCreateRequest = " i 2";
const std::string kUnderCreation = " i 3";
const std::string kInvalid = " i 4";

class Meters : public testing::TestWithParam<const char*> {
protected:
    std::string Set(const std::string& bindings) { return m_manager.Set(bindings); }
    std::string Refused(const std::string& reason, const std::string& object) const
    {
        return m_manager.Refused(reason, object);
    }
    // Interval, owner and status of a row.
    std::string Row(const std::string& index)
    {
        return m_manager.Get("2." + index) + " " + m_manager.Get("3." + index) + " " +
               m_manager.Get("4." + index);
    }

    static constexpr const char* kNoRow = "none none none";
    Manager m_manager{"entrystatus", "1.3.6.1.4.1.32473.2.4.1", GetParam()};
};

} // namespace

VERSIONS(Meters);

TEST_P(Meters, CreateRequestMakesARowOfDefaultsUnderCreation)
{
    EXPECT_EQ(m_manager.Walk(), Arguments());
    EXPECT_EQ(Set("4.5" + kCreateRequest), "");
    EXPECT_EQ(Row("5"), "1800 \"\" 3");
}

TEST_P(Meters, ARowThatDoesNotExistIsOnlyRequested)
{
    for (const std::string& status : {kValid, kUnderCreation, kInvalid, std::string(" i 0")})
        EXPECT_EQ(Set("4.5" + status), Refused("wrongValue", "4.5")) << status;
    EXPECT_EQ(Set("3.5 s me"), Refused("inconsistentName", "3.5"));
    EXPECT_EQ(Row("5"), kNoRow);
}

TEST_P(Meters, ARowThatExistsIsNotRequested)
{
    ASSERT_EQ(Set("4.5" + kCreateRequest), "");
    EXPECT_EQ(Set("4.5" + kCreateRequest), Refused("wrongValue", "4.5"));
    ASSERT_EQ(Set("4.5" + kValid), "");
    EXPECT_EQ(Set("4.5" + kCreateRequest), Refused("wrongValue", "4.5"));
    EXPECT_EQ(Row("5"), "1800 \"\" 1");
}

TEST_P(Meters, WhatIsNoStatusIsRefused)
{
    ASSERT_EQ(Set("4.5" + kCreateRequest), "");
    for (const char* value : {" i 0", " i 5", " i -1", " i 2147483647"})
        EXPECT_EQ(Set("4.5" + std::string(value)), Refused("wrongValue", "4.5")) << value;
    EXPECT_EQ(Set("4.5 s valid"), Refused("wrongType", "4.5"));
    EXPECT_EQ(Row("5"), "1800 \"\" 3");
}

TEST_P(Meters, AValidRowIsNotChangedUnlessItIsTakenBack)
{
    ASSERT_EQ(Set("4.5" + kCreateRequest + "; 3.5 s me; 2.5 i 10"), "");
    EXPECT_EQ(Set("2.5 i 20"), "");
    EXPECT_EQ(Set("4.5" + kValid + "; 2.5 i 30"), "");
    EXPECT_EQ(Row("5"), "30 \"me\" 1");
    EXPECT_EQ(Set("2.5 i 40"), Refused("inconsistentValue", "2.5"));
    EXPECT_EQ(Set("3.5 s you; 4.5" + kValid), Refused("inconsistentValue", "3.5"));
    EXPECT_EQ(Row("5"), "30 \"me\" 1");
    EXPECT_EQ(Set("3.5 s you; 4.5" + kUnderCreation), "");
    EXPECT_EQ(Row("5"), "30 \"you\" 3");
}

TEST_P(Meters, TwoStatusesForOneRowAreRefused)
{
    EXPECT_EQ(Set("4.5" + kCreateRequest + "; 4.5" + kValid), Refused("inconsistentValue", "4.5"));
    EXPECT_EQ(Row("5"), kNoRow);
    ASSERT_EQ(Set("4.5" + kCreateRequest), "");
    ASSERT_EQ(Set("4.5" + kValid), "");
    EXPECT_EQ(Set("4.5" + kUnderCreation + "; 2.5 i 9; 4.5" + kValid),
              Refused("inconsistentValue", "4.5"))
        << "a valid row would be changed";
    EXPECT_EQ(Row("5"), "1800 \"\" 1");
    EXPECT_EQ(Set("4.5" + kUnderCreation + "; 2.5 i 9; 4.5" + kUnderCreation), "");
    EXPECT_EQ(Row("5"), "9 \"\" 3");
}

TEST_P(Meters, InvalidRemovesARowInEveryState)
{
    ASSERT_EQ(Set("4.5" + kCreateRequest + "; 4.6" + kCreateRequest), "");
    ASSERT_EQ(Set("4.6" + kValid), "");
    EXPECT_EQ(Set("3.5 s me; 4.5" + kInvalid), Refused("inconsistentValue", "3.5"));
    EXPECT_EQ(Row("5"), "1800 \"\" 3");
    EXPECT_EQ(Set("4.5" + kInvalid + "; 4.6" + kInvalid), "");
    EXPECT_EQ(m_manager.Walk(), Arguments());
}

TEST_P(Meters, TheOrderOfBindingsIsImmaterial)
{
    const std::string a = "3.5 s a", b = "3.6 s b", makeA = "4.5" + kCreateRequest,
                      makeB = "4.6" + kCreateRequest;
    for (const std::string& set :
         {a + "; " + b + "; " + makeA + "; " + makeB, makeB + "; " + makeA + "; " + b + "; " + a,
          a + "; " + makeB + "; " + makeA + "; " + b, b + "; " + a + "; " + makeA + "; " + makeB}) {
        EXPECT_EQ(Set(set), "") << set;
        EXPECT_EQ(m_manager.Walk("3"), (Arguments{"3.5 \"a\"", "3.6 \"b\""})) << set;
        EXPECT_EQ(m_manager.Walk("4"), (Arguments{"4.5 3", "4.6 3"})) << set;
        EXPECT_EQ(Set("4.5" + kInvalid + "; 4.6" + kInvalid), "");
    }
}

TEST_P(Meters, ValuesAndNamesAreChecked)
{
    ASSERT_EQ(Set("4.5" + kCreateRequest), "");
    EXPECT_EQ(Set("2.5 i 0"), Refused("wrongValue", "2.5"));
    EXPECT_EQ(Set("2.5 i 3601"), Refused("wrongValue", "2.5"));
    EXPECT_EQ(Set("3.5 s " + std::string(256, 'x')), Refused("wrongLength", "3.5"));
    EXPECT_EQ(Set("3.5 s " + std::string(255, 'x')), "");
    EXPECT_EQ(Set("3.5 s "), "") << "an owner may be withdrawn";
    EXPECT_EQ(Set("4.0" + kCreateRequest), Refused("noCreation", "4.0"));
    EXPECT_EQ(Set("4.65536" + kCreateRequest), Refused("noCreation", "4.65536"));
    EXPECT_EQ(Set("4.5.5" + kCreateRequest), Refused("noCreation", "4.5.5"));
    EXPECT_EQ(Set("4" + kCreateRequest), Refused("inconsistentName", "4"));
    EXPECT_EQ(Set("1.5 i 5"), Refused("notWritable", "1.5"));
    EXPECT_EQ(Set("4.65535" + kCreateRequest), "");
}

TEST_P(Meters, OneRefusedBindingLeavesAllUnchanged)
{
    ASSERT_EQ(Set("4.5" + kCreateRequest + "; 3.5 s me"), "");
    EXPECT_EQ(Set("2.5 i 9; 4.5" + kValid + "; 3.6 s you"), Refused("inconsistentName", "3.6"));
    EXPECT_EQ(Set("4.6" + kCreateRequest + "; 4.5" + kInvalid + "; 2.6 i 0"),
              Refused("wrongValue", "2.6"));
    EXPECT_EQ(m_manager.Walk(), (Arguments{"2.5 1800", "3.5 \"me\"", "4.5 3"}));
}

TEST_P(Meters, WalksGoColumnByColumn)
{
    ASSERT_EQ(Set("4.5" + kCreateRequest + "; 4.70" + kCreateRequest), "");
    const Arguments all{"2.5 1800", "2.70 1800", "3.5 \"\"", "3.70 \"\"", "4.5 3", "4.70 3"};
    EXPECT_EQ(m_manager.Walk(), all);
    EXPECT_EQ(m_manager.Next({"2.5", "3.5", "4.5"}), (Arguments{all[1], all[3], all[5]}));
    if (m_manager.IsV1())
        return;
    for (const char* repetitions : {"1", "4", "50"})
        EXPECT_EQ(m_manager.BulkWalk("", repetitions), all) << repetitions;
}

namespace {

class MeterTimeouts : public testing::TestWithParam<const char*> {
protected:
    // The timer ticks once a second, so two seconds are at least one.
    Manager m_manager{"entrystatus", "1.3.6.1.4.1.32473.2.4.1", GetParam(), {"2"}};
};

} // namespace

VERSIONS(MeterTimeouts);

TEST_P(MeterTimeouts, OnlyRowsThatStayUnderCreationAreRemoved)
{
    EXPECT_EQ(m_manager.Set("4.5" + kCreateRequest + "; 4.6" + kCreateRequest), "");
    EXPECT_EQ(m_manager.Set("4.6" + kValid), "");
    EXPECT_TRUE(m_manager.IsGoneSoon("4.5"));
    EXPECT_EQ(m_manager.Walk("4"), Arguments{"4.6 1"});
}
