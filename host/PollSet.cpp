#include "host/PollSet.h"

#include "host/HostError.h"
#include "host/SystemError.h"

#include <algorithm>
#include <cerrno>
#include <sys/epoll.h>

namespace VLK::host {

namespace {

[[noreturn]] void CannotWait()
{
    throw BHostError(eExitUsage, "cannot wait: " + SystemError(errno));
}

} // namespace

bool BPollSet::CReady::Has(unsigned key) const { return std::find(begin(), end(), key) != end(); }

BPollSet::BPollSet() : m_set(epoll_create1(EPOLL_CLOEXEC))
{
    if (!m_set.IsOpen())
        CannotWait();
}

void BPollSet::Add(int descriptor, unsigned key)
{
    epoll_event event = {};
    event.events = EPOLLIN;
    event.data.u32 = key;
    if (epoll_ctl(m_set.Get(), EPOLL_CTL_ADD, descriptor, &event) != 0)
        CannotWait();
}

void BPollSet::Remove(int descriptor)
{
    epoll_event unused = {};
    epoll_ctl(m_set.Get(), EPOLL_CTL_DEL, descriptor, &unused);
}

BPollSet::CReady BPollSet::Wait(int milliseconds) const
{
    epoll_event events[CReady::kMost];
    const int count = epoll_wait(m_set.Get(), events, CReady::kMost, milliseconds);
    if (count < 0 && errno != EINTR)
        CannotWait();
    CReady ready;
    for (int i = 0; i < count; ++i)
        ready.m_keys[ready.m_count++] = events[i].data.u32;
    return ready;
}

} // namespace VLK::host
