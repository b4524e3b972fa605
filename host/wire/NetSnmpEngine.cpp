#include "host/wire/NetSnmpEngine.h"

#include "host/HostError.h"
#include "host/LimitedLog.h"
#include "host/Mutex.h"
#include "host/PollSet.h"
#include "host/Relay.h"
#include "host/SystemError.h"
#include "host/verbs/RequestClock.h"
#include "host/wire/Convert.h"
#include "host/wire/MessageReader.h"
#include "host/wire/NetSnmpReceivers.h"
#include "host/wire/NetSnmpUsm.h"
#include "host/wire/UdpSocket.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <deque>
#include <fcntl.h>
#include <optional>
#include <thread>
#include <utility>
#include <vector>
#include <vkmibh/handler.h>

namespace VLK::host {

namespace {

// Longer than requests take that ask nobody, shorter than managers notice.
constexpr std::chrono::milliseconds kPatience{1};

constexpr size_t kMostQueuedSets = 64;

enum { kStop, kReceivers, kFirstSession }; // keys of what is polled for

struct SPduEnd {
    void operator()(netsnmp_pdu* pdu) const { snmp_free_pdu(pdu); }
};
using CPdu = std::unique_ptr<netsnmp_pdu, SPduEnd>;

} // namespace

// A request between its arrival and its answer.
struct BNetSnmpEngine::SArrival {
    SSession* session = nullptr;
    SRequest request;
    CPdu pdu; // of what the wire library has read; ends under the wire lock
    // Of what is read here: what the answer needs.
    std::vector<unsigned char> bindings;
    netsnmp_indexed_addr_pair ends = {};
};

// One listening address. All but Answer() happens under the wire lock.
struct BNetSnmpEngine::SSession {
    IRequestHandler* handler = nullptr;
    modules::SSnmpCounters* counters = nullptr;
    STraffic* traffic = nullptr;
    session_list* handle = nullptr;
    BUdpSocket socket;
    unsigned maxMessage = 0;
    bool takesV3 = false;
    BTransportAddress address;
    std::optional<SArrival> arrival; // what the callback hands to ReadMessage()

    static int OnMessage(int operation, netsnmp_session* session, int requestId, netsnmp_pdu* pdu,
                         void* self);
    void Take(netsnmp_pdu& pdu);
    bool TakePlain(const BMessageReader& reader);
    void SendReport(netsnmp_pdu& request, int counter);
    std::optional<SArrival> ReadMessage(BMessageReader& reader);
    void Deliver(SArrival& delivered, SResponse& response, BPlainAnswer& plain);
    // 0, or the error status to answer with instead; negative when the
    // message is lost.
    int Send(const SArrival& asked, const SResponse& response, BPlainAnswer& plain);
    int SendPdu(netsnmp_pdu& request, const SResponse& response);
    int SendFailure() const;
};

struct BNetSnmpEngine::SState {
    SState(IRequestHandler& requestHandler, modules::SSnmpCounters& snmpCounters,
           unsigned requestWorkers)
        : handler(requestHandler), counters(snmpCounters), reader(snmpCounters),
          workers(requestWorkers)
    {
    }
    void PollFor(BPollSet& polled, int stopDescriptor) const;
    void Serve(BRelay& relay, const BPollSet& polled);
    void SetSenders(const std::vector<SUser>& senders);
    void ServeReceivers();
    bool ServeSessions(BRelay& relay, const BPollSet::CReady& ready);
    bool ServeArrivals(BRelay& relay, SSession& session);
    int Patience();
    bool Accept(BRelay& relay, SArrival& arrival);
    bool Answer(BRelay* relay, SArrival& arrival);
    bool Run(SArrival& arrival, SResponse& response);
    void Drop(SArrival& arrival);
    bool QueueSet(SArrival& arrival);
    void AnswerQueuedSets(const BRelay& relay);
    std::optional<SArrival> NextSet(const BRelay& relay);

