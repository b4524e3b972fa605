// The registration tree that an operator can look into.
#pragma once

#include "host/Mutex.h"
#include "host/verbs/WatchedHandler.h"

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>
#include <vkmibh/tree.h>

namespace VLK::host {

struct SRegion {
    BObjectIdentifier oid;
    std::string module;  // the name of what serves it
    unsigned depth = 0;  // in how many other regions it lies
    bool isSave = false; // no module's: it saves what SETs have changed
    SSlowness slowness;
};

// Every subtree handler that is registered is watched: a BWatchedHandler hangs in the
// tree for it. Whoever registers it takes it out again as ever.
//
//   BRegions regions;
//   BWatchingHandler handler(access, saves, regions);
//
// Ownership: outlives the request handler that works on it.
// Threads:   as BMibTree, and what is asked here on any besides.
// Errors:    without memory Register() is 0; the questions throw std::bad_alloc.
class BRegions : public BMibTree {
public:
    BRegions();
    ~BRegions() override;

    // At or below the identifier, in their order; an empty one is above all.
    std::vector<SRegion> Below(const BObjectIdentifier& oid) const;
    // The one whose module is asked for the identifier.
    std::optional<SRegion> Holding(const BObjectIdentifier& oid) const;

    int Register(BMibSubtreeHandler* handler) override;
    int Unregister(BMibSubtreeHandler* handler) override;
    int Unregister(BObjectIdentifier& oid) override;

private:
    BWatchedHandler* WatchedFor(BMibSubtreeHandler& handler)
        VKMIBH_TSA(requires_capability(m_lock));
    void Retire(BMibSubtreeHandler& handler) VKMIBH_TSA(requires_capability(m_lock));

    // Inside the registration lock of requests, and never held when a module is called.
    mutable BMutex m_lock;
    std::unordered_map<BMibSubtreeHandler*, std::unique_ptr<BWatchedHandler>>
        m_watched VKMIBH_TSA(guarded_by(m_lock));
    // Of ranges: some of their places stay in the tree.
    std::vector<std::unique_ptr<BWatchedHandler>> m_retired VKMIBH_TSA(guarded_by(m_lock));
};

} // namespace VLK::host
