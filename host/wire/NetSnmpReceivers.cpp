#include "host/wire/NetSnmpReceivers.h"

#include "host/HostError.h"
#include "host/SystemError.h"
#include "host/wire/Convert.h"
#include "host/wire/NetSnmpUsm.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/eventfd.h>
#include <vkmibh/subtree.h>

namespace VLK::host {

namespace {

using CClock = std::chrono::steady_clock;

// Of what is polled for.
constexpr unsigned kWake = 0;
unsigned KeyOf(unsigned receiver) { return receiver + 1; }

// Of one try: that the engine is another one, and its time.
constexpr unsigned kMostReports = 2;

// An engine is not asked for more often, whatever waits for it.
constexpr std::chrono::milliseconds kProbeInterval{1000};

// RFC 3411 section 5.
constexpr size_t kShortestEngineId = 5;
constexpr size_t kLongestEngineId = 32;

constexpr int kMostPatience = 3600000; // milliseconds

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
    throw BHostError(eExitUsage, systemError ? what + ": " + SystemError(systemError) : what);
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

} // namespace

// An inform that is not acknowledged.
struct BNetSnmpReceivers::SPending {
    // eNotSent: nothing is under way, until the next try. eNoEngine: it is sent once the receiver's
    // engine is known. eAgain: at once. Both as part of the same try.
    enum EState { eWaiting, eNotSent, eNoEngine, eAcknowledged, eRefused, eTimedOut, eAgain };

    SLink* link = nullptr;
    SNotification notification;
    long requestId = 0;
    unsigned tries = 0;
    bool wasSent = false;
    unsigned reports = 0; // SNMPv3, in this try
    CClock::time_point lastSent;
    CClock::time_point deadline;
    EState state = eWaiting;

    void TakeReport(const netsnmp_pdu& report);
    // Returns whether the wire library shall forget the request.
    static int OnAnswer(int operation, netsnmp_session* session, int requestId, netsnmp_pdu* pdu,
                        void* self);
};

// A receiver and the session with it.
struct BNetSnmpReceivers::SLink {
    SReceiver receiver;
    std::shared_ptr<SDelivery> delivery;
    session_list* session = nullptr;
    int descriptor = -1;
    std::list<SPending> pending;
    // SNMPv3
    std::string engine;             // the receiver's, of an inform; empty: not known
    CClock::time_point nextProbe;   // not before then
    CClock::time_point engineSince; // when it was learned

    SLink() = default;
    ~SLink()
    {
        if (session)
            snmp_sess_close(session);
    }
    SLink(const SLink&) = delete;
    SLink& operator=(const SLink&) = delete;

    bool IsFrom(const netsnmp_pdu* pdu) const;
    bool KnowsEngine() const { return !engine.empty(); }
    bool KeepEngine();
    bool LearnEngine(const netsnmp_pdu& report);
    void DoubtEngine(const SPending& unanswered);
    void AskForEngine();