    IRequestHandler& handler;
    modules::SSnmpCounters& counters;
    // Held for every call into the wire library, for none into the handler. Late
    // threads take it for their answer.
    BMutex wire;
    BMessageReader reader;
    SSession* reading = nullptr; // whose messages that has; of the thread with the role
    BPlainAnswer plainAnswer;
    BNetSnmpReceivers receivers{reader};
    std::vector<std::unique_ptr<SSession>> sessions;
    size_t turn = 0; // of these; of the thread with the role
    const unsigned workers;
    bool speaksV3 = false;
    SEngineIdentity identity; // with SNMPv3
    std::vector<SUser> users; // of SpeakV3() and ReplaceUsers()
    BLimitedLog overload{eLogWarning};
    // SETs wait for one another: here, and not with a thread each.
    BMutex sets;
    std::deque<SArrival> queuedSets VKMIBH_TSA(guarded_by(sets));
    bool isSetAtWork VKMIBH_TSA(guarded_by(sets)) = false;
    const BRelay* serving VKMIBH_TSA(guarded_by(sets)) = nullptr; // while there is one
};

namespace {

void SwitchOn(int setting) { netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, setting, 1); }

void SwitchOff(int setting) { netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, setting, 0); }

// No file of the wire library is read or written, nothing is printed.
void KeepToItself()
{
    SwitchOn(NETSNMP_DS_LIB_DONT_READ_CONFIGS);
    SwitchOn(NETSNMP_DS_LIB_DONT_PERSIST_STATE);
    SwitchOn(NETSNMP_DS_LIB_DISABLE_PERSISTENT_LOAD);
    SwitchOn(NETSNMP_DS_LIB_DISABLE_PERSISTENT_SAVE);
    SwitchOn(NETSNMP_DS_LIB_ALARM_DONT_USE_SIG);
    SwitchOn(NETSNMP_DS_LIB_DISABLE_V3);
    netsnmp_register_loghandler(NETSNMP_LOGHANDLER_NONE, LOG_DEBUG);
}

// The port the system chose for port 0.
unsigned BoundPort(int descriptor)
{
    netsnmp_sockaddr_storage bound = {};
    socklen_t length = sizeof bound;
    if (getsockname(descriptor, &bound.sa, &length) != 0)
        return 0;
    return ntohs(bound.sa.sa_family == AF_INET6 ? bound.sin6.sin6_port : bound.sin.sin_port);
}

[[noreturn]] void CannotListen(const BTransportAddress& address, int systemError)
{
    throw BHostError(eExitUsage,
                     "cannot listen on " + address.ToString() + ": " + SystemError(systemError));
}

netsnmp_transport* OpenTransport(const BTransportAddress& address)
{
    errno = 0;
    netsnmp_transport* transport =
        netsnmp_transport_open_server("vkagentd", address.ToString().c_str());
    if (!transport)
        CannotListen(address, errno);
    return transport;
}

} // namespace

int BNetSnmpEngine::SSession::OnMessage(int operation, netsnmp_session* session, int,
                                        netsnmp_pdu* pdu, void* self)
{
    // Also called for messages that failed their checks, and for time-outs.
    if (operation != NETSNMP_CALLBACK_OP_RECEIVED_MESSAGE || !pdu || session->s_snmp_errno != 0)
        return 1;
    try {
        static_cast<SSession*>(self)->Take(*pdu);
    } catch (const std::exception&) {
        // Out of memory: no answer, as if the datagram had been lost.
    }
    return 1;
}

// The wire library ends the PDU it has passed; what is in it stays.
void BNetSnmpEngine::SSession::Take(netsnmp_pdu& pdu)
{
    const int fault = pdu.version == SNMP_VERSION_3 ? FaultOf(pdu) : -1;
    if (fault >= 0)
        return SendReport(pdu, fault);
    SArrival taken;
    taken.session = this;
    taken.request.local = address;
    if (!ReadRequest(pdu, taken.request))
        return;
    taken.request.maxMessage = maxMessage;
    if (pdu.version == SNMP_VERSION_3 && pdu.msgMaxSize > 0)
        taken.request.maxMessage =
            std::min(maxMessage, static_cast<unsigned>(std::min<long>(pdu.msgMaxSize, INT_MAX)));
    taken.pdu.reset(static_cast<netsnmp_pdu*>(calloc(1, sizeof(netsnmp_pdu))));
    if (!taken.pdu)
        return;
    std::swap(*taken.pdu, pdu);
    arrival = std::move(taken);
}

// Reads what most managers send without the wire library.
bool BNetSnmpEngine::SSession::TakePlain(const BMessageReader& reader)
{
    try {
        SArrival& taken = arrival.emplace();
        taken.session = this;
        taken.request.local = address;
        taken.request.maxMessage = maxMessage;
        taken.ends = reader.Ends();
        TakeEnds(taken.ends, taken.request);
        if (reader.ReadPlain(taken.request, taken.bindings))
            return true;
    } catch (const std::bad_alloc&) {
        // As if it had been lost, unless the wire library finds memory.
    }
    arrival.reset();
    return false;
}

