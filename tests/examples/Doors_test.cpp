// The RowStatus example as managers see it.
#include "Manager.h"

namespace {

class Doors : public testing::TestWithParam<const char*> {
protected:
    std::string Set(const std::string& bindings) { return m_manager.Set(bindings); }
    std::string Get(const std::string& name) { return m_manager.Get(name); }
    std::string Refused(const std::string& reason, const std::string& object) const
    {
        return m_manager.Refused(reason, object);
    }
    // Name, seconds, storage and status of a row.
    std::string Row(const std::string& index)
    {
        return Get("2." + index) + " " + Get("3." + index) + " " + Get("4." + index) + " " +
               Get("5." + index);
    }

    static constexpr const char* kNoRow = "none none none none";
    Manager m_manager{"rowstatus", "1.3.6.1.4.1.32473.2.3.1", GetParam()};
};

// RowStatus values, for bindings.
const std::string kActive = " i 1";
const std::string kNotInService = " i 2";
const std::string kNotReady = " i 3";
const std::string kCreateAndGo = " i 4";
const std::string kCreateAndWait = " i 5";
const std::string kDestroy = " i 6";

} // namespace

VERSIONS(Doors);

TEST_P(Doors, CreateAndGoNeedsTheNameInTheSameRequest)
{
    EXPECT_EQ(Set("5.7" + kCreateAndGo), Refused("inconsistentValue", "5.7"));
    EXPECT_EQ(Row("7"), kNoRow);
    EXPECT_EQ(Set("5.7" + kCreateAndGo + "; 3.7 i 5"), Refused("inconsistentValue", "5.7"));
    EXPECT_EQ(Set("5.7" + kCreateAndGo + "; 2.8 s x"), Refused("inconsistentValue", "5.7"))
        << "another row's name";
    EXPECT_EQ(Set("5.7" + kCreateAndGo + "; 2.7 s gate"), "");
    EXPECT_EQ(Row("7"), "\"gate\" 30 2 1");
    EXPECT_EQ(Set("2.8 s door; 5.8" + kCreateAndGo + "; 3.8 i 5"), "");
    EXPECT_EQ(Row("8"), "\"door\" 5 2 1");
}

TEST_P(Doors, CreateAndWaitWithoutNameIsNotReadyUntilItHasOne)
{
    EXPECT_EQ(Set("5.7" + kCreateAndWait), "");
    EXPECT_EQ(Row("7"), "none 30 2 3");
    EXPECT_EQ(Set("5.7" + kActive), Refused("inconsistentValue", "5.7"));
    EXPECT_EQ(Set("5.7" + kNotInService), Refused("inconsistentValue", "5.7"));
    EXPECT_EQ(Set("3.7 i 99"), "");
    EXPECT_EQ(Row("7"), "none 99 2 3");
    EXPECT_EQ(Set("2.7 s gate"), "");
    EXPECT_EQ(Row("7"), "\"gate\" 99 2 2");
    EXPECT_EQ(Set("5.7" + kActive), "");
    EXPECT_EQ(Row("7"), "\"gate\" 99 2 1");
}

TEST_P(Doors, CreateAndWaitWithTheNameIsNotInService)
{
    EXPECT_EQ(Set("5.7" + kCreateAndWait + "; 2.7 s gate"), "");
    EXPECT_EQ(Row("7"), "\"gate\" 30 2 2");
}

TEST_P(Doors, ARowThatExistsIsNotCreated)
{
    ASSERT_EQ(Set("5.7" + kCreateAndWait), "");
    for (const char* index : {"1", "7"}) {
        const std::string status = "5." + std::string(index);
        const std::string before = Row(index);
        EXPECT_EQ(Set(status + kCreateAndGo + "; 2." + index + " s x"),
                  Refused("inconsistentValue", status));
        EXPECT_EQ(Set(status + kCreateAndWait), Refused("inconsistentValue", status));
        EXPECT_EQ(Row(index), before);
    }
}

TEST_P(Doors, ARowThatDoesNotExistIsOnlyCreatedOrDestroyed)
{
    EXPECT_EQ(Set("5.7" + kActive + "; 2.7 s gate"), Refused("inconsistentValue", "5.7"));
    EXPECT_EQ(Set("5.7" + kNotInService), Refused("inconsistentValue", "5.7"));
    EXPECT_EQ(Set("5.7" + kNotReady), Refused("wrongValue", "5.7"));
    EXPECT_EQ(Set("5.7 i 0"), Refused("inconsistentValue", "5.7"));
    EXPECT_EQ(Set("5.7 i 7"), Refused("inconsistentValue", "5.7"));
    EXPECT_EQ(Set("5.7" + kDestroy), "");
    EXPECT_EQ(Row("7"), kNoRow);
}

