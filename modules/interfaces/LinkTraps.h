// linkUp and linkDown (RFC 2863 section 6), and which links may raise them.
#pragma once

#include "modules/interfaces/LinkHistory.h"

#include <vkmibh/agents.h>
#include <vkmibh/nonvolatile.h>

namespace VLK::modules {

// ifLinkUpDownTrapEnable.
enum ELinkTraps : int { eLinkTrapsEnabled = 1, eLinkTrapsDisabled = 2 };

// What managers have said of links, by their names: indexes are given anew at every
// start of the host, and to what is plugged in again. What they have said nothing of
// is enabled unless it operates on top of another (RFC 2863 section 6).
//
// Ownership: not of the store, which outlives it; null, and nothing is kept.
// Threads:   any. The store is called without a lock held.
// Errors:    throws std::bad_alloc and changes nothing. What the store cannot
//            tell is left out, and what it throws goes through.
class CLinkTrapEnables : private INVCallback {
public:
    explicit CLinkTrapEnables(INonVolatile* store);

    ELinkTraps Of(const std::string& name, bool isOnTop) const;
    // What managers have said.
    std::optional<ELinkTraps> Said(const std::string& name) const;
    // None takes back what was said.
    void Say(const std::string& name, std::optional<ELinkTraps> value);

private:
    using Values = std::map<std::string, ELinkTraps>;
    void Load();
    void LoadAt(int position);
    int Update() override;

    INonVolatile* m_store;
    mutable TMutex m_lock{true};
    Values m_values VKMIBH_TSA(guarded_by(m_lock));
};

// Raises the notifications of transitions, through all agents.
//
// Ownership: of neither sender nor settings, which outlive it.
// Threads:   any that the sender allows.
// Errors:    a notification for which there is no memory is not sent.
class CLinkTraps {
public:
    CLinkTraps(ITrapSender& sender, const CLinkTrapEnables& enables)
        : m_sender(sender), m_enables(enables)
    {
    }
    void Raise(const SLinkTransition& transition);

private:
    ITrapSender& m_sender;
    const CLinkTrapEnables& m_enables;
};

} // namespace VLK::modules
