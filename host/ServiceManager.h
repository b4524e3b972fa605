// The service manager that started the agent, where there is one: it is told by a
// datagram how far the agent is (sd_notify(3)).
#pragma once

#include "host/Descriptor.h"

#include <string>

namespace VLK::host {

// Takes NOTIFY_SOCKET, a path or, behind '@', an abstract name, out of the environment.
// Where there is none, or nobody listens, nothing is told.
//
// Threads: constructed while there is one; after that any.
// Errors:  none: the agent serves all the same.
class BServiceManager {
public:
    BServiceManager();

    // `status` is a line for people.
    void TellReady(const std::string& status) const;
    // The configuration is read again; TellReady() ends it.
    void TellReloading() const;
    void TellStopping() const;

private:
    void Tell(const std::string& what) const;

    std::string m_address; // a sockaddr_un; empty: nobody
    BDescriptor m_socket;
};

} // namespace VLK::host
