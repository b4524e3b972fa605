// The installed notification receiver, on a port of the loopback that was free.
#pragma once

#include "tests/support/Process.h"
#include "tests/support/TempDir.h"
#include "tests/support/Threads.h"

#include <arpa/inet.h>
#include <cstdio>
#include <sys/socket.h>

// A port that was free, and is taken while it lives.
class BoundPort {
public:
    BoundPort() : m_socket(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in own = {};
        own.sin_family = AF_INET;
        own.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof own;
        bind(m_socket, reinterpret_cast<sockaddr*>(&own), length);
        getsockname(m_socket, reinterpret_cast<sockaddr*>(&own), &length);
        m_port = ntohs(own.sin_port);
    }
    ~BoundPort() { close(m_socket); }
    BoundPort(const BoundPort&) = delete;
    BoundPort& operator=(const BoundPort&) = delete;

    unsigned Port() const { return m_port; }

private:
    int m_socket;
    unsigned m_port = 0;
};

// Whether a process has bound that port of the loopback, as the kernel lists them:
// trying it would be in the way of who wants it.
inline bool IsTaken(unsigned port)
{
    char local[32];
    std::snprintf(local, sizeof local, " %08X:%04X ", htonl(INADDR_LOOPBACK), port);
    return ReadFile("/proc/net/udp").find(local) != std::string::npos;
}

class TrapDaemon {
public:
    TrapDaemon()
        : m_port(BoundPort().Port()), m_files(),
          m_process({"env", "MIBS=", "SNMPCONFPATH=" + m_files.directory.Path(),
                     "SNMP_PERSISTENT_DIR=" + m_files.directory.Path(), "/usr/sbin/snmptrapd", "-f",
                     "-n", "-On", "-Lo", "-C", "-c", m_files.Configuration(), Address()})
    {
    }

    bool IsReady() const
    {
        return VLK::Eventually([this] { return IsTaken(m_port); });
    }
    std::string Address() const { return "udp:127.0.0.1:" + std::to_string(m_port); }

    // The next notification, "agent address|enterprise|generic|specific|time|kind and
    // community|bindings"; empty when none comes for ten seconds.
    std::string Next()
    {
        for (std::string line = m_process.Line(); !line.empty(); line = m_process.Line()) {
            if (line.find('|') != line.npos)
                return line;
        }
        return "";
    }
    // What has come when nothing more comes, once the daemon is told to end.
    Arguments Rest()
    {
        kill(m_process.Pid(), SIGTERM);
        Arguments lines;
        for (std::string line = Next(); !line.empty(); line = Next())
            lines.push_back(line);
        return lines;
    }

private:
    struct SFiles {
        SFiles()
        {
            std::filesystem::create_directory(directory.File("cert_indexes"));
            WriteFile(Configuration(), "authCommunity log traps\n"
                                       "format1 %a|%N|%w|%q|%T|%P|%v\\n\n"
                                       "format2 %a|%N|%w|%q|%T|%P|%v\\n\n");
        }
        std::string Configuration() const { return directory.File("traps.conf"); }
        TempDir directory;
    };

    unsigned m_port;
    SFiles m_files;
    Process m_process;
};
