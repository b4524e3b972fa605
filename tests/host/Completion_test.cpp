#include "host/Completion.h"

#include <gtest/gtest.h>

using namespace VLK::host;

namespace {

const std::vector<std::string> kNames{"q", "?", "help", "clivacm", "set", "getnext", "get"};

} // namespace

TEST(Completion, InsertsWhatIsCertainAndListsWhatIsNot)
{
    struct Row {
        const char* typed;
        const char* insert;
        std::vector<std::string> choices;
    };
    const Row rows[] = {
        {"s", "et ", {}},
        {"set", " ", {}},
        {"g", "et", {}},
        {"get", "", {"get", "getnext"}},
        {"getn", "ext ", {}},
        {"  c", "livacm ", {}},
        {"x", "", {}},
        {"gets", "", {}},
        {"G", "", {}},
        {"", "", {"?", "clivacm", "get", "getnext", "help", "q", "set"}},
        {"help s", "et ", {}},
        {"help  ge", "t", {}},
        {"? get", "", {"get", "getnext"}},
        {"help ", "", {"?", "clivacm", "get", "getnext", "help", "q", "set"}},
        {"help set ", "", {}},
        {"get s", "", {}},
        {"set 1.3 ", "", {}},
    };
    for (const Row& row : rows) {
        SCompletion completion = Complete(kNames, row.typed);
        EXPECT_EQ(completion.insert, row.insert) << "'" << row.typed << "'";
        EXPECT_EQ(completion.choices, row.choices) << "'" << row.typed << "'";
    }
}

TEST(Completion, WithoutNamesThereIsNothingToComplete)
{
    EXPECT_EQ(Complete({}, "g").insert, "");
    EXPECT_TRUE(Complete({}, "").choices.empty());
}
