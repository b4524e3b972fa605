#include "host/wire/NetSnmpReceivers.h"

#include "host/HostError.h"
#include "host/wire/Convert.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/eventfd.h>
#include <vkmibh/subtree.h>

namespace VLK::host {

namespace {

using CClock = std::chrono::steady_clock;

constexpr size_t kWake = 0;  // of the waits
constexpr size_t kFirst = 1; // of the links'

// The address that datagrams to the receiver leave from now, as SNMPv1 tells it:
// 0.0.0.0 when it is none of IPv4 (RFC 3584 section 3.2).
void FindOwnAddress(const BTransportAddress& receiver, unsigned char (&own)[4])
{
    std::memset(own, 0, sizeof own);
    BDescriptor probe(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const unsigned char* to = receiver.V4Bytes();
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(receiver.Port()));
    if (!to || !probe.IsOpen())
        return;
    std::memcpy(&address.sin_addr, to, sizeof own);
    socklen_t length = sizeof address;
    // Sends nothing.
    if (connect(probe.Get(), reinterpret_cast<sockaddr*>(&address), length) == 0 &&
        getsockname(probe.Get(), reinterpret_cast<sockaddr*>(&address), &length) == 0)
        std::memcpy(own, &address.sin_addr, sizeof own);
}

[[noreturn]] void CannotSend(const BTransportAddress& address, int systemError)
{
    std::string what = "cannot send to " + address.ToString();
    throw BHostError(eExitUsage, systemError ? what + ": " + std::strerror(systemError) : what);
}

bool WasTooLong(session_list* session)
{
    int systemError = 0;
    int snmpError = 0;
    char* text = nullptr;
    snmp_sess_error(session, &systemError, &snmpError, &text);
    free(text);
    return snmpError == SNMPERR_TOO_LONG || systemError == EMSGSIZE;
}

bool IsSame(const BTransportAddress& a, const BTransportAddress& b)
{
    return a.IsV6() == b.IsV6() && a.Port() == b.Port() &&
           std::memcmp(a.Bytes(), b.Bytes(), a.IsV6() ? 16 : 4) == 0;
}

} // namespace

// An inform that is not acknowledged.
struct BNetSnmpReceivers::SPending {
    enum EState { eWaiting, eNotSent, eAcknowledged, eRefused, eTimedOut };

    SLink* link = nullptr;
    SNotification notification;
    long requestId = 0;
    unsigned tries = 0;
    bool wasSent = false;
    CClock::time_point deadline;
    EState state = eWaiting;

    // Returns whether the wire library shall forget the request.
    static int OnAnswer(int operation, netsnmp_session* session, int requestId, netsnmp_pdu* pdu,
                        void* self);
};

// A receiver and the session with it.
struct BNetSnmpReceivers::SLink {
    SReceiver receiver;
    SDelivery* delivery = nullptr;
    session_list* session = nullptr;
    int descriptor = -1;
    std::list<SPending> pending;

    static int OnMessage(int, netsnmp_session*, int, netsnmp_pdu*, void*) { return 1; }
};

// A request id can be guessed: only the receiver's own answer counts.
int BNetSnmpReceivers::SPending::OnAnswer(int operation, netsnmp_session*, int, netsnmp_pdu* pdu,
                                          void* self)
{
    auto* pending = static_cast<SPending*>(self);
    if (operation == NETSNMP_CALLBACK_OP_TIMED_OUT) {
        pending->state = eTimedOut;
    } else if (operation == NETSNMP_CALLBACK_OP_RECEIVED_MESSAGE) {
        BTransportAddress from;
        if (!pdu || pdu->command != SNMP_MSG_RESPONSE || !ReadRemote(*pdu, from) ||
            !IsSame(from, pending->link->receiver.address))
            return 0;
        pending->state = pdu->errstat == SNMP_ERR_NOERROR ? eAcknowledged : eRefused;
    }
    return 1;
}

BNetSnmpReceivers::BNetSnmpReceivers(BMessageReader& reader)
    : m_reader(reader), m_wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (!m_wake.IsOpen())
        throw BHostError(eExitUsage, std::string("no event: ") + std::strerror(errno));
}

BNetSnmpReceivers::~BNetSnmpReceivers() { Close(); }

void BNetSnmpReceivers::Close()
{
    for (const std::unique_ptr<SLink>& link : m_links)
        snmp_sess_close(link->session);
    m_links.clear();
}

unsigned BNetSnmpReceivers::Add(const SReceiver& receiver, SDelivery& delivery)
{
    auto link = std::make_unique<SLink>();
    link->receiver = receiver;
    link->delivery = &delivery;
    netsnmp_session settings;
    snmp_sess_init(&settings); // the wire library knows no transport before its first session
    errno = 0;
    netsnmp_transport* transport =
        netsnmp_transport_open_client("snmptrap", receiver.address.ToString().c_str());
    if (!transport)
        CannotSend(receiver.address, errno);
    fcntl(transport->sock, F_SETFL, fcntl(transport->sock, F_GETFL) | O_NONBLOCK);
    link->descriptor = transport->sock;

    settings.version = receiver.protocol == eSnmpV1 ? SNMP_VERSION_1 : SNMP_VERSION_2c;
    std::string community = receiver.community;
    settings.community = reinterpret_cast<unsigned char*>(community.data());
    settings.community_len = community.size();
    settings.retries = 0; // they are counted here
    settings.timeout = std::chrono::microseconds(receiver.timeout).count();
    settings.callback = SLink::OnMessage;
    // Takes the transport over, also when it fails.
    link->session =
        static_cast<session_list*>(snmp_sess_add(&settings, transport, nullptr, nullptr));
    if (!link->session)
        CannotSend(receiver.address, 0);
    m_links.push_back(std::move(link));
    return static_cast<unsigned>(m_links.size() - 1);
}

