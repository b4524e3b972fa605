// vkagentd on a terminal.
#pragma once

#include "RunningAgent.h"
#include "TerminalSession.h"

#include "tests/support/SnmpTools.h"

inline const std::string kPrompt = "vk> ";
// The editor draws the prompt again as it likes; this one follows an answer.
inline const std::string kNewPrompt = "\r\n" + kPrompt;

constexpr char Ctrl(char letter) { return static_cast<char>(letter & 0x1f); }

class ConsoleTerminal : public testing::Test {
protected:
    // The environment of an operator who said nothing about languages.
    Arguments Command(const Arguments& options = {}, const std::string& terminal = "xterm") const
    {
        Arguments line{"env",
                       "-u",
                       "LANG",
                       "-u",
                       "LC_ALL",
                       "-u",
                       "LC_CTYPE",
                       "TERM=" + terminal,
                       "XDG_STATE_HOME=" + directory.Path()};
        const Arguments agent{VKAGENTD,    "--store",         store,
                              "--listen",  "udp:127.0.0.1:0", "--community",
                              "public:ro", "--community",     "private:rw"};
        line.insert(line.end(), agent.begin(), agent.end());
        line.insert(line.end(), options.begin(), options.end());
        return line;
    }

    // A shell's script about the command, which is "$@" to it.
    Arguments ByShell(const std::string& script) const
    {
        Arguments line{"sh", "-c", script, "sh"};
        for (const std::string& word : Command())
            line.push_back(word);
        return line;
    }

    // Reads the line that says where, and up to the prompt.
    std::string Start(TerminalSession& session) const
    {
        std::string address = ReadyOn(session);
        session.Until(kNewPrompt);
        return address;
    }
    static std::string ReadyOn(TerminalSession& session)
    {
        EXPECT_TRUE(session.Shows("vkagentd: ready on "));
        std::string line = session.Until("\r\n");
        return line.substr(0, line.size() - 2);
    }

    Outcome Ask(const std::string& address, const std::string& tool, const std::string& community,
                const Arguments& rest) const
    {
        return tools.Ask(address, tool, "2c", community, rest);
    }

    TempDir directory;
    std::string store = directory.File("store.db");
    std::string history = directory.File("vkagentd/history");
    SnmpTools tools;
};
