// Log lines, also where nobody takes them.
#include "host/Log.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace VLK::host;

namespace {

// A pipe in place of standard error that holds one page, for as long as it lives.
class Log : public testing::Test {
protected:
    Log()
    {
        int ends[2];
        EXPECT_EQ(pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
        EXPECT_EQ(fcntl(ends[1], F_SETPIPE_SZ, s_room), s_room);
        fcntl(ends[1], F_SETFL, 0); // as those of a shell
        m_read = ends[0];
        dup2(ends[1], STDERR_FILENO);
        close(ends[1]);
    }
    ~Log() override
    {
        dup2(m_before, STDERR_FILENO);
        close(m_before);
        close(m_read);
    }

    std::string Written() const
    {
        std::string text(size_t{2} * s_room, '\0');
        ssize_t count = read(m_read, text.data(), text.size());
        text.resize(count > 0 ? static_cast<size_t>(count) : 0);
        return text;
    }
    static std::string LineOf(const std::string& text) { return "test_host: " + text + "\n"; }
    static void Fill()
    {
        EXPECT_EQ(write(STDERR_FILENO, std::string(s_room, 'x').data(), s_room), s_room);
    }

    static constexpr int s_room = 4096;

private:
    int m_before = dup(STDERR_FILENO);
    int m_read = -1;
};

class Owner : public ILineOwner {
public:
    std::string GiveWay() override { return way; }
    void TakeBack() override { ++taken; }

    std::string way;
    int taken = 0;
};

} // namespace

TEST_F(Log, ALineIsTheProgramsNameAndTheText)
{
    LogLine(eLogError, "a\tb\nc\x1b[2J");
    EXPECT_EQ(Written(), LineOf("a b c [2J"));
}

TEST_F(Log, LinesThatNobodyTakesAreCounted)
{
    Fill();
    LogLine(eLogError, "one");
    LogLine(eLogError, "two");
    EXPECT_EQ(Written(), std::string(s_room, 'x'));
    LogLine(eLogError, "three");
    EXPECT_EQ(Written(), LineOf("three (2 before it were not logged)"));
    LogLine(eLogError, "four");
    EXPECT_EQ(Written(), LineOf("four"));
}

TEST_F(Log, ALineThatWasCutIsNotGoneOnWith)
{
    LogLine(eLogError, std::string(s_room + 1000, 'x'));
    EXPECT_EQ(Written(), LineOf(std::string(s_room, 'x')).substr(0, s_room));
    LogLine(eLogError, "next");
    EXPECT_EQ(Written(), "\n" + LineOf("next (1 before it were not logged)"));
    LogLine(eLogError, "and so on");
    EXPECT_EQ(Written(), LineOf("and so on"));
}

TEST_F(Log, ALongLineComesWholeWhereItIsRead)
{
    EXPECT_EQ(fcntl(STDERR_FILENO, F_SETPIPE_SZ, 4 * s_room), 4 * s_room);
    std::string text(s_room + 1000, 'x');
    LogLine(eLogError, text);
    EXPECT_EQ(Written(), LineOf(text));
}

TEST_F(Log, AnOwnerTakesItsRowBackWhenItGaveWayAndTheLineIsThere)
{
    Owner owner;
    BLineOwnership ownership(owner);
    LogLine(eLogError, "elsewhere");
    EXPECT_EQ(Written(), LineOf("elsewhere"));
    EXPECT_EQ(owner.taken, 0);
    owner.way = "\r";
    LogLine(eLogError, "above");
    EXPECT_EQ(Written(), "\r" + LineOf("above"));
    EXPECT_EQ(owner.taken, 1);
    Fill();
    LogLine(eLogError, "lost");
    EXPECT_EQ(owner.taken, 1);
    Written();
    LogLine(eLogError, "next");
    EXPECT_EQ(owner.taken, 2);
}
