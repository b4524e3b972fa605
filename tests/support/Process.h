// Child processes: run one to its end, or keep one running and read its lines.
#pragma once

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

using Arguments = std::vector<std::string>;

// For exec. Made before fork(): the child of a process with threads may allocate
// nothing, for one of them may have held the allocator's lock.
inline std::vector<char*> ArgvOf(const Arguments& arguments)
{
    std::vector<char*> argv;
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    return argv;
}

// Ends a child for good. One that is killed writes no counters of what it ran: with
// VKMIBH_COUNT_CHILDREN in the environment it is asked first, and has ten seconds.
inline void EndChild(pid_t child)
{
    if (std::getenv("VKMIBH_COUNT_CHILDREN")) {
        kill(child, SIGTERM);
        for (int i = 0; i < 1000; ++i) {
            if (waitpid(child, nullptr, WNOHANG) != 0)
                return;
            usleep(10000);
        }
    }
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

// Standard input, or a file of its own for standard error.
struct ProcessFiles {
    int input = -1; // none: /dev/null
    std::string errors;
};

// Standard output and standard error go into one pipe.
class Process {
public:
    explicit Process(const Arguments& arguments, const ProcessFiles& files = {})
    {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) // no other child is to hold them open
            return;
        const std::vector<char*> argv = ArgvOf(arguments);
        m_pid = fork();
        if (m_pid == 0) {
            dup2(ends[1], STDOUT_FILENO);
            dup2(files.errors.empty() ? ends[1] : Create(files.errors), STDERR_FILENO);
            dup2(files.input < 0 ? open("/dev/null", O_RDONLY) : files.input, STDIN_FILENO);
            close(ends[0]);
            close(ends[1]);
            execvp(argv[0], argv.data());
            _exit(127);
        }
        close(ends[1]);
        m_output = ends[0];
    }
    ~Process()
    {
        if (m_pid > 0)
            EndChild(m_pid);
        if (m_output >= 0)
            close(m_output);
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    // The next line without its end; empty at the end of the output or when
    // none comes for long.
    std::string Line()
    {
        for (;;) {
            size_t end = m_pending.find('\n');
            if (end != m_pending.npos) {
                std::string line = m_pending.substr(0, end);
                m_pending.erase(0, end + 1);
                return line;
            }
            if (!ReadMore())
                return std::exchange(m_pending, "");
        }
    }

    std::string Rest()
    {
        while (ReadMore()) {
        }
        return std::exchange(m_pending, "");
    }

    // Exit status, or 128 and the signal's number.
    int Wait()
    {
        int status = 0;
        waitpid(m_pid, &status, 0);
        m_pid = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    pid_t Pid() const { return m_pid; }

    int Kill(int signalNumber)
    {
        kill(m_pid, signalNumber);
        return Wait();
    }

private:
    static int Create(const std::string& file)
    {
        return open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    }

    bool ReadMore()
    {
        pollfd wait{m_output, POLLIN, 0};
        if (poll(&wait, 1, 30000) != 1)
            return false;
        char buffer[4096];
        ssize_t count = read(m_output, buffer, sizeof buffer);
        if (count <= 0)
            return false;
        m_pending.append(buffer, static_cast<size_t>(count));
        return true;
    }

    pid_t m_pid = -1;
    int m_output = -1;
    std::string m_pending;
};

struct Outcome {
    int status = 0;
    std::string output;
};

inline Outcome RunToEnd(const Arguments& arguments, const ProcessFiles& files = {})
{
    Process process(arguments, files);
    Outcome outcome;
    outcome.output = process.Rest();
    outcome.status = process.Wait();
    return outcome;
}
