// The last SET, kept for the operator.
#pragma once

#include "host/Mutex.h"
#include "host/Request.h"
#include "host/access/Vacm.h"
#include "host/verbs/SetTrace.h"

#include <chrono>
#include <optional>

namespace VLK::host {

struct SSetBinding {
    BVarBind binding;       // a value that is too long for its place is cut
    unsigned cutOctets = 0; // so many are left out
};

struct SLastSet {
    static constexpr unsigned kMostBindings = 20;
    static constexpr unsigned kMostOctets = 256; // of a value

    std::chrono::system_clock::time_point at;
    bool isConsole = false;
    EProtocol protocol = eSnmpV2c; // not the console's
    BTransportAddress remote;      // not the console's
    // The name is empty where it is the community, which may be a secret.
    BSecurityParams security;
    bool isNameSecret = false;
    BString context;

    unsigned count = 0; // of bindings
    unsigned kept = 0;  // of them, the first
    std::array<SSetBinding, kMostBindings> bindings;
    std::array<SSetPhase, ePhases> phases = {};
    ESave save = eSaveNotTried;
    int status = eSnmpNoError;
    int index = 0;
    // Why, when the access control refused it.
    EVacmAnswer refusal = eVacmAllowed;
};

// Its memory is its own from the start, but for names and values; where there is none
// for them they are empty, and the SET is none the worse.
//
// Threads: any.
class BLastSet {
public:
    // After the SET, with what it came to.
    void Keep(const BSetTrace& trace, std::chrono::system_clock::time_point at,
              const BSecurityParams& security, const BString& context, const BVarBindList& list,
              int status, int index, EVacmAnswer refusal);
    // Nothing before the first.
    std::optional<SLastSet> Get() const;

private:
    mutable BMutex m_lock;
    bool m_isThere VKMIBH_TSA(guarded_by(m_lock)) = false;
    SLastSet m_last VKMIBH_TSA(guarded_by(m_lock));
};

} // namespace VLK::host