    static int OnMessage(int, netsnmp_session*, int, netsnmp_pdu*, void*) { return 1; }
    static int OnEngine(int operation, netsnmp_session* session, int requestId, netsnmp_pdu* pdu,
                        void* self);
};

// A request id can be guessed: only the receiver's own answer counts.
bool BNetSnmpReceivers::SLink::IsFrom(const netsnmp_pdu* pdu) const
{
    BTransportAddress from;
    return pdu && ReadRemote(*pdu, from) && from == receiver.address;
}

// Whatever the wire library has made of a message meanwhile: it believes everybody.
bool BNetSnmpReceivers::SLink::KeepEngine()
{
    return !receiver.isInform || receiver.protocol != eSnmpV3 ||
           SetEngine(*snmp_sess_session(session), engine);
}

bool BNetSnmpReceivers::SLink::LearnEngine(const netsnmp_pdu& report)
{
    const size_t length = report.securityEngineIDLen;
    if (!report.securityEngineID || length < kShortestEngineId || length > kLongestEngineId)
        return false;
    engine.assign(reinterpret_cast<const char*>(report.securityEngineID), length);
    engineSince = CClock::now();
    return true;
}

// An inform was not answered: its receiver may be another engine since. Not when the engine
// was learned after the inform had been sent: many may time out together.
void BNetSnmpReceivers::SLink::DoubtEngine(const SPending& unanswered)
{
    if (receiver.protocol == eSnmpV3 && unanswered.lastSent > engineSince)
        engine.clear();
}

// Sends the question, and waits for nothing: whoever needs the answer looks for it when a
// message has come. One that is lost is asked again with the next try of an inform.
void BNetSnmpReceivers::SLink::AskForEngine()
{
    const CClock::time_point now = CClock::now();
    if (now < nextProbe)
        return;
    nextProbe = now + std::min(receiver.timeout, kProbeInterval);
    netsnmp_pdu* probe = KeepEngine() ? MakeEngineProbe() : nullptr;
    if (probe && !snmp_sess_async_send(session, probe, OnEngine, this))
        snmp_free_pdu(probe);
}

int BNetSnmpReceivers::SLink::OnEngine(int operation, netsnmp_session*, int, netsnmp_pdu* pdu,
                                       void* self)
{
    auto* link = static_cast<SLink*>(self);
    if (operation != NETSNMP_CALLBACK_OP_RECEIVED_MESSAGE)
        return 1;
    if (!link->IsFrom(pdu) || pdu->command != SNMP_MSG_REPORT)
        return 0;
    if (!link->KnowsEngine() && snmpv3_get_report_type(pdu) == SNMPERR_UNKNOWN_ENG_ID)
        link->LearnEngine(*pdu);
    return 1;
}

int BNetSnmpReceivers::SPending::OnAnswer(int operation, netsnmp_session*, int, netsnmp_pdu* pdu,
                                          void* self)
{
    auto* pending = static_cast<SPending*>(self);
    if (operation == NETSNMP_CALLBACK_OP_TIMED_OUT) {
        pending->state = eTimedOut;
    } else if (operation == NETSNMP_CALLBACK_OP_RESEND ||
               operation == NETSNMP_CALLBACK_OP_SEND_FAILED) {
        pending->state = eWaiting; // the request is kept
        pending->deadline = CClock::now() + pending->link->receiver.timeout;
    } else if (operation == NETSNMP_CALLBACK_OP_RECEIVED_MESSAGE) {
        if (!pending->link->IsFrom(pdu))
            return 0;
        if (pdu->command == SNMP_MSG_REPORT) {
            pending->TakeReport(*pdu);
            return 1;
        }
        if (pdu->command != SNMP_MSG_RESPONSE)
            return 0;
        pending->state = pdu->errstat == SNMP_ERR_NOERROR ? eAcknowledged : eRefused;
    }
    return 1;
}

BNetSnmpReceivers::BNetSnmpReceivers(BMessageReader& reader)
    : m_reader(reader), m_wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (!m_wake.IsOpen())
        throw BHostError(eExitUsage, "no event: " + SystemError(errno));
    m_polled.Add(m_wake.Get(), kWake);
}

BNetSnmpReceivers::~BNetSnmpReceivers() { Close(); }

void BNetSnmpReceivers::Close() { m_links.clear(); }

unsigned BNetSnmpReceivers::Add(const SReceiver& receiver, std::shared_ptr<SDelivery> delivery)
{
    if (receiver.protocol == eSnmpV3 && m_users.empty())
        throw BHostError(eExitUsage, "SNMPv3 is not spoken");
    auto link = std::make_unique<SLink>();
    link->receiver = receiver;
    link->delivery = delivery;
    std::string community = receiver.community;
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
    settings.community = reinterpret_cast<unsigned char*>(community.data());
    settings.community_len = community.size();
    const bool isV3 = receiver.protocol == eSnmpV3;
    const bool isSecured = !isV3 || SetSecurity(settings, link->receiver);
    settings.retries = 0; // they are counted here
    settings.timeout = std::chrono::microseconds(receiver.timeout).count();
    settings.callback = SLink::OnMessage;
    // Takes the transport over, also when it fails.
    link->session =
        static_cast<session_list*>(snmp_sess_add(&settings, transport, nullptr, nullptr));
    free(settings.contextEngineID);
    free(settings.securityEngineID);
    if (!isSecured)
        throw std::bad_alloc();
    if (!link->session)
        CannotSend(receiver.address, 0);
    if (isV3)
        LeaveEngineToUs(*snmp_sess_session(link->session), receiver);
    const unsigned number = m_next;
    m_polled.Add(link->descriptor, KeyOf(number));
    {
        const BLock lock(m_lock);
        m_removed.reserve(m_links.size() + 1);
        m_deliveries.emplace(number, std::move(delivery));
    }
    try {
        m_links.emplace(number, std::move(link));
    } catch (const std::bad_alloc&) {
        const BLock lock(m_lock);
        m_deliveries.erase(number);
        throw;
    }
    ++m_next;
    return number;
}

void BNetSnmpReceivers::Remove(unsigned receiver)
{
    {
        const BLock lock(m_lock);
        if (m_deliveries.erase(receiver) != 0)
            m_removed.push_back(receiver);
    }
    eventfd_write(m_wake.Get(), 1);
}

void BNetSnmpReceivers::Notify(unsigned receiver, SNotification&& notification)
{
    {
        const BLock lock(m_lock);
        const auto found = m_deliveries.find(receiver);
        if (found == m_deliveries.end())
            return;
        if (m_queue.size() >= kMostQueued) {
            ++found->second->overflowed;
            return;
        }
        m_queue.push_back({receiver, std::move(notification)});
    }
    eventfd_write(m_wake.Get(), 1);
}

