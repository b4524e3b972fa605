// The agent of the distribution, where it is installed: without privileges, on a free
// port of the loopback, with all its files in a directory of its own.
#pragma once

#include "TrapDaemon.h"

#include <memory>
#include <sys/stat.h>

class SnmpDaemon {
public:
    static constexpr const char* kProgram = "/usr/sbin/snmpd";
    static bool IsInstalled() { return access(kProgram, X_OK) == 0; }

    SnmpDaemon()
    {
        std::filesystem::create_directory(m_directory.File("cert_indexes"));
        // Another process may be faster to take a port that was free.
        for (int tries = 0; tries < 5 && !m_isReady; ++tries)
            Start();
    }

    bool IsReady() const { return m_isReady; }
    std::string Address() const { return "udp:127.0.0.1:" + std::to_string(m_port); }
    std::string Log() const { return ReadFile(LogFile()); }

private:
    static constexpr unsigned kNobody = 65534;

    std::string LogFile() const { return m_directory.File("log"); }

    void Start()
    {
        m_port = BoundPort().Port();
        const std::string file = m_directory.File("agent.conf");
        WriteFile(file, "agentAddress " + Address() + "\nrocommunity public 127.0.0.1\n");
        WriteFile(LogFile(), "");
        Arguments line{"env", "MIBS=", "SNMPCONFPATH=" + m_directory.Path(),
                       "SNMP_PERSISTENT_DIR=" + m_directory.Path()};
        if (geteuid() == 0) {
            for (const std::string& name :
                 {m_directory.Path(), m_directory.File("cert_indexes"), file, LogFile()})
                EXPECT_EQ(chown(name.c_str(), kNobody, kNobody), 0) << name;
            line.insert(line.end(),
                        {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"});
        }
        line.insert(line.end(),
                    {kProgram, "-f", "-Lf", LogFile(), "-I", "-smux", "-C", "-c", file});
        m_process = std::make_unique<Process>(line);
        VLK::Eventually([this] {
            m_isReady = Log().find("NET-SNMP version") != std::string::npos;
            return m_isReady || Log().find("Error opening") != std::string::npos;
        });
    }

    TempDir m_directory;
    unsigned m_port = 0;
    bool m_isReady = false;
    std::unique_ptr<Process> m_process;
};