void BNetSnmpEngine::SSession::SendReport(netsnmp_pdu& request, int counter)
{
    netsnmp_pdu* pdu = Report(request, counter);
    if (pdu && !snmp_sess_send(handle, pdu))
        snmp_free_pdu(pdu);
}

void BNetSnmpEngine::SSession::Deliver(SArrival& delivered, SResponse& response,
                                       BPlainAnswer& plain)
{
    if (response.isContextUnknown) {
        ++counters->unknownContexts;
        return SendReport(*delivered.pdu, STAT_SNMPUNKNOWNCONTEXTS);
    }
    ++traffic->answered; // who has the answer may ask for the count at once
    int status = Send(delivered, response, plain);
    if (status > 0) {
        try {
            handler->AnswerInstead(status, delivered.request, response);
            status = Send(delivered, response, plain);
        } catch (const std::exception&) {
            status = -1;
        }
    }
    if (status != 0)
        --traffic->answered;
    if (status == eSnmpTooBig)
        ++counters->silentDrops;
}

int BNetSnmpEngine::SSession::Send(const SArrival& asked, const SResponse& response,
                                   BPlainAnswer& plain)
{
    if (asked.pdu)
        return SendPdu(*asked.pdu, response);
    if (const int status = plain.Write(asked.request, asked.bindings, response))
        return status;
    const int systemError = socket.Send(plain.Data(), plain.Length(), asked.ends);
    return systemError == EMSGSIZE ? eSnmpTooBig : -systemError;
}

int BNetSnmpEngine::SSession::SendPdu(netsnmp_pdu& request, const SResponse& response)
{
    netsnmp_pdu* pdu = MakeResponse(request, response);
    if (!pdu)
        return eSnmpGenErr;
    if (snmp_sess_send(handle, pdu))
        return 0;
    snmp_free_pdu(pdu);
    return SendFailure();
}

int BNetSnmpEngine::SSession::SendFailure() const
{
    int systemError = 0;
    int snmpError = 0;
    char* text = nullptr;
    snmp_sess_error(handle, &systemError, &snmpError, &text);
    free(text);
    bool tooLarge = snmpError == SNMPERR_TOO_LONG || systemError == EMSGSIZE;
    return tooLarge ? eSnmpTooBig : -1;
}

std::optional<BNetSnmpEngine::SArrival>
BNetSnmpEngine::SSession::ReadMessage(BMessageReader& reader)
{
    if (!reader.Receive(socket))
        return std::nullopt;
    ++traffic->received;
    if (traffic->isSuspended) {
        ++traffic->dropped;
    } else if (!TakePlain(reader)) {
        reader.HandOver(socket, handle, takesV3);
        if (takesV3)
            CopyStatistics(*counters);
    }
    return std::exchange(arrival, std::nullopt);
}

// Whether it is to be answered. Out of memory: not, as if the datagram had been lost.
bool BNetSnmpEngine::SState::Run(SArrival& arrival, SResponse& response)
{
    try {
        return handler.Handle(arrival.request, response);
    } catch (const std::exception&) {
        return false;
    }
}

void BNetSnmpEngine::SState::Drop(SArrival& arrival)
{
    ++arrival.session->traffic->overload;
    overload.Write(
        [&] { return "no thread is free: no answer to " + arrival.request.remote.ToString(); });
    const BLock lock(wire);
    arrival.pdu.reset();
}

// With a relay: on the thread that has the role. Whether it has it still.
bool BNetSnmpEngine::SState::Answer(BRelay* relay, SArrival& arrival)
{
    SResponse response;
    int64_t ticket = relay ? relay->Begin() : 0;
    bool isAnswered;
    {
        const BRequestClock clock(relay, ticket);
        isAnswered = Run(arrival, response);
    }
    bool isRole = relay && relay->End(ticket);
    const BLock lock(wire);
    if (isAnswered)
        arrival.session->Deliver(arrival, response, plainAnswer);
    arrival.pdu.reset();
    return isRole;
}

// False when the SET is its caller's to run: no other is at work.
bool BNetSnmpEngine::SState::QueueSet(SArrival& arrival)
{
    {
        const BLock lock(sets);
        if (!isSetAtWork) {
            isSetAtWork = true;
            return false;
        }
        if (queuedSets.size() < kMostQueuedSets) {
            queuedSets.push_back(std::move(arrival));
            return true;
        }
    }
    Drop(arrival);
    return true;
}

