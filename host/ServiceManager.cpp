#include "host/ServiceManager.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <sys/socket.h>
#include <sys/un.h>

namespace VLK::host {

namespace {

constexpr const char* kVariable = "NOTIFY_SOCKET";

// The address of that name; empty for none that can be.
std::string AddressOf(const std::string& name)
{
    sockaddr_un address = {};
    if (name.size() < 2 || name.size() > sizeof address.sun_path ||
        (name[0] != '/' && name[0] != '@'))
        return "";
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, name.data(), name.size());
    if (name[0] == '@')
        address.sun_path[0] = '\0';
    return std::string(reinterpret_cast<const char*>(&address),
                       offsetof(sockaddr_un, sun_path) + name.size());
}

std::string TakeName()
{
    const char* const value = std::getenv(kVariable);
    std::string name = value ? value : "";
    // It is not for children. The agent has one thread yet.
    unsetenv(kVariable); // NOLINT(concurrency-mt-unsafe)
    return name;
}

std::string MonotonicMicroseconds()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::to_string(now.tv_sec * 1000000ll + now.tv_nsec / 1000);
}

} // namespace

BServiceManager::BServiceManager()
    : m_address(AddressOf(TakeName())),
      m_socket(m_address.empty() ? -1 : socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0))
{
}

void BServiceManager::Tell(const std::string& what) const
{
    if (m_socket.IsOpen())
        (void)sendto(m_socket.Get(), what.data(), what.size(), MSG_NOSIGNAL | MSG_DONTWAIT,
                     reinterpret_cast<const sockaddr*>(m_address.data()),
                     static_cast<socklen_t>(m_address.size()));
}

void BServiceManager::TellReady(const std::string& status) const
{
    Tell("READY=1\nSTATUS=" + status);
}

void BServiceManager::TellReloading() const
{
    Tell("RELOADING=1\nMONOTONIC_USEC=" + MonotonicMicroseconds() +
         "\nSTATUS=Reading the configuration");
}

void BServiceManager::TellStopping() const { Tell("STOPPING=1\nSTATUS=Stopping"); }

} // namespace VLK::host