TEST_P(Doors, WhatIsNoStatusToSetIsRefusedForARowThatExists)
{
    ASSERT_EQ(Set("5.7" + kCreateAndWait), "");
    EXPECT_EQ(Set("5.7" + kNotReady), Refused("wrongValue", "5.7"));
    EXPECT_EQ(Set("5.7 i 0"), Refused("genError", "5.7"));
    EXPECT_EQ(Set("5.7 i 7"), Refused("genError", "5.7"));
    EXPECT_EQ(Set("5.7 s active"), Refused("wrongType", "5.7"));
    EXPECT_EQ(Row("7"), "none 30 2 3");
}

TEST_P(Doors, WhatIsMissingMayComeWithTheActivation)
{
    for (const std::string& status : {kActive, kNotInService}) {
        for (const bool nameFirst : {true, false}) {
            ASSERT_EQ(Set("5.7" + kCreateAndWait), "");
            const std::string set = "5.7" + status;
            EXPECT_EQ(Set(nameFirst ? "2.7 s gate; " + set : set + "; 2.7 s gate"), "");
            EXPECT_EQ(Row("7"), status == kActive ? "\"gate\" 30 2 1" : "\"gate\" 30 2 2");
            ASSERT_EQ(Set("5.7" + kDestroy), "");
        }
    }
}

TEST_P(Doors, TheOrderOfBindingsIsImmaterial)
{
    const std::string a = "2.7 s a", b = "2.8 s b", makeA = "5.7" + kCreateAndGo,
                      makeB = "5.8" + kCreateAndWait;
    for (const std::string& set :
         {a + "; " + b + "; " + makeA + "; " + makeB, makeB + "; " + makeA + "; " + b + "; " + a,
          a + "; " + makeB + "; " + makeA + "; " + b, b + "; " + a + "; " + makeA + "; " + makeB}) {
        EXPECT_EQ(Set(set), "") << set;
        EXPECT_EQ(m_manager.Walk("2"),
                  (Arguments{"2.1 \"main entrance\"", "2.2 \"vault\"", "2.7 \"a\"", "2.8 \"b\""}))
            << set;
        EXPECT_EQ(m_manager.Walk("5"), (Arguments{"5.1 1", "5.2 1", "5.7 1", "5.8 2"})) << set;
        EXPECT_EQ(Set("5.7" + kDestroy + "; 5.8" + kDestroy), "");
    }
}

TEST_P(Doors, BindingsOfARowMayStandAroundThoseOfOtherModules)
{
    const std::string contact = ".1.3.6.1.2.1.1.4.0";
    EXPECT_EQ(Set("2.7 s gate; " + contact + " s porter; 5.7" + kCreateAndGo), "");
    EXPECT_EQ(Row("7"), "\"gate\" 30 2 1");
    EXPECT_EQ(Set("5.8" + kCreateAndGo + "; " + contact + " s x; 2.8 s door; 3.8 i 5"), "");
    EXPECT_EQ(Row("8"), "\"door\" 5 2 1");
    EXPECT_EQ(Set("5.9" + kCreateAndGo + "; " + contact + " s y; 3.9 i 5"),
              Refused("inconsistentValue", "5.9"));
    EXPECT_EQ(Get(contact), "\"x\"");
}

TEST_P(Doors, TheNameStaysWhileTheDoorIsActive)
{
    ASSERT_EQ(Set("5.7" + kCreateAndGo + "; 2.7 s gate"), "");
    EXPECT_EQ(Set("2.7 s x"), Refused("inconsistentValue", "2.7"));
    EXPECT_EQ(Set("2.7 s x; 5.7" + kActive), Refused("inconsistentValue", "2.7"));
    EXPECT_EQ(Set("3.7 i 7; 4.7 i 3"), "") << "the others do not";
    EXPECT_EQ(Row("7"), "\"gate\" 7 3 1");
    EXPECT_EQ(Set("2.7 s north; 5.7" + kNotInService), "");
    EXPECT_EQ(Row("7"), "\"north\" 7 3 2");
    EXPECT_EQ(Set("2.7 s south"), "");
    EXPECT_EQ(Set("5.7" + kActive + "; 2.7 s east"), "");
    EXPECT_EQ(Row("7"), "\"east\" 7 3 1");
    EXPECT_EQ(Set("5.7" + kNotInService + "; 2.7 s west"), "");
    EXPECT_EQ(Row("7"), "\"west\" 7 3 2");
}