// The next one, which is at work then; at the end none.
std::optional<BNetSnmpEngine::SArrival> BNetSnmpEngine::SState::NextSet(const BRelay& relay)
{
    const BLock lock(sets);
    isSetAtWork = !queuedSets.empty() && !relay.HasEnded();
    if (!isSetAtWork)
        return std::nullopt;
    std::optional<SArrival> next = std::move(queuedSets.front());
    queuedSets.pop_front();
    return next;
}

// Only a thread that has lost its role finds any: another has read them meanwhile.
void BNetSnmpEngine::SState::AnswerQueuedSets(const BRelay& relay)
{
    while (std::optional<SArrival> arrival = NextSet(relay))
        Answer(nullptr, *arrival);
}

// Whether the thread is to go on serving.
bool BNetSnmpEngine::SState::Accept(BRelay& relay, SArrival& arrival)
{
    if (!relay.HasWorker()) {
        Drop(arrival);
        return true;
    }
    bool isSet = arrival.request.pduType == ePduSet;
    if (isSet && QueueSet(arrival))
        return true;
    bool isRole = Answer(&relay, arrival);
    if (isSet)
        AnswerQueuedSets(relay);
    return isRole;
}

unsigned BNetSnmpEngine::DefaultWorkers()
{
    return 4 * std::max(std::thread::hardware_concurrency(), 1u);
}

BNetSnmpEngine::BNetSnmpEngine(IRequestHandler& handler, modules::SSnmpCounters& counters,
                               unsigned workers)
    : m_state(new SState(handler, counters, workers))
{
    KeepToItself();
}

BNetSnmpEngine::~BNetSnmpEngine()
{
    for (const std::unique_ptr<SSession>& session : m_state->sessions)
        snmp_sess_close(session->handle);
    m_state->receivers.Close();
    snmp_shutdown("vkagentd");
}

void BNetSnmpEngine::SpeakV3(const SEngineIdentity& engine, const std::vector<SUser>& users)
{
    StartUsm(engine, users);
    SwitchOff(NETSNMP_DS_LIB_DISABLE_V3);
    m_state->receivers.SpeakV3(users);
    m_state->speaksV3 = true;
    m_state->identity = engine;
    m_state->users = users;
}

void BNetSnmpEngine::ReplaceUsers(const std::vector<SUser>& users)
{
    if (!m_state->speaksV3)
        return;
    // First, so that no key of an old passphrase is made for a receiver's engine meanwhile.
    m_state->SetSenders(users);
    try {
        host::ReplaceUsers(m_state->identity, m_state->users, users, m_state->wire);
    } catch (...) {
        m_state->SetSenders(m_state->users);
        throw;
    }
    const BLock lock(m_state->wire);
    m_state->users = users;
}

unsigned BNetSnmpEngine::AddReceiver(const SReceiver& receiver, std::shared_ptr<SDelivery> delivery)
{
    const BLock lock(m_state->wire);
    return m_state->receivers.Add(receiver, std::move(delivery));
}

void BNetSnmpEngine::RemoveReceiver(unsigned receiver) { m_state->receivers.Remove(receiver); }

void BNetSnmpEngine::Notify(unsigned receiver, SNotification notification)
{
    m_state->receivers.Notify(receiver, std::move(notification));
}

BTransportAddress BNetSnmpEngine::Open(const BTransportAddress& address, STraffic& traffic)
{
    netsnmp_session settings;
    snmp_sess_init(&settings);
    netsnmp_transport* transport = OpenTransport(address);
    // A datagram that was polled for may still be dropped for its checksum.
    fcntl(transport->sock, F_SETFL, fcntl(transport->sock, F_GETFL) | O_NONBLOCK);
    auto session = std::make_unique<SSession>();
    session->handler = &m_state->handler;
    session->counters = &m_state->counters;
    session->traffic = &traffic;
    if (!session->socket.Take(*transport, address.IsV6())) {
        const int systemError = errno;
        transport->f_close(transport);
        netsnmp_transport_free(transport);
        CannotListen(address, systemError);
    }
    session->maxMessage = static_cast<unsigned>(transport->msgMaxSize);
    session->takesV3 = m_state->speaksV3;
    session->address = address;
    session->address.SetPort(BoundPort(transport->sock));

    settings.version = SNMP_DEFAULT_VERSION; // every version that is switched on
    settings.peername = SNMP_DEFAULT_PEERNAME;
    settings.isAuthoritative = SNMP_SESS_AUTHORITATIVE; // learns of no other engine
    settings.callback = SSession::OnMessage;
    settings.callback_magic = session.get();
    // Takes the transport over, also when it fails.
    session->handle =
        static_cast<session_list*>(snmp_sess_add(&settings, transport, nullptr, nullptr));
    if (!session->handle)
        throw BHostError(eExitUsage, "cannot listen on " + address.ToString());
    m_state->sessions.push_back(std::move(session));
    return m_state->sessions.back()->address;
}