void BNetSnmpReceivers::Notify(unsigned receiver, SNotification&& notification)
{
    {
        std::lock_guard<std::mutex> lock(m_lock);
        if (m_queue.size() >= kMostQueued) {
            ++m_links[receiver]->delivery->overflowed;
            return;
        }
        m_queue.push_back({receiver, std::move(notification)});
    }
    eventfd_write(m_wake.Get(), 1);
}

void BNetSnmpReceivers::AddWaits(std::vector<pollfd>& waits) const
{
    waits.push_back({m_wake.Get(), POLLIN, 0});
    for (const std::unique_ptr<SLink>& link : m_links)
        waits.push_back({link->descriptor, POLLIN, 0});
}

int BNetSnmpReceivers::Patience() const
{
    auto next = CClock::time_point::max();
    for (const std::unique_ptr<SLink>& link : m_links) {
        for (const SPending& pending : link->pending)
            next = std::min(next, pending.deadline);
    }
    if (next == CClock::time_point::max())
        return -1;
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(next - CClock::now());
    // The wire library has a clock of its own, which may be a little late.
    return static_cast<int>(std::max<std::chrono::milliseconds::rep>(left.count(), 0) + 1);
}

void BNetSnmpReceivers::Serve(const pollfd* waits)
{
    for (size_t i = 0; i < m_links.size(); ++i) {
        SLink& link = *m_links[i];
        if (waits[kFirst + i].revents && m_reader.Peek(link.descriptor))
            m_reader.PassOn(link.descriptor, link.session);
        if (!link.pending.empty()) {
            snmp_sess_timeout(link.session);
            Sweep(link);
        }
    }
    if (waits[kWake].revents)
        SendQueued();
}

void BNetSnmpReceivers::SendQueued()
{
    eventfd_t count;
    eventfd_read(m_wake.Get(), &count);
    std::deque<SQueued> queue;
    {
        std::lock_guard<std::mutex> lock(m_lock);
        queue.swap(m_queue);
    }
    for (SQueued& queued : queue) {
        SLink& link = *m_links[queued.receiver];
        if (!link.delivery->isSuspended)
            Send(link, std::move(queued.notification));
    }
}

void BNetSnmpReceivers::Send(SLink& link, SNotification&& notification)
{
    SDelivery& delivery = *link.delivery;
    if (link.receiver.isInform) {
        if (link.pending.size() >= kMostPending) {
            ++delivery.overflowed;
            return;
        }
        SPending& pending = link.pending.emplace_back();
        pending.link = &link;
        pending.notification = std::move(notification);
        if (!SendInform(pending)) {
            ++delivery.failed;
            link.pending.pop_back();
        }
        return;
    }
    unsigned char own[4] = {};
    if (link.receiver.protocol == eSnmpV1)
        FindOwnAddress(link.receiver.address, own);
    netsnmp_pdu* pdu = MakeNotification(notification, link.receiver, own);
    bool isSent = pdu && snmp_sess_send(link.session, pdu);
    ++(isSent ? delivery.sent : delivery.failed);
    if (pdu && !isSent)
        snmp_free_pdu(pdu);
}

// With the request id of the first time, so that the receiver can know it again.
// False when no try can do better: the network may be there the next time, but a
// message does not get shorter.
bool BNetSnmpReceivers::SendInform(SPending& pending)
{
    const SReceiver& receiver = pending.link->receiver;
    SDelivery& delivery = *pending.link->delivery;
    netsnmp_pdu* pdu = MakeNotification(pending.notification, receiver, {});
    if (!pdu)
        return false;
    if (pending.tries > 0)
        pdu->reqid = pending.requestId;
    pending.requestId = pdu->reqid;
    pending.state = SPending::eWaiting;
    pending.deadline = CClock::now() + receiver.timeout;
    ++pending.tries;
    if (snmp_sess_async_send(pending.link->session, pdu, SPending::OnAnswer, &pending)) {
        ++(pending.wasSent ? delivery.retried : delivery.sent);
        pending.wasSent = true;
        return true;
    }
    pending.state = SPending::eNotSent;
    bool isTooLong = WasTooLong(pending.link->session);
    snmp_free_pdu(pdu);
    return !isTooLong;
}

void BNetSnmpReceivers::Sweep(SLink& link)
{
    for (auto at = link.pending.begin(); at != link.pending.end();)
        at = GoesOn(*at) ? std::next(at) : link.pending.erase(at);
}

// Whether there is still something to wait for.
bool BNetSnmpReceivers::GoesOn(SPending& pending)
{
    SDelivery& delivery = *pending.link->delivery;
    switch (pending.state) {
    case SPending::eWaiting:
        return true;
    case SPending::eNotSent:
        if (CClock::now() < pending.deadline)
            return true;
        break;
    case SPending::eAcknowledged:
        ++delivery.acknowledged;
        return false;
    case SPending::eTimedOut:
        break;
    case SPending::eRefused:
        ++delivery.givenUp;
        return false;
    }
    if (pending.tries <= pending.link->receiver.retries && !delivery.isSuspended &&
        SendInform(pending))
        return true;
    ++(pending.wasSent ? delivery.givenUp : delivery.failed);
    return false;
}

} // namespace VLK::host