TEST_P(Doors, TwoStatusesForOneRowAreRefused)
{
    ASSERT_EQ(Set("5.7" + kCreateAndGo + "; 2.7 s gate"), "");
    EXPECT_EQ(Set("5.7" + kDestroy + "; 5.7" + kCreateAndGo), Refused("inconsistentValue", "5.7"))
        << "the new row would be active without a name";
    EXPECT_EQ(Set("5.7" + kDestroy + "; 5.7" + kCreateAndWait + "; 5.7" + kActive),
              Refused("inconsistentValue", "5.7"));
    EXPECT_EQ(Set("5.7" + kNotInService + "; 2.7 s x; 5.7" + kActive),
              Refused("inconsistentValue", "5.7"))
        << "the name stays while the door is active";
    EXPECT_EQ(Row("7"), "\"gate\" 30 2 1");
    EXPECT_EQ(Set("5.7" + kNotInService + "; 2.7 s x; 5.7" + kNotInService), "");
    EXPECT_EQ(Row("7"), "\"x\" 30 2 2");
}

TEST_P(Doors, ColumnsOfNoRowAreRefused)
{
    EXPECT_EQ(Set("2.7 s gate"), Refused("inconsistentName", "2.7"));
    EXPECT_EQ(Set("3.7 i 5; 5.7" + kDestroy), Refused("inconsistentName", "3.7"));
    ASSERT_EQ(Set("5.7" + kCreateAndWait), "");
    EXPECT_EQ(Set("2.7 s gate; 5.7" + kDestroy), Refused("inconsistentValue", "2.7"));
    EXPECT_EQ(Row("7"), "none 30 2 3");
    EXPECT_EQ(Set("5.7" + kDestroy), "");
    EXPECT_EQ(Row("7"), kNoRow);
}

TEST_P(Doors, StorageIsWhatAManagerMayChoose)
{
    ASSERT_EQ(Set("5.7" + kCreateAndWait), "");
    for (const char* accepted : {"1", "3", "2"}) {
        EXPECT_EQ(Set(std::string("4.7 i ") + accepted), "");
        EXPECT_EQ(Get("4.7"), accepted);
    }
    EXPECT_EQ(Set("4.7 i 4"), Refused("inconsistentValue", "4.7"));
    EXPECT_EQ(Set("4.7 i 5"), Refused("inconsistentValue", "4.7"));
    EXPECT_EQ(Set("4.7 i 0"), Refused("wrongValue", "4.7"));
    EXPECT_EQ(Set("4.7 i 6"), Refused("wrongValue", "4.7"));
    EXPECT_EQ(Set("5.8" + kCreateAndGo + "; 2.8 s x; 4.8 i 4"),
              Refused("inconsistentValue", "4.8"));
    EXPECT_EQ(Row("8"), kNoRow);
    EXPECT_EQ(Get("4.7"), "2");
}

TEST_P(Doors, APermanentRowIsChangedAndNotDestroyed)
{
    EXPECT_EQ(Set("5.1" + kDestroy), Refused("inconsistentValue", "5.1"));
    EXPECT_EQ(Set("4.1 i 2"), Refused("inconsistentValue", "4.1"));
    EXPECT_EQ(Set("4.1 i 4"), Refused("inconsistentValue", "4.1"));
    EXPECT_EQ(Set("3.1 i 60; 5.1" + kNotInService + "; 2.1 s front"), "");
    EXPECT_EQ(Row("1"), "\"front\" 60 4 2");
    EXPECT_EQ(Set("5.1" + kDestroy), Refused("inconsistentValue", "5.1"));
}

TEST_P(Doors, AReadOnlyRowIsNeitherChangedNorDestroyed)
{
    for (const char* set : {"2.2 s x", "3.2 i 60", "4.2 i 2", "5.2 i 1", "5.2 i 2", "5.2 i 6"}) {
        EXPECT_EQ(Set(set), Refused("inconsistentValue", std::string(set, 3))) << set;
        EXPECT_EQ(Row("2"), "\"vault\" 10 5 1");
    }
}

TEST_P(Doors, ValuesAreCheckedByTypeAndRange)
{
    ASSERT_EQ(Set("5.7" + kCreateAndWait + "; 2.7 s gate"), "");
    EXPECT_EQ(Set("2.7 s "), Refused("wrongLength", "2.7"));
    EXPECT_EQ(Set("2.7 s " + std::string(33, 'x')), Refused("wrongLength", "2.7"));
    EXPECT_EQ(Set("2.7 i 5"), Refused("wrongType", "2.7"));
    EXPECT_EQ(Set("2.7 x c3a9"), Refused("wrongValue", "2.7")) << "no DisplayString";
    EXPECT_EQ(Set("3.7 i 0"), Refused("wrongValue", "3.7"));
    EXPECT_EQ(Set("3.7 i 3601"), Refused("wrongValue", "3.7"));
    EXPECT_EQ(Set("3.7 u 5"), Refused("wrongType", "3.7"));
    EXPECT_EQ(Row("7"), "\"gate\" 30 2 2");
    EXPECT_EQ(Set("2.7 s " + std::string(32, 'x') + "; 3.7 i 3600"), "");
}

