#include "host/Syslog.h"

#include "host/Descriptor.h"

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>

namespace VLK::host {

namespace {

// Whether the service would take a line now. Asked by a socket for this one question:
// that of syslog(3) is its own, and a service that was started again has another one.
ESyslog Ask(int patience)
{
    const BDescriptor asking(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    sockaddr_un service = {};
    service.sun_family = AF_UNIX;
    std::strcpy(service.sun_path, _PATH_LOG);
    if (!asking.IsOpen() ||
        connect(asking.Get(), reinterpret_cast<const sockaddr*>(&service), sizeof service) != 0)
        return eSyslogAbsent;
    pollfd wait{asking.Get(), POLLOUT, 0};
    int count = 0;
    do
        count = poll(&wait, 1, patience);
    while (count < 0 && errno == EINTR);
    return count > 0 ? eSyslogDone : eSyslogFull;
}

} // namespace

ESyslog WriteToSyslog(int priority, const std::string& line, int patience)
{
    const ESyslog answer = Ask(patience);
    if (answer != eSyslogDone)
        return answer;
    openlog(program_invocation_short_name, LOG_PID, LOG_DAEMON); // says only what follows
    syslog(LOG_DAEMON | priority, "%s", line.c_str());
    return eSyslogDone;
}

} // namespace VLK::host
