#include "host/Hangups.h"

#include "host/HostError.h"
#include "host/SystemError.h"

#include <cerrno>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <utility>

namespace VLK::host {

BHangups::BHangups(int hangups, std::function<void()> work)
    : m_hangups(hangups), m_work(std::move(work)), m_end(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (!m_end.IsOpen())
        throw BHostError(eExitUsage, "no signals: " + SystemError(errno));
    m_thread = std::thread([this] { Run(); });
}

BHangups::~BHangups()
{
    eventfd_write(m_end.Get(), 1);
    m_thread.join();
}

void BHangups::Run()
{
    for (;;) {
        pollfd waits[] = {{m_end.Get(), POLLIN, 0}, {m_hangups, POLLIN, 0}};
        if (poll(waits, 2, -1) < 0 && errno != EINTR)
            return;
        if (waits[0].revents)
            return;
        signalfd_siginfo info;
        if (waits[1].revents && read(m_hangups, &info, sizeof info) == sizeof info)
            m_work();
    }
}

} // namespace VLK::host
