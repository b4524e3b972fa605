#include "modules/interfaces/LinkWatch.h"

#include "modules/interfaces/LinkMessage.h"
#include "modules/interfaces/LinkSocket.h"

#include <cerrno>
#include <libmnl/libmnl.h>
#include <linux/rtnetlink.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>

namespace VLK::modules {

namespace {

constexpr int kTryAgainAfter = 1000; // milliseconds

} // namespace

CLinkWatch::CLinkWatch(IInterfaces& source, CLinkHistory& history, CLinkTraps& traps,
                       FUptime upTime)
    : TThread(false), m_source(source), m_history(history), m_traps(traps),
      m_upTime(std::move(upTime))
{
}

CLinkWatch::~CLinkWatch()
{
    End();
    if (m_stop >= 0)
        close(m_stop);
}

void CLinkWatch::Begin()
{
    if (m_socket)
        return;
    if (m_stop < 0)
        m_stop = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (m_stop < 0)
        throw std::system_error(errno, std::generic_category(), "eventfd");
    // It listens before it asks, so that no change falls between.
    auto socket = std::make_unique<CLinkSocket>(RTMGRP_LINK, CLinkSocket::eReadingGoesOn);
    Compare();
    m_socket = std::move(socket);
    if (!Start(0, eThreadBlockSignals)) {
        m_socket.reset();
        throw std::system_error(EAGAIN, std::generic_category(), "thread");
    }
}

void CLinkWatch::End()
{
    if (!m_socket)
        return;
    eventfd_write(m_stop, 1);
    Stop(kWaitForever);
    eventfd_t ignored;
    eventfd_read(m_stop, &ignored);
    m_socket.reset();
}

int CLinkWatch::Run()
{
    while (WaitForMessages()) {
        try {
            TakeMessages();
        } catch (const std::exception&) {
            m_isBehind = true;
        }
        if (m_isBehind && !WaitToTryAgain())
            break;
    }
    return 0;
}

// False: it is time to end.
bool CLinkWatch::WaitForMessages() const
{
    pollfd waits[] = {{m_stop, POLLIN, 0}, {m_socket->Descriptor(), POLLIN, 0}};
    while (poll(waits, 2, m_isBehind ? 0 : -1) < 0 && errno == EINTR) {
    }
    return waits[0].revents == 0;
}

bool CLinkWatch::WaitToTryAgain() const
{
    pollfd wait{m_stop, POLLIN, 0};
    return poll(&wait, 1, kTryAgainAfter) <= 0;
}

void CLinkWatch::TakeMessages()
{
    bool isMore = true;
    while (isMore) {
        if (m_socket->Receive()) {
            m_socket->ForEach([this](const nlmsghdr& message) {
                TakeMessage(message);
                return true;
            });
        } else if (errno == ENOBUFS) {
            m_isBehind = true;
        } else if (errno == EAGAIN) {
            isMore = false;
        } else if (errno != EINTR) {
            throw std::system_error(errno, std::generic_category(), "rtnetlink");
        }
    }
    // After the messages that are left: they are older than what is asked for now.
    if (m_isBehind)
        Compare();
}

void CLinkWatch::TakeMessage(const nlmsghdr& message)
{
    if (const std::optional<SInterface> link = InterfaceIn(message))
        Raise(m_history.Changed(*link, m_upTime()));
    else if (const std::optional<unsigned> index = GoneIn(message))
        m_history.Gone(*index, m_upTime());
}

void CLinkWatch::Compare()
{
    const std::vector<SInterface> links = m_source.Read();
    m_isBehind = false;
    Raise(m_history.Compare(links, m_upTime()));
}

void CLinkWatch::Raise(const CLinkHistory::Transitions& transitions)
{
    for (const SLinkTransition& transition : transitions)
        m_traps.Raise(transition);
}

} // namespace VLK::modules
