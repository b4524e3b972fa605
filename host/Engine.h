// The narrow seam between a protocol engine and what answers requests.
#pragma once

#include "host/Request.h"

namespace VLK::host {

// Called by the engine for every well-formed get, get-next, get-bulk and set.
class IRequestHandler {
public:
    virtual ~IRequestHandler() = default;
    // False: the request gets no answer.
    virtual bool Handle(SRequest& request, SResponse& response) = 0;
    // Makes the answer that says `status` in place of one that cannot be sent.
    virtual void AnswerInstead(int status, const SRequest& request, SResponse& response) = 0;
};

class IEngine {
public:
    virtual ~IEngine() = default;
    // Starts listening; returns the address as it is, also for port 0. Throws
    // BHostError when it is not to be had.
    virtual BTransportAddress Open(const BTransportAddress& address) = 0;
    // Serves until `stopDescriptor` becomes readable.
    virtual void Serve(int stopDescriptor) = 0;
};

} // namespace VLK::host
