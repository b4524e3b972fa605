#include "tests/support/StandardStreams.h"
#include "tests/support/TempDir.h"
#include "tests/support/Threads.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <pthread.h>
#include <string>
#include <vector>
#include <vkmibh/cli.h>

namespace VLK {
namespace {

using Test::InputPipe;
using Test::Pipe;
using Test::Redirection;

class CmdStream : public testing::Test {
protected:
    CmdStream() { BCmdStream::s_pauseAtEnd = 0; }
    ~CmdStream() override { BCmdStream::s_pauseAtEnd = m_pause; }

    std::string Line()
    {
        BString line("what the last line left");
        EXPECT_EQ(stream.GetLine(line), 0);
        return std::string(line.c_str(), line.length());
    }

    BCmdStream stream;

private:
    const unsigned m_pause = BCmdStream::s_pauseAtEnd;
};

std::string Of(std::size_t count, char c) { return std::string(count, c); }

TEST_F(CmdStream, GivesLinesWithoutTheirEnd)
{
    InputPipe input;
    input.Write("one\n\n  two words \n");
    EXPECT_EQ(Line(), "one");
    EXPECT_EQ(Line(), "");
    EXPECT_EQ(Line(), "  two words ");
}

TEST_F(CmdStream, CarriageReturnsAndNulsBelongToTheLine)
{
    InputPipe input;
    input.Write(std::string("a\r\nb\0c\n\xff\n", 9));
    EXPECT_EQ(Line(), "a\r");
    EXPECT_EQ(Line(), std::string("b\0c", 3));
    EXPECT_EQ(Line(), "\xff") << "which is no end of the input";
}

TEST_F(CmdStream, LastLineNeedsNoEnd)
{
    InputPipe input;
    input.Write("one\ntwo");
    input.End();
    EXPECT_EQ(Line(), "one");
    EXPECT_EQ(Line(), "two");
    EXPECT_EQ(Line(), "");
}

TEST_F(CmdStream, ReadsAtMost1024CharactersAtATime)
{
    InputPipe input;
    input.Write(Of(1023, 'a') + "\n" + Of(1024, 'b') + "\n" + Of(1025, 'c') + "\n" + Of(2500, 'd') +
                "\nlast\n");
    EXPECT_EQ(Line(), Of(1023, 'a'));
    EXPECT_EQ(Line(), Of(1024, 'b'));
    EXPECT_EQ(Line(), "") << "the newline is the 1025th";
    EXPECT_EQ(Line(), Of(1024, 'c'));
    EXPECT_EQ(Line(), "c");
    EXPECT_EQ(Line(), Of(1024, 'd'));
    EXPECT_EQ(Line(), Of(1024, 'd'));
    EXPECT_EQ(Line(), Of(452, 'd'));
    EXPECT_EQ(Line(), "last");
}

TEST_F(CmdStream, EndedInputGivesEmptyLines)
{
    InputPipe input;
    input.End();
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(Line(), "");
}

double SecondsOf(const std::function<void()>& call)
{
    const auto start = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

TEST(CmdStreamPause, IsASecond) { EXPECT_EQ(BCmdStream::s_pauseAtEnd, 1000u); }

TEST_F(CmdStream, WaitsBeforeItSaysThatNothingIsLeft)
{
    InputPipe input;
    input.End();
    BCmdStream::s_pauseAtEnd = 60;
    EXPECT_GE(SecondsOf([&] { EXPECT_EQ(Line(), ""); }), 0.06);
    EXPECT_GE(SecondsOf([&] { EXPECT_EQ(Line(), ""); }), 0.06);
}

TEST_F(CmdStream, DoesNotWaitWhenSomethingWasRead)
{
    InputPipe input;
    input.Write("\nlast");
    input.End();
    BCmdStream::s_pauseAtEnd = 20000;
    EXPECT_LT(SecondsOf([&] {
                  EXPECT_EQ(Line(), "") << "an empty line is something";
                  EXPECT_EQ(Line(), "last");
              }),
              10);
}

TEST_F(CmdStream, ReadsOnWhenTheInputHasGrown)
{
    const TempDir directory;
    const std::string path = directory.File("input");
    WriteFile(path, "one\n");
    const int file = open(path.c_str(), O_RDWR | O_APPEND | O_CLOEXEC);
    {
        const Redirection redirection(STDIN_FILENO, file);
        EXPECT_EQ(Line(), "one");
        EXPECT_EQ(Line(), "");
        EXPECT_EQ(write(file, "two\n", 4), 4);
        EXPECT_EQ(lseek(STDIN_FILENO, 4, SEEK_SET), 4);
        EXPECT_EQ(Line(), "two");
    }
    close(file);
    std::clearerr(stdin);
}

TEST_F(CmdStream, TerminalGoesOnAfterItsEndCharacter)
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(terminal, 0);
    ASSERT_EQ(grantpt(terminal) + unlockpt(terminal), 0);
    char name[64];
    ASSERT_EQ(ptsname_r(terminal, name, sizeof name), 0);
    const int keyboard = open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(keyboard, 0); // cppcheck-suppress resourceLeak ; nothing is open
    {
        const Redirection redirection(STDIN_FILENO, keyboard);
        const std::string typed = "one\n\x04two\nth\x04ree\n";
        EXPECT_EQ(write(terminal, typed.data(), typed.size()), ssize_t(typed.size()));
        EXPECT_EQ(Line(), "one");
        EXPECT_EQ(Line(), "");
        EXPECT_EQ(Line(), "two");
        EXPECT_EQ(Line(), "three");
    }
    close(keyboard);
    close(terminal);
}

TEST_F(CmdStream, SignalDoesNotEndALine)
{
    struct sigaction action = {};
    struct sigaction before;
    static std::atomic<int> s_signals;
    s_signals = 0;
    action.sa_handler = [](int) { ++s_signals; }; // without SA_RESTART
    ASSERT_EQ(sigaction(SIGUSR1, &action, &before), 0);
    InputPipe input;
    std::string line;
    std::thread reader([&] { line = Line(); });
    input.Write("sys");
    // While the reader waits for more; one that is not there yet is not harmed.
    for (int i = 0; i < 3; ++i) {
        GiveOthersTime();
        pthread_kill(reader.native_handle(), SIGUSR1);
    }
    GiveOthersTime();
    input.Write("Descr\n");
    reader.join();
    EXPECT_EQ(line, "sysDescr");
    EXPECT_GE(s_signals, 1);
    sigaction(SIGUSR1, &before, nullptr);
}

TEST_F(CmdStream, InputThatCannotBeReadIsAtItsEnd)
{
    const int directory = open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_GE(directory, 0); // cppcheck-suppress resourceLeak ; nothing is open
    {
        const Redirection redirection(STDIN_FILENO, directory);
        EXPECT_EQ(Line(), "");
        EXPECT_EQ(Line(), "");
    }
    close(directory);
    InputPipe input;
    input.Write("later\n");
    EXPECT_EQ(Line(), "later");
}

std::string ReadFrom(int file)
{
    char buffer[256];
    fcntl(file, F_SETFL, O_NONBLOCK);
    const ssize_t count = read(file, buffer, sizeof buffer);
    return std::string(buffer, count > 0 ? static_cast<std::size_t>(count) : 0);
}

TEST_F(CmdStream, WriteIsSeenAtOnceAndGivesTheNumberOfCharacters)
{
    std::fflush(stdout);
    Pipe output;
    const Redirection redirection(STDOUT_FILENO, output.Writer());
    EXPECT_EQ(stream.Write("agent> "), 7);
    EXPECT_EQ(ReadFrom(output.Reader()), "agent> ");
    EXPECT_EQ(stream.Write(BString()), 0);
    EXPECT_EQ(ReadFrom(output.Reader()), "");
    EXPECT_EQ(stream.Write("100%s %d %n\n"), 12);
    EXPECT_EQ(ReadFrom(output.Reader()), "100%s %d %n\n");
}

TEST_F(CmdStream, WriteEndsAtANul)
{
    std::fflush(stdout);
    Pipe output;
    const Redirection redirection(STDOUT_FILENO, output.Writer());
    EXPECT_EQ(stream.Write(BString("ab\0cd\n", 6)), 2);
    EXPECT_EQ(ReadFrom(output.Reader()), "ab");
}

TEST_F(CmdStream, WriteWaitsForTheTraceGuard)
{
    std::fflush(stdout);
    Pipe output;
    const Redirection redirection(STDOUT_FILENO, output.Writer());
    std::thread other;
    {
        TTraceGuard guard;
        stream.Write("mine\n"); // a thread may hold it twice
        EXPECT_EQ(ReadFrom(output.Reader()), "mine\n");
        other = std::thread([this] { stream.Write("other\n"); });
        GiveOthersTime();
        EXPECT_EQ(ReadFrom(output.Reader()), "");
    }
    other.join();
    EXPECT_EQ(ReadFrom(output.Reader()), "other\n");
}

TEST_F(CmdStream, ReadsAndWaitsWithoutTheTraceGuard)
{
    InputPipe input;
    input.Write("one\n");
    input.End();
    BCmdStream::s_pauseAtEnd = 1;
    std::atomic<int> read{0};
    std::thread reader;
    {
        TTraceGuard guard;
        reader = std::thread([&] {
            for (; read < 2; ++read)
                Line();
        });
        EXPECT_TRUE(Eventually([&] { return read == 2; }));
    }
    reader.join();
}

} // namespace
} // namespace VLK
