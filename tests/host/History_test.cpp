#include "host/History.h"

#include "tests/support/TempDir.h"

#include <histedit.h>
#include <sys/stat.h>

using namespace VLK::host;

namespace {

// Newest first.
std::vector<std::string> LinesOf(const BHistory& lines)
{
    std::vector<std::string> texts;
    HistEvent event;
    for (int status = history(lines.Handle(), &event, H_FIRST); status >= 0;
         status = history(lines.Handle(), &event, H_NEXT))
        texts.emplace_back(event.str);
    return texts;
}

using Lines = std::vector<std::string>;

class HistoryFileTest : public testing::Test {
protected:
    TempDir directory;
    std::string file = directory.File("state/history");
};

} // namespace

TEST_F(HistoryFileTest, IsReadByTheNextAgentAndByNobodyElse)
{
    {
        BHistory lines(file);
        lines.Add("get 1.3");
        lines.Add("set 1.3 4 \"two words\"");
    }
    struct stat status = {};
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600u);
    EXPECT_EQ(LinesOf(BHistory(file)), (Lines{"set 1.3 4 \"two words\"", "get 1.3"}));
}

TEST_F(HistoryFileTest, BlankLinesAndRepetitionsAreNotKept)
{
    BHistory lines(file);
    for (const char* line : {"", " \t", "get 1", "get 1", "?", "get 1"})
        lines.Add(line);
    EXPECT_EQ(LinesOf(lines), (Lines{"get 1", "?", "get 1"}));
}

TEST_F(HistoryFileTest, KeepsTheNewestLines)
{
    BHistory lines("");
    for (int i = 0; i <= BHistory::s_mostLines; ++i)
        lines.Add(("get " + std::to_string(i)).c_str());
    Lines kept = LinesOf(lines);
    ASSERT_EQ(kept.size(), static_cast<size_t>(BHistory::s_mostLines));
    EXPECT_EQ(kept.front(), "get " + std::to_string(BHistory::s_mostLines));
    EXPECT_EQ(kept.back(), "get 1");
}

TEST_F(HistoryFileTest, NothingTypedWritesNothing)
{
    {
        const BHistory lines(file);
    }
    EXPECT_FALSE(std::filesystem::exists(directory.File("state")));
}

TEST_F(HistoryFileTest, AFileThatCannotBeUsedIsNoError)
{
    WriteFile(directory.File("state"), "not a directory");
    {
        BHistory lines(file);
        lines.Add("get 1");
        EXPECT_EQ(LinesOf(lines), Lines{"get 1"});
    }
    EXPECT_EQ(ReadFile(directory.File("state")), "not a directory");
}

TEST_F(HistoryFileTest, ADamagedFileIsReplaced)
{
    std::filesystem::create_directory(directory.File("state"));
    WriteFile(file, std::string(1000, '\xff') + std::string("\n\0x", 3));
    {
        BHistory lines(file);
        EXPECT_EQ(LinesOf(lines), Lines{});
        lines.Add("get 1");
    }
    EXPECT_EQ(LinesOf(BHistory(file)), Lines{"get 1"});
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory.File("state")), {}), 1)
        << "nothing else is left there";
}
