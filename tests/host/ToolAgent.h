// vkagentd as managers have it: readable by `public`, writable by `private`, and both by
// the user `manager` with SNMPv3, who signs and hides. Alarms see everything.
#pragma once

#include "RunningAgent.h"

#include "tests/support/Threads.h"

#include <sys/stat.h>

class ToolAgent {
public:
    explicit ToolAgent(const std::string& more = "")
        : m_file(kText + more), m_agent(m_directory.File("store.db"), Closed(m_file))
    {
    }

    bool IsReady() const { return m_agent.IsReady(); }
    const std::string& FirstLine() const { return m_agent.FirstLine(); }
    const std::string& Address() const { return m_agent.Address(); }
    unsigned Port() const { return m_agent.Port(); }
    int End() { return m_agent.Kill(SIGTERM); }

    Outcome Ask(const std::string& tool, const Arguments& rest, const Arguments& options = {}) const
    {
        return m_agent.Ask(tool, "2c", "public", rest, options);
    }
    Outcome AskV1(const std::string& tool, const Arguments& rest,
                  const Arguments& options = {}) const
    {
        return m_agent.Ask(tool, "1", "public", rest, options);
    }
    Outcome Set(const Arguments& what) const
    {
        return m_agent.Ask("snmpset", "2c", "private", what);
    }
    static Arguments Manager(const std::string& passphrase = "a word to sign with")
    {
        return {"-v3",
                "-l",
                "authPriv",
                "-u",
                "manager",
                "-a",
                "SHA-256",
                "-A",
                passphrase,
                "-x",
                "AES",
                "-X",
                "another word to hide"};
    }
    // In the name of a user of SNMPv3.
    Outcome AskV3(const std::string& tool, const Arguments& who, const Arguments& rest) const
    {
        Arguments line{tool};
        line.insert(line.end(), who.begin(), who.end());
        line.insert(line.end(), {"-On", Address()});
        line.insert(line.end(), rest.begin(), rest.end());
        return m_agent.Tools().Run(line);
    }
    const SnmpTools& Tools() const { return m_agent.Tools(); }

    std::string Value(const std::string& name) const
    {
        const std::string text = Ask("snmpget", {name}, {"-Oqvt"}).output;
        return text.substr(0, text.find('\n'));
    }
    unsigned long Number(const std::string& name) const
    {
        return std::strtoul(Value(name).c_str(), nullptr, 10);
    }
    // Which instances there are changes no more: loads are told after a second.
    bool IsComplete() const
    {
        return VLK::Eventually([this] {
            return Value(".1.3.6.1.2.1.25.3.3.1.2.1").find("No Such") == std::string::npos;
        });
    }

private:
    static constexpr const char* kText = R"(
agentAddress = "udp:127.0.0.1:0"
alarmCommunity = "public"

[[community]]
name = "public"
read = "everything"

[[community]]
name = "private"
read = "everything"
write = "everything"

[[user]]
name = "manager"
auth = "SHA-256"
authPassphrase = "a word to sign with"
priv = "AES"
privPassphrase = "another word to hide"
read = "everything"
write = "everything"
)";

    // Passphrases stand in it.
    static const ConfigFile& Closed(const ConfigFile& file)
    {
        chmod(file.Name().c_str(), 0600);
        return file;
    }

    TempDir m_directory;
    ConfigFile m_file;
    ConfiguredAgent m_agent;
};
