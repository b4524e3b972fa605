// An agent whose configuration is read again.
#pragma once

#include "RunningAgent.h"

#include "tests/support/Threads.h"

#include <sys/stat.h>

// vkagentd with a file of its own for its log; it listens where the system chooses.
class ReloadingAgent {
public:
    explicit ReloadingAgent(const std::string& text, const Arguments& more = {},
                            const char* program = VKAGENTD)
        : m_process(Line(program, Write(text), more), {-1, Log()})
    {
    }

    bool IsReady() const
    {
        return VLK::Eventually([this] { return !Address().empty(); });
    }
    std::string Address() const
    {
        const std::string ready = "ready on ";
        const std::string log = LogText();
        const size_t at = log.find(ready);
        const size_t end = log.find('\n', at);
        if (at == log.npos || end == log.npos)
            return "";
        return log.substr(at + ready.size(), end - at - ready.size());
    }
    unsigned Port() const
    {
        const std::string address = Address();
        return static_cast<unsigned>(std::stoul(address.substr(address.rfind(':') + 1)));
    }
    std::string LogText() const { return ReadFile(Log()); }
    // Whether the log comes to hold the text, behind what it held at that length.
    bool Logs(const std::string& text, size_t after = 0) const
    {
        return VLK::Eventually([&] { return LogText().find(text, after) != std::string::npos; });
    }

    // Has the file hold another text, and the agent read it: what it logs of that, without
    // the program's name.
    Arguments Reload(const std::string& text)
    {
        Write(text);
        return Reload();
    }
    Arguments Reload()
    {
        const size_t before = LogText().size();
        kill(Pid(), SIGHUP);
        EXPECT_TRUE(VLK::Eventually([&] {
            const std::string log = LogText().substr(before);
            return log.find("vkagentd: read " + Config() + " again\n") != log.npos ||
                   log.find("vkagentd: the configuration stays as it was\n") != log.npos ||
                   log.find("to read again\n") != log.npos;
        })) << LogText();
        Arguments lines = Lines(LogText().substr(before));
        for (std::string& line : lines)
            line.erase(0, std::string("vkagentd: ").size());
        return lines;
    }
    std::string ReadAgain() const { return "read " + Config() + " again"; }

    const std::string& Write(const std::string& text)
    {
        WriteFile(m_config, "agentAddress = \"udp:127.0.0.1:0\"\n" + text);
        chmod(m_config.c_str(), 0600);
        return m_config;
    }
    const std::string& Config() const { return m_config; }
    Outcome Ask(const std::string& tool, const std::string& community, const Arguments& rest,
                const Arguments& options = {}) const
    {
        return m_tools.Ask(Address(), tool, "2c", community, rest, options);
    }
    // Whether the community is shown the object.
    bool Shows(const std::string& community, const std::string& object) const
    {
        return Ask("snmpget", community, {object}, {"-r", "0", "-t", "10"}).status == 0;
    }
    const SnmpTools& Tools() const { return m_tools; }
    pid_t Pid() const { return m_process.Pid(); }
    int Kill(int signalNumber) { return m_process.Kill(signalNumber); }

private:
    Arguments Line(const char* program, const std::string& config, const Arguments& more) const
    {
        Arguments line{program, "--store", m_directory.File("store.db")};
        if (!config.empty())
            line.insert(line.end(), {"--config", config});
        line.insert(line.end(), more.begin(), more.end());
        return line;
    }
    std::string Log() const { return m_directory.File("log"); }

    TempDir m_directory;
    std::string m_config = m_directory.File("agent.toml");
    SnmpTools m_tools;
    Process m_process;
};
