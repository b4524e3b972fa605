// vkagentd with pipes for standard input and output, and a file for its log.
#pragma once

#include "RunningAgent.h"

#include "tests/support/Threads.h"

#include <sys/ioctl.h>

// Readable by `public`, writable by `private`, on a port the system chose.
inline Arguments ConsoleCommand(const std::string& store, const Arguments& options,
                                const char* program)
{
    Arguments line{program,       "--store",   store,         "--listen",  "udp:127.0.0.1:0",
                   "--community", "public:ro", "--community", "private:rw"};
    line.insert(line.end(), options.begin(), options.end());
    return line;
}

class PipedAgent {
public:
    explicit PipedAgent(const std::string& store, const Arguments& options = {"--console"},
                        const char* program = VKAGENTD)
        : m_process(ConsoleCommand(store, options, program), {m_pipe.ends[0], Log()})
    {
        close(m_pipe.ends[0]);
        signal(SIGPIPE, SIG_IGN); // an agent that ended fails the test, no more
    }
    ~PipedAgent() { EndInput(); }
    PipedAgent(const PipedAgent&) = delete;
    PipedAgent& operator=(const PipedAgent&) = delete;

    // False when it does not become ready.
    bool IsReady() const
    {
        return VLK::Eventually([this] { return !Address().empty(); });
    }
    std::string Address() const
    {
        const std::string ready = "ready on ";
        std::string log = LogText();
        size_t at = log.find(ready);
        size_t end = log.find('\n', at);
        if (at == log.npos || end == log.npos)
            return "";
        return log.substr(at + ready.size(), end - at - ready.size());
    }
    std::string LogText() const { return ReadFile(Log()); }
    // Whether the log comes to hold the text, behind the beginning of that length.
    bool Logs(const std::string& text, size_t after) const
    {
        return VLK::Eventually([&] {
            std::ifstream log(Log(), std::ios::binary);
            log.seekg(static_cast<std::streamoff>(after));
            return std::string(std::istreambuf_iterator<char>(log), {}).find(text) != text.npos;
        });
    }
    size_t LogSize() const { return std::filesystem::file_size(Log()); }
    unsigned Port() const
    {
        const std::string address = Address();
        return static_cast<unsigned>(std::stoul(address.substr(address.rfind(':') + 1)));
    }

    // All of it; may wait until the agent has read the beginning.
    void Type(const std::string& text)
    {
        for (size_t done = 0; done < text.size();) {
            ssize_t written = write(m_pipe.ends[1], text.data() + done, text.size() - done);
            if (written <= 0) {
                ADD_FAILURE() << "the agent reads no more";
                return;
            }
            done += static_cast<size_t>(written);
        }
    }
    void EndInput()
    {
        if (m_pipe.ends[1] >= 0)
            close(m_pipe.ends[1]);
        m_pipe.ends[1] = -1;
    }
    // Bytes that were typed and not read.
    int Unread() const
    {
        int bytes = -1;
        ioctl(m_pipe.ends[1], FIONREAD, &bytes);
        return bytes;
    }

    // The whole output of commands, to the end of the agent.
    std::string Answers(const std::string& commands)
    {
        Type(commands);
        EndInput();
        return m_process.Rest();
    }
    std::string Line() { return m_process.Line(); }
    std::string Rest() { return m_process.Rest(); }
    pid_t Pid() const { return m_process.Pid(); }
    int Wait() { return m_process.Wait(); }
    int Kill(int signalNumber) { return m_process.Kill(signalNumber); }

    Outcome Ask(const std::string& tool, const std::string& community, const Arguments& rest,
                const Arguments& options = {}) const
    {
        return m_tools.Ask(Address(), tool, "2c", community, rest, options);
    }

private:
    std::string Log() const { return m_directory.File("log"); }
    // Children of the test that come later do not hold it open.
    struct Pipe {
        Pipe() { EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0); }
        int ends[2] = {-1, -1};
    };

    TempDir m_directory;
    SnmpTools m_tools;
    Pipe m_pipe;
    Process m_process;
};
