// What has become of links since somebody watches them.
#pragma once

#include "modules/interfaces/Interface.h"

#include <map>
#include <vkmibh/sync.h>

namespace VLK::modules {

struct SSnapshot;

// A link that came down or up, as RFC 2863 section 3.1.15 has it. `other` is the state
// beside down: the one that it left, or entered.
struct SLinkTransition {
    enum EDirection { eLinkDown, eLinkUp };
    EDirection direction;
    unsigned index;
    std::string name;
    bool isOnTop; // of another interface
    EIfStatus admin;
    EIfStatus other;
};

// Remembers the state of each link, and when it came to it. Begins with the first
// call of Compare(); what there is then was always so.
//
// Ownership: none.
// Threads:   any; those that tell it of changes do so one after the other, in the
//            order of the changes.
// Errors:    throws std::bad_alloc, and has then not taken in the link at fault.
// Contract:  lowerLayerDown counts as down, and what comes or goes makes no
//            transition (RFC 2863 section 3.1.15). Times are uptimes.
class CLinkHistory {
public:
    using Transitions = std::vector<SLinkTransition>;

    // There is such a link now.
    Transitions Changed(const SInterface& link, std::uint64_t now);
    void Gone(unsigned index, std::uint64_t now);
    // There are exactly these, whatever was missed.
    Transitions Compare(const std::vector<SInterface>& links, std::uint64_t now);

    // Fills in the times. What the snapshot knows and the history does not yet has
    // happened now.
    void Stamp(SSnapshot& snapshot, std::uint64_t now) const;

private:
    struct SLink {
        SInterface last;
        std::uint64_t appeared;
        std::uint64_t lastChange;
    };

    void Take(const SInterface& link, std::uint64_t now, Transitions& transitions)
        VKMIBH_TSA(requires_capability(m_lock));
    void Drop(unsigned index, std::uint64_t now) VKMIBH_TSA(requires_capability(m_lock));
    bool IsOnTop(const SInterface& link) const VKMIBH_TSA(requires_capability(m_lock));

    mutable TMutex m_lock{true};
    bool m_hasBegun VKMIBH_TSA(guarded_by(m_lock)) = false;
    std::map<unsigned, SLink> m_links VKMIBH_TSA(guarded_by(m_lock));
    std::uint64_t m_tableLastChange VKMIBH_TSA(guarded_by(m_lock)) = 0;
};

} // namespace VLK::modules
