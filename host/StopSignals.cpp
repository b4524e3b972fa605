#include "host/StopSignals.h"

#include "host/HostError.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <sys/signalfd.h>
#include <unistd.h>

namespace VLK::host {

BStopSignals::BStopSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    // A write that cannot be done shall fail, not end the agent.
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
    m_descriptor = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
    if (m_descriptor < 0)
        throw BHostError(eExitUsage, std::string("no signals: ") + std::strerror(errno));
}

BStopSignals::~BStopSignals() { close(m_descriptor); }

} // namespace VLK::host
