#include "host/StopSignals.h"

#include "host/HostError.h"
#include "host/SystemError.h"

#include <cerrno>
#include <sys/eventfd.h>
#include <sys/signalfd.h>

namespace VLK::host {

namespace {

bool IsIgnored(int signalNumber)
{
    struct sigaction action = {};
    return sigaction(signalNumber, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

int BlockAndOpen(const sigset_t& signals)
{
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
}

sigset_t Ending(BStopSignals::EHangup hangup)
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    if (hangup == BStopSignals::eHangupEnds && !IsIgnored(SIGHUP))
        sigaddset(&signals, SIGHUP);
    return signals;
}

sigset_t Read(BStopSignals::EHangup hangup)
{
    sigset_t signals;
    sigemptyset(&signals);
    if (hangup == BStopSignals::eHangupIsRead)
        sigaddset(&signals, SIGHUP);
    return signals;
}

} // namespace

BStopSignals::BStopSignals(EHangup hangup)
    : m_signals(BlockAndOpen(Ending(hangup))), m_hangups(BlockAndOpen(Read(hangup))),
      m_request(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (!m_signals.IsOpen() || !m_hangups.IsOpen() || !m_request.IsOpen())
        throw BHostError(eExitUsage, "no signals: " + SystemError(errno));
    // A write that cannot be done shall fail, not end the agent.
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
    m_either.Add(m_signals.Get(), 0);
    m_either.Add(m_request.Get(), 0);
}

void BStopSignals::Request() { eventfd_write(m_request.Get(), 1); }

} // namespace VLK::host