TEST_P(Doors, NamesThatCanNotBeAreRefused)
{
    const std::string go = kCreateAndGo + "; 2.";
    EXPECT_EQ(Set("5.0" + go + "0 s x"), Refused("noCreation", "5.0"));
    EXPECT_EQ(Set("5.2147483648" + go + "2147483648 s x"), Refused("noCreation", "5.2147483648"));
    EXPECT_EQ(Set("5.7.7" + go + "7.7 s x"), Refused("noCreation", "5.7.7"));
    EXPECT_EQ(Set("5" + kCreateAndWait), Refused("inconsistentName", "5"));
    EXPECT_EQ(Set("2 s x"), Refused("noCreation", "2"));
    EXPECT_EQ(Set("1.7 i 7"), Refused("notWritable", "1.7"));
    EXPECT_EQ(Set("6.7 i 7"), Refused("notWritable", "6.7"));
    EXPECT_EQ(Set("5.2147483647" + go + "2147483647 s x"), "");
}

TEST_P(Doors, OneRefusedBindingLeavesAllUnchanged)
{
    ASSERT_EQ(Set("5.7" + kCreateAndWait + "; 2.7 s gate"), "");
    const std::string before = Row("7");
    EXPECT_EQ(Set("2.7 s x; 3.7 i 0"), Refused("wrongValue", "3.7"));
    EXPECT_EQ(Set("5.7" + kDestroy + "; 5.2" + kDestroy), Refused("inconsistentValue", "5.2"));
    EXPECT_EQ(Set("3.7 i 8; 5.7" + kActive + "; 4.7 i 5"), Refused("inconsistentValue", "4.7"));
    EXPECT_EQ(Row("7"), before);
    EXPECT_EQ(Set("5.8" + kCreateAndGo + "; 2.8 s x; 3.7 i 0"), Refused("wrongValue", "3.7"));
    EXPECT_EQ(Row("8"), kNoRow);
}

TEST_P(Doors, WalksGoColumnByColumnAndStepOverWhatIsMissing)
{
    ASSERT_EQ(Set("5.7" + kCreateAndWait), "");
    const Arguments all{"2.1 \"main entrance\"",
                        "2.2 \"vault\"",
                        "3.1 30",
                        "3.2 10",
                        "3.7 30",
                        "4.1 4",
                        "4.2 5",
                        "4.7 2",
                        "5.1 1",
                        "5.2 1",
                        "5.7 3"};
    EXPECT_EQ(m_manager.Walk(), all);
    EXPECT_EQ(m_manager.Walk("2"), Arguments(all.begin(), all.begin() + 2));
    if (m_manager.IsV1())
        return;
    for (const char* repetitions : {"1", "2", "7", "50"})
        EXPECT_EQ(m_manager.BulkWalk("", repetitions), all) << repetitions;
}

// As tools ask that print tables.
TEST_P(Doors, ARowIsReadByOneGetNextOfItsColumns)
{
    EXPECT_EQ(m_manager.Next({"2", "3", "4", "5"}),
              (Arguments{"2.1 \"main entrance\"", "3.1 30", "4.1 4", "5.1 1"}));
    EXPECT_EQ(m_manager.Next({"2.1", "3.1", "4.1", "5.1"}),
              (Arguments{"2.2 \"vault\"", "3.2 10", "4.2 5", "5.2 1"}));
    EXPECT_EQ(m_manager.Next({"2.2", "3.2", "4.2"}), (Arguments{"3.1 30", "4.1 4", "5.1 1"}));
}

namespace {

class DoorTimeouts : public testing::TestWithParam<const char*> {
protected:
    // The timer ticks once a second, so two seconds are at least one.
    Manager m_manager{"rowstatus", "1.3.6.1.4.1.32473.2.3.1", GetParam(), {"2"}};
};

} // namespace

VERSIONS(DoorTimeouts);

TEST_P(DoorTimeouts, OnlyRowsThatAManagerLeftInactiveAreRemoved)
{
    EXPECT_EQ(m_manager.Set("5.6" + kCreateAndWait + "; 5.7" + kCreateAndWait + "; 2.7 s a; 5.8" +
                            kCreateAndGo + "; 2.8 s b; 5.1" + kNotInService),
              "");
    EXPECT_EQ(m_manager.Set("5.7" + kActive + "; 5.8" + kNotInService), "");
    EXPECT_TRUE(m_manager.IsGoneSoon("5.6")) << "was notReady";
    EXPECT_TRUE(m_manager.IsGoneSoon("5.8")) << "was notInService";
    EXPECT_EQ(m_manager.Walk("5"), (Arguments{"5.1 2", "5.2 1", "5.7 1"}))
        << "a permanent row, and those that are active";
}
