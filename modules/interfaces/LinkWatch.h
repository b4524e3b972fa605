// The thread that listens to what the kernel tells of links.
#pragma once

#include "modules/interfaces/LinkTraps.h"

#include <memory>

struct nlmsghdr;

namespace VLK::modules {

class CLinkSocket;

// Tells the history of every change and raises the notifications of transitions.
// Sleeps until the kernel tells of something. When the kernel's messages came faster
// than they were taken, all links are asked for and compared.
//
// Ownership: of none of what it is given, which outlives it.
// Threads:   owns one; Begin() and End() belong to one thread. Notifications are
//            raised on its own thread.
// Errors:    Begin() throws std::system_error and std::bad_alloc. What goes wrong
//            later is tried again every second, by comparing.
class CLinkWatch : private TThread {
public:
    CLinkWatch(IInterfaces& source, CLinkHistory& history, CLinkTraps& traps, FUptime upTime);
    ~CLinkWatch() override;

    // Returns when the history has begun. Does nothing when it watches already. What
    // happened since an End() is found by comparing.
    void Begin();
    void End();

private:
    int Run() override;
    bool WaitForMessages() const;
    bool WaitToTryAgain() const;
    void TakeMessages();
    void TakeMessage(const nlmsghdr& message);
    void Compare();
    void Raise(const CLinkHistory::Transitions& transitions);

    IInterfaces& m_source;
    CLinkHistory& m_history;
    CLinkTraps& m_traps;
    const FUptime m_upTime;
    std::unique_ptr<CLinkSocket> m_socket; // null: nobody watches
    int m_stop = -1;                       // readable when the thread has to end
    bool m_isBehind = false;               // messages were lost
};

} // namespace VLK::modules
