// vkagentd on a port the system chose.
#pragma once

#include "SnmpTools.h"

#include <gtest/gtest.h>

class RunningAgent {
public:
    // Readable by `public`, writable by `private`.
    explicit RunningAgent(const std::string& store, const std::string& listen = "udp:127.0.0.1:0")
        : m_process({VKAGENTD, "--store", store, "--listen", listen, "--community", "public:ro",
                     "--community", "private:rw"})
    {
        const std::string prefix = "vkagentd: ready on ";
        m_firstLine = m_process.Line();
        if (m_firstLine.compare(0, prefix.size(), prefix) == 0)
            m_address = m_firstLine.substr(prefix.size());
    }

    bool IsReady() const { return !m_address.empty(); }
    const std::string& FirstLine() const { return m_firstLine; }
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

private:
    SnmpTools m_tools;
    Process m_process;
    std::string m_firstLine;
    std::string m_address;
};

namespace oid {
inline const std::string kSystem = ".1.3.6.1.2.1.1";
inline const std::string kSysDescr = ".1.3.6.1.2.1.1.1.0";
inline const std::string kSysContact = ".1.3.6.1.2.1.1.4.0";
inline const std::string kSysName = ".1.3.6.1.2.1.1.5.0";
inline const std::string kSysLocation = ".1.3.6.1.2.1.1.6.0";
} // namespace oid
