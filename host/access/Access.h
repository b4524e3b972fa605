// An agent's access control: the configuration put to work.
#pragma once

#include "host/LimitedLog.h"
#include "host/access/Views.h"

namespace VLK::host {

// What the store keeps of the views is loaded and saved by the table itself.
//
// Ownership: the store, which may be null, outlives it.
// Threads:   as its parts: any.
// Errors:    the constructor throws BHostError.
class BAccess {
public:
    BAccess(const SConfiguration& configuration, BStore* store);

    const BCommunities& Communities() const { return m_communities; }
    BFilterTable& Views() { return m_views; }
    BVacm& Vacm() { return m_vacm; }
    // Of requests that get no answer.
    BLimitedLog& Unanswered() { return m_unanswered; }
    // Of requests, or bindings of theirs, that are refused.
    BLimitedLog& Refused() { return m_refused; }

private:
    BCommunities m_communities;
    BFilterTable m_views;
    BVacm m_vacm;
    BLimitedLog m_unanswered;
    BLimitedLog m_refused;
};

} // namespace VLK::host
