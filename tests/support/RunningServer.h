// An agent that runs beside the test, on a port the system chose.
#pragma once

#include "tests/support/SnmpTools.h"

// It says so in a line that ends with "ready on " and its address.
class RunningServer {
public:
    explicit RunningServer(const Arguments& line) : m_process(line)
    {
        const std::string ready = "ready on ";
        for (std::string text = m_process.Line(); !text.empty(); text = m_process.Line()) {
            m_firstLine = text;
            const size_t at = text.find(ready);
            if (at != text.npos) {
                m_address = text.substr(at + ready.size());
                return;
            }
            m_earlier += text + "\n";
        }
    }

    bool IsReady() const { return !m_address.empty(); }
    // The line that says that it is ready, or else the last one.
    const std::string& FirstLine() const { return m_firstLine; }
    // The lines before it was ready.
    const std::string& Earlier() const { return m_earlier; }
    const std::string& Address() const { return m_address; }
    unsigned Port() const
    {
        return static_cast<unsigned>(std::stoul(m_address.substr(m_address.rfind(':') + 1)));
    }
    pid_t Pid() const { return m_process.Pid(); }
    int Kill(int signalNumber) { return m_process.Kill(signalNumber); }
    int Wait() { return m_process.Wait(); }
    std::string Rest() { return m_process.Rest(); }

    Outcome Ask(const std::string& tool, const std::string& version, const std::string& community,
                const Arguments& rest, const Arguments& options = {}) const
    {
        return m_tools.Ask(m_address, tool, version, community, rest, options);
    }
    const SnmpTools& Tools() const { return m_tools; }

private:
    SnmpTools m_tools;
    Process m_process;
    std::string m_firstLine;
    std::string m_earlier;
    std::string m_address;
};
