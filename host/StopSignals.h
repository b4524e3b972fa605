// What ends the agent, as a descriptor that becomes readable: SIGINT, SIGTERM,
// or a part of the agent itself. And SIGHUP, which ends some and not others.
#pragma once

#include "host/Descriptor.h"
#include "host/PollSet.h"

#include <csignal>

namespace VLK::host {

// Blocks the signals for the calling thread, and so for those it starts;
// ignores SIGPIPE and SIGXFSZ.
//
// Threads: Descriptor() may be waited on by several threads, all of which see
//          the end; Request() may be called by any.
class BStopSignals {
public:
    // SIGHUP is to be read from Hangups(), whether or not it was ignored at the start; or,
    // for an agent that an operator types to, it ends it like SIGTERM, unless it was
    // ignored.
    enum EHangup { eHangupIsRead, eHangupEnds };

    // Throws BHostError.
    explicit BStopSignals(EHangup hangup = eHangupIsRead);
    BStopSignals(const BStopSignals&) = delete;
    BStopSignals& operator=(const BStopSignals&) = delete;

    int Descriptor() const { return m_either.Descriptor(); }
    // A signalfd that becomes readable with SIGHUP; never for one that it ends.
    int Hangups() const { return m_hangups.Get(); }
    // Ends the agent as a signal does.
    void Request();

private:
    BDescriptor m_signals;
    BDescriptor m_hangups;
    BDescriptor m_request;
    BPollSet m_either; // signals and request
};

} // namespace VLK::host