int BNetSnmpReceivers::Patience() const
{
    auto next = CClock::time_point::max();
    for (const auto& [number, link] : m_links) {
        for (const SPending& pending : link->pending)
            next = std::min(next, pending.deadline);
    }
    if (next == CClock::time_point::max())
        return -1;
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(next - CClock::now());
    // The wire library has a clock of its own, which may be a little late.
    return static_cast<int>(
        std::clamp<std::chrono::milliseconds::rep>(left.count(), 0, kMostPatience) + 1);
}

void BNetSnmpReceivers::Serve()
{
    const BPollSet::CReady ready = m_polled.Wait(0);
    for (const auto& [number, link] : m_links)
        ServeLink(*link, ready.Has(KeyOf(number)));
    if (ready.Has(kWake))
        CarryOut();
}

void BNetSnmpReceivers::ServeLink(SLink& link, bool hasMessage)
{
    try {
        if (hasMessage && m_reader.Peek(link.descriptor))
            m_reader.PassOn(link.descriptor, link.session, link.receiver.protocol == eSnmpV3);
        if (!link.pending.empty()) {
            snmp_sess_timeout(link.session);
            Sweep(link);
        }
    } catch (const std::bad_alloc&) {
        // The informs are still there, and looked at again when it is time.
    }
}

// What is queued now: requests wait meanwhile. Takes no memory itself.
void BNetSnmpReceivers::CarryOut()
{
    eventfd_t wakes;
    eventfd_read(m_wake.Get(), &wakes);
    BLock lock(m_lock);
    for (unsigned removed : m_removed) {
        const auto found = m_links.find(removed);
        m_polled.Remove(found->second->descriptor);
        m_links.erase(found);
    }
    m_removed.clear();
    for (size_t count = m_queue.size(); count > 0; --count) {
        SQueued queued = std::move(m_queue.front());
        m_queue.pop_front();
        lock.Unlock();
        Send(queued);
        lock.Lock();
    }
}

// The receiver may have gone since.
void BNetSnmpReceivers::Send(SQueued& queued)
{
    const auto found = m_links.find(queued.receiver);
    if (found == m_links.end() || found->second->delivery->isSuspended)
        return;
    try {
        Send(*found->second, std::move(queued.notification));
    } catch (const std::bad_alloc&) {
        ++found->second->delivery->failed;
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
        ++pending.tries;
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
    pending.state = SPending::eWaiting;
    pending.lastSent = CClock::now();
    pending.deadline = pending.lastSent + receiver.timeout;
    if (receiver.protocol == eSnmpV3) {
        if (!pending.link->KnowsEngine()) {
            pending.state = SPending::eNoEngine;
            pending.link->AskForEngine();
            return true;
        }
        if (!pending.link->KeepEngine() ||
            !MakeUser(*snmp_sess_session(pending.link->session), m_users))
            return false;
    }
    netsnmp_pdu* pdu = MakeNotification(pending.notification, receiver, {});
    if (!pdu)
        return false;
    if (pending.wasSent)
        pdu->reqid = pending.requestId;
    pending.requestId = pdu->reqid;
    if (snmp_sess_async_send(pending.link->session, pdu, SPending::OnAnswer, &pending)) {
        if (!pending.wasSent)
            ++delivery.sent;
        else if (pending.reports == 0)
            ++delivery.retried;
        pending.wasSent = true;
        return true;
    }
    pending.state = SPending::eNotSent;
    bool isTooLong = WasTooLong(pending.link->session);
    snmp_free_pdu(pdu);
    return !isTooLong;
}

// A receiver of SNMPv3 tells by a report what is its time, or that its engine is another
// one since. The wire library notes the time, and may send the message again itself, which
// it tells. Whatever else it says need not be so at the next try.
void BNetSnmpReceivers::SPending::TakeReport(const netsnmp_pdu& report)
{
    const int type = snmpv3_get_report_type(const_cast<netsnmp_pdu*>(&report));
    const bool isOneMore = ++reports <= kMostReports;
    state = eNotSent;
    if (isOneMore && type == SNMPERR_UNKNOWN_ENG_ID && link->LearnEngine(report))
        state = eAgain;
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
    case SPending::eNoEngine:
        if (pending.link->KnowsEngine() && SendInform(pending))
            return true;
        [[fallthrough]];
    case SPending::eNotSent:
        if (CClock::now() < pending.deadline)
            return true;
        break;
    case SPending::eAcknowledged:
        ++delivery.acknowledged;
        return false;
    case SPending::eAgain:
        if (SendInform(pending))
            return true;
        break;
    case SPending::eTimedOut:
        pending.link->DoubtEngine(pending);
        break;
    case SPending::eRefused:
        ++delivery.givenUp;
        return false;
    }
    if (pending.tries <= pending.link->receiver.retries && !delivery.isSuspended) {
        ++pending.tries;
        pending.reports = 0;
        if (SendInform(pending))
            return true;
    }
    ++(pending.wasSent ? delivery.givenUp : delivery.failed);
    return false;
}

} // namespace VLK::host