// Lets the relay be asked about for as long as it is there.
struct BNetSnmpEngine::SServingRelay {
    SServingRelay(SState& engine, const BRelay& relay) : state(engine) { Set(&relay); }
    ~SServingRelay() { Set(nullptr); }
    void Set(const BRelay* relay)
    {
        const BLock lock(state.sets);
        state.serving = relay;
    }
    SState& state;
};

SEngineLoad BNetSnmpEngine::Load() const
{
    const BLock lock(m_state->sets);
    SEngineLoad load;
    load.workers = m_state->workers;
    load.late = m_state->serving ? m_state->serving->Late() : 0;
    load.waitingSets = static_cast<unsigned>(m_state->queuedSets.size());
    load.mostWaitingSets = kMostQueuedSets;
    load.isSetAtWork = m_state->isSetAtWork;
    return load;
}

void BNetSnmpEngine::Serve(int stopDescriptor)
{
    BRelay relay(m_state->workers, kPatience);
    const SServingRelay serving(*m_state, relay);
    BPollSet polled;
    m_state->PollFor(polled, stopDescriptor);
    relay.Run([&] { m_state->Serve(relay, polled); });
    const BLock lock(m_state->sets);
    m_state->queuedSets.clear();
}

// The users that notifications are sent as.
void BNetSnmpEngine::SState::SetSenders(const std::vector<SUser>& senders)
{
    const BLock lock(wire);
    receivers.SpeakV3(senders);
}

void BNetSnmpEngine::SState::PollFor(BPollSet& polled, int stopDescriptor) const
{
    polled.Add(stopDescriptor, kStop);
    polled.Add(receivers.Descriptor(), kReceivers);
    unsigned key = kFirstSession;
    for (const std::unique_ptr<SSession>& session : sessions)
        polled.Add(session->socket.Descriptor(), key++);
}

int BNetSnmpEngine::SState::Patience()
{
    const BLock lock(wire);
    return receivers.Patience();
}

// Those that one call brings. Whether the thread has its role still; if not, there may be
// more for the next one.
bool BNetSnmpEngine::SState::ServeArrivals(BRelay& relay, SSession& session)
{
    reading = &session;
    do {
        BLock lock(wire);
        std::optional<SArrival> arrival = session.ReadMessage(reader);
        lock.Unlock();
        if (arrival && !Accept(relay, *arrival))
            return false;
    } while (reader.HasMore());
    return true;
}

// In turn: a thread that loses its role at one comes to no other, and the next thread
// would begin with the same one again.
bool BNetSnmpEngine::SState::ServeSessions(BRelay& relay, const BPollSet::CReady& ready)
{
    for (size_t left = sessions.size(); left > 0; --left) {
        const size_t index = std::exchange(turn, (turn + 1) % sessions.size());
        if (ready.Has(static_cast<unsigned>(kFirstSession + index)) &&
            !ServeArrivals(relay, *sessions[index]))
            return false;
    }
    return true;
}

// Before the requests, at any of which the thread may lose its role.
void BNetSnmpEngine::SState::ServeReceivers()
{
    const BLock lock(wire);
    receivers.Serve();
}

// Returns when it is to end, or when the thread has lost its role.
void BNetSnmpEngine::SState::Serve(BRelay& relay, const BPollSet& polled)
{
    if (reader.HasMore() && !ServeArrivals(relay, *reading))
        return;
    for (;;) {
        const int patience = Patience();
        const BPollSet::CReady ready = polled.Wait(patience);
        if (ready.Has(kStop))
            return;
        if (patience >= 0 || ready.Has(kReceivers))
            ServeReceivers();
        if (!ServeSessions(relay, ready))
            return;
    }
}

} // namespace VLK::host
