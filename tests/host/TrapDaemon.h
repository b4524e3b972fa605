// The installed notification receiver, on a port of the loopback that was free.
#pragma once

#include "tests/support/Process.h"
#include "tests/support/TempDir.h"
#include "tests/support/Threads.h"

#include <arpa/inet.h>
#include <cstdio>
#include <memory>
#include <sstream>
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
        EXPECT_EQ(bind(m_socket, reinterpret_cast<sockaddr*>(&own), length), 0);
        EXPECT_EQ(getsockname(m_socket, reinterpret_cast<sockaddr*>(&own), &length), 0);
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

// Whether a process holds a socket that is bound to that port of the loopback. That
// somebody does is not enough: a port that was free may be anybody's a moment later.
inline bool Holds(pid_t pid, unsigned port)
{
    char local[32];
    std::snprintf(local, sizeof local, " %08X:%04X ", htonl(INADDR_LOOPBACK), port);
    std::istringstream sockets(ReadFile("/proc/net/udp"));
    std::string socket;
    for (std::string line; std::getline(sockets, line);) {
        if (line.find(local) == line.npos)
            continue;
        // slot, both addresses, state, queues, timer, retransmissions, user, timeout, inode
        std::istringstream fields(line);
        for (int field = 0; field < 10; ++field)
            fields >> socket;
        socket = "socket:[" + socket + "]";
    }
    if (socket.empty())
        return false;
    std::error_code error;
    const std::string files = "/proc/" + std::to_string(pid) + "/fd";
    for (const auto& file : std::filesystem::directory_iterator(files, error)) {
        if (std::filesystem::read_symlink(file.path(), error) == socket)
            return true;
    }
    return false;
}

// A child that is no longer there but for its exit status.
inline bool HasEnded(pid_t pid)
{
    const std::string status = ReadFile("/proc/" + std::to_string(pid) + "/stat");
    const size_t name = status.rfind(')');
    return name == status.npos || status.compare(name, 3, ") Z") == 0;
}

class TrapDaemon {
public:
    // With further lines of its configuration.
    explicit TrapDaemon(const std::string& more = "") : m_files(more)
    {
        // Another process may be faster to take a port that was free.
        for (int tries = 0; tries < 5 && !m_isReady; ++tries)
            Start();
    }

    bool IsReady() const { return m_isReady; }
    std::string Address() const { return "udp:127.0.0.1:" + std::to_string(m_port); }

    unsigned Port() const { return m_port; }

    // The next notification, "agent address|enterprise|generic|specific|time|kind and
    // community|bindings"; empty when none comes for ten seconds.
    std::string Next()
    {
        for (std::string line = m_process->Line(); !line.empty(); line = m_process->Line()) {
            if (line.find('|') != line.npos)
                return line;
        }
        return "";
    }
    // What has come when nothing more comes, once the daemon is told to end.
    Arguments Rest()
    {
        kill(m_process->Pid(), SIGTERM);
        Arguments lines;
        for (std::string line = Next(); !line.empty(); line = Next())
            lines.push_back(line);
        return lines;
    }

private:
    struct SFiles {
        explicit SFiles(const std::string& more)
        {
            std::filesystem::create_directory(directory.File("cert_indexes"));
            WriteFile(Configuration(), "authCommunity log traps\n"
                                       "format1 %a|%N|%w|%q|%T|%P|%v\\n\n"
                                       "format2 %a|%N|%w|%q|%T|%P|%v\\n\n" +
                                           more);
        }
        std::string Configuration() const { return directory.File("traps.conf"); }
        TempDir directory;
    };

    void Start()
    {
        m_port = BoundPort().Port();
        m_process = std::make_unique<Process>(
            Arguments{"env", "MIBS=", "SNMPCONFPATH=" + m_files.directory.Path(),
                      "SNMP_PERSISTENT_DIR=" + m_files.directory.Path(), "/usr/sbin/snmptrapd",
                      "-f", "-n", "-On", "-Lo", "-C", "-c", m_files.Configuration(), Address()});
        const pid_t pid = m_process->Pid();
        VLK::Eventually([&] {
            m_isReady = Holds(pid, m_port);
            return m_isReady || HasEnded(pid);
        });
    }

    unsigned m_port = 0;
    bool m_isReady = false;
    SFiles m_files;
    std::unique_ptr<Process> m_process;
};
