// What ends the agent, as a descriptor that becomes readable: SIGINT, SIGTERM,
// or a part of the agent itself.
#pragma once

#include "host/Descriptor.h"

#include <csignal>

namespace VLK::host {

// Blocks the signals for the calling thread, and so for those it starts;
// ignores SIGPIPE and SIGXFSZ.
//
// Threads: Descriptor() may be waited on by several threads, all of which see
//          the end; Request() may be called by any.
class BStopSignals {
public:
    // SIGHUP kills the agent, or, for one that an operator types to, ends it
    // like SIGTERM; unless it was started with SIGHUP ignored.
    enum EHangup { eHangupKills, eHangupEnds };

    // Throws BHostError.
    explicit BStopSignals(EHangup hangup = eHangupKills);
    BStopSignals(const BStopSignals&) = delete;
    BStopSignals& operator=(const BStopSignals&) = delete;

    int Descriptor() const { return m_either.Get(); }
    // Ends the agent as a signal does.
    void Request();

private:
    BDescriptor m_signals;
    BDescriptor m_request;
    BDescriptor m_either; // an epoll over both
};

} // namespace VLK::host
