// The narrow seam between a protocol engine and what answers requests.
#pragma once

#include "host/Notification.h"

namespace VLK::host {

// Called by the engine for every well-formed get, get-next, get-bulk and set.
//
// Threads: several of the engine's at once.
class IRequestHandler {
public:
    virtual ~IRequestHandler() = default;
    // False: the request gets no answer.
    virtual bool Handle(SRequest& request, SResponse& response) = 0;
    // Makes the answer that says `status` in place of one that cannot be sent.
    virtual void AnswerInstead(int status, const SRequest& request, SResponse& response) = 0;
};

// What happens at one listening address.
//
// Threads: the engine counts; any may read, suspend and resume.
struct STraffic {
    // Messages are taken away and get no answer.
    std::atomic<bool> isSuspended{false};
    std::atomic<unsigned> received{0};
    std::atomic<unsigned> answered{0};
    std::atomic<unsigned> dropped{0};  // while it was suspended
    std::atomic<unsigned> overload{0}; // dropped for want of a thread
};

// What an engine is at, at one moment.
struct SEngineLoad {
    unsigned workers = 0; // requests that may be at work at once
    unsigned late = 0;    // of them, those that keep a thread while another serves
    bool isSetAtWork = false;
    unsigned waitingSets = 0; // for the one at work
    unsigned mostWaitingSets = 0;
};

class IEngine : public INotifier {
public:
    // Starts listening; returns the address as it is, also for port 0. Throws
    // BHostError when it is not to be had. The traffic outlives the engine.
    virtual BTransportAddress Open(const BTransportAddress& address, STraffic& traffic) = 0;
    // Serves until `stopDescriptor` becomes readable.
    virtual void Serve(int stopDescriptor) = 0;
};

} // namespace VLK::host
