// What other threads get of a TSWMRSynch, and what it knows of them.
#pragma once

#include "tests/support/BreaksLockRules.h"
#include "tests/support/Threads.h"

#include "foundation/PthreadLock.h"
#include "foundation/SwmrState.h"

#include <functional>
#include <vkmibh/sync.h>

namespace VLK {
namespace {

// Runs on another thread and gives back what it said.
inline int Elsewhere(const std::function<int()>& ask)
{
    int result = -1;
    std::thread([&] { result = ask(); }).join();
    return result;
}

inline int TryRead(TSWMRSynch& lock)
{
    return Elsewhere([&] {
        const int result = lock.WaitToRead(0);
        if (result == eWaitDone)
            lock.DoneReading();
        return result;
    });
}

inline int TryWrite(TSWMRSynch& lock)
{
    return Elsewhere([&] {
        const int result = lock.WaitToWrite(0);
        if (result == eWaitDone)
            lock.DoneWriting();
        return result;
    });
}

// Who waits is seen in the lock's own state only. An explicit instantiation may name what
// is private.
auto* StateOf(const TSWMRSynch& lock);

template <auto State>
struct StateIsSeen {
    friend auto* StateOf(const TSWMRSynch& lock) { return lock.*State; }
};
template struct StateIsSeen<&TSWMRSynch::m_state>;

// Until so many stand in the lock's queues.
inline bool WaitUntilTheyWait(TSWMRSynch& lock, unsigned readers, unsigned writers)
{
    return Eventually([&, state = StateOf(lock)] {
        const PthreadLock inside(state->mutex);
        return state->waitingReaders.count == readers && state->waitingWriters.count == writers;
    });
}

// Whether a reader needs the lock's mutex no longer.
inline bool IsGateOpen(TSWMRSynch& lock)
{
    SwmrGate& gate = StateOf(lock)->gate;
    return Elsewhere([&] { return gate.Pass() && gate.Leave() == SwmrGate::eLeft; }) != 0;
}

} // namespace
} // namespace VLK
