// A program on a pseudo-terminal of its own, and someone who types.
#pragma once

#include "tests/support/Process.h"
#include "tests/support/Threads.h"

#include <algorithm>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <termios.h>
#include <tuple>

// Like the first program of a login on that terminal.
class TerminalSession {
public:
    explicit TerminalSession(const Arguments& arguments)
    {
        winsize size = {};
        size.ws_row = 24;
        size.ws_col = 80;
        if (openpty(&m_master, &m_slave, nullptr, nullptr, &size) != 0)
            return;
        fcntl(m_master, F_SETFD, FD_CLOEXEC);
        fcntl(m_slave, F_SETFD, FD_CLOEXEC);
        m_settings = Settings();
        const std::vector<char*> argv = ArgvOf(arguments);
        m_pid = fork();
        if (m_pid != 0)
            return;
        setsid();
        ioctl(m_slave, TIOCSCTTY, 0);
        for (int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            dup2(m_slave, standard);
        rlimit none{0, 0};
        setrlimit(RLIMIT_CORE, &none);
        execvp(argv[0], argv.data());
        _exit(127);
    }
    ~TerminalSession()
    {
        if (m_pid > 0)
            EndChild(m_pid);
        close(m_master);
        close(m_slave);
    }
    TerminalSession(const TerminalSession&) = delete;
    TerminalSession& operator=(const TerminalSession&) = delete;

    void Type(const std::string& keys)
    {
        if (write(m_master, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size()))
            ADD_FAILURE() << "the terminal takes no more keys";
    }

    // What comes up to the text and with it. It fails the test when nothing more
    // comes for long, and no text.
    std::string Until(const std::string& text)
    {
        size_t at = 0;
        while ((at = m_shown.find(text)) == m_shown.npos) {
            if (!ReadMore(30000)) {
                ADD_FAILURE() << "'" << text << "' is not in '" << m_shown << "'";
                return std::exchange(m_shown, "");
            }
        }
        std::string upTo = m_shown.substr(0, at + text.size());
        m_shown.erase(0, upTo.size());
        return upTo;
    }
    bool Shows(const std::string& text)
    {
        std::string shown = Until(text);
        return shown.size() >= text.size() &&
               shown.compare(shown.size() - text.size(), text.size(), text) == 0;
    }
    // What comes in a while, for what must not come: a slow program passes.
    std::string Pause()
    {
        while (ReadMore(100)) {
        }
        return std::exchange(m_shown, "");
    }

    // Bytes that came and that nobody has read.
    int Pending() const
    {
        int bytes = -1;
        ioctl(m_master, FIONREAD, &bytes);
        return bytes;
    }

    // Exit status, or 128 and the signal's number.
    int Wait()
    {
        return WaitWith([this] {
            while (ReadMore(0)) {
            }
        });
    }
    int WaitWithoutReading()
    {
        return WaitWith([] {});
    }
    int Kill(int signalNumber)
    {
        kill(m_pid, signalNumber);
        return Wait();
    }
    pid_t Pid() const { return m_pid; }
    // The job that has the terminal.
    void KillForeground(int signalNumber) const { kill(-tcgetpgrp(m_master), signalNumber); }
    // The line to the terminal is gone.
    void HangUp()
    {
        for (int* end : {&m_slave, &m_master})
            close(std::exchange(*end, -1));
    }
    // As an operator does by Ctrl-S and Ctrl-Q.
    void StopOutput() const { ioctl(m_slave, TCXONC, TCOOFF); }
    void ResumeOutput() const { ioctl(m_slave, TCXONC, TCOON); }

    // From now on the settings of now are those at first.
    void RememberSettings() { m_settings = Settings(); }
    bool IsAsAtFirst() const
    {
        const auto fields = [](const termios& all) {
            return std::tie(all.c_iflag, all.c_oflag, all.c_cflag, all.c_lflag, all.c_line,
                            all.c_ispeed, all.c_ospeed);
        };
        const termios now = Settings();
        return fields(now) == fields(m_settings) &&
               std::equal(std::begin(now.c_cc), std::end(now.c_cc), m_settings.c_cc);
    }
    // Lines that were typed and that no program read.
    int Unread() const
    {
        int bytes = -1;
        ioctl(m_slave, FIONREAD, &bytes);
        return bytes;
    }
    void Resize(unsigned short columns)
    {
        winsize size = {};
        size.ws_row = 24;
        size.ws_col = columns;
        ioctl(m_master, TIOCSWINSZ, &size);
    }

private:
    template <class TMeanwhile>
    int WaitWith(TMeanwhile&& meanwhile)
    {
        int status = 0;
        bool ended = VLK::Eventually([&] {
            meanwhile();
            return waitpid(m_pid, &status, WNOHANG) == m_pid;
        });
        if (!ended)
            return -1;
        m_pid = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    termios Settings() const
    {
        termios settings = {};
        tcgetattr(m_slave, &settings);
        return settings;
    }

    bool ReadMore(int milliseconds)
    {
        pollfd wait{m_master, POLLIN, 0};
        char buffer[4096];
        if (poll(&wait, 1, milliseconds) != 1)
            return false;
        ssize_t count = read(m_master, buffer, sizeof buffer);
        if (count <= 0)
            return false;
        m_shown.append(buffer, static_cast<size_t>(count));
        return true;
    }

    int m_master = -1;
    int m_slave = -1; // kept, to look at the terminal after the program's end
    termios m_settings = {};
    pid_t m_pid = -1;
    std::string m_shown;
};
