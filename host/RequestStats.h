// What the agent has been asked, for the operator.
#pragma once

#include "host/Request.h"

#include <array>
#include <atomic>
#include <cstdint>

namespace VLK::host {

enum ERequestKind { eKindGet, eKindGetNext, eKindGetBulk, eKindSet, eKinds };

// Threads: any may count and read.
class BRequestStats {
public:
    static constexpr int kStatuses = 19; // of RFC 3416 section 3
    static constexpr int kVersions = 3;  // SNMPv1, SNMPv2c, SNMPv3

    void CountRequest(int pduType, EProtocol protocol);
    // Of a response; noError is not counted.
    void CountStatus(int status)
    {
        if (status > 0 && status < kStatuses)
            Count(m_statuses[static_cast<size_t>(status)]);
    }
    // From nobody, or from where nobody is answered.
    void CountUnanswered() { Count(m_unanswered); }

    uint64_t Requests(ERequestKind kind, int version) const
    {
        return m_requests[static_cast<size_t>(kind)][static_cast<size_t>(version)];
    }
    uint64_t Statuses(int status) const { return m_statuses[static_cast<size_t>(status)]; }
    uint64_t Unanswered() const { return m_unanswered; }

private:
    using CCounter = std::atomic<uint64_t>;
    static void Count(CCounter& counter) { counter.fetch_add(1, std::memory_order_relaxed); }

    std::array<std::array<CCounter, kVersions>, eKinds> m_requests{};
    std::array<CCounter, kStatuses> m_statuses{};
    CCounter m_unanswered{0};
};

} // namespace VLK::host
