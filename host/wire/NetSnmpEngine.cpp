#include "host/wire/NetSnmpEngine.h"

#include "host/HostError.h"
#include "host/wire/Convert.h"
#include "host/wire/MessageReader.h"
#include "host/wire/NetSnmpReceivers.h"
#include "host/wire/Udp6Ends.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <vector>
#include <vkmibh/subtree.h>

namespace VLK::host {

// One listening address.
struct BNetSnmpEngine::SSession {
    IRequestHandler* handler = nullptr;
    modules::SSnmpCounters* counters = nullptr;
    STraffic* traffic = nullptr;
    session_list* handle = nullptr;
    int descriptor = -1;
    unsigned maxMessage = 0;
    BTransportAddress address;

    static int OnMessage(int operation, netsnmp_session* session, int requestId, netsnmp_pdu* pdu,
                         void* self);
    void Answer(netsnmp_pdu& pdu);
    // 0, or the error status to answer with instead; negative when the
    // message is lost.
    int Send(netsnmp_pdu& request, const SResponse& response);
    int SendFailure() const;
    void ReadMessage(BMessageReader& reader);
};

struct BNetSnmpEngine::SState {
    SState(IRequestHandler& requestHandler, modules::SSnmpCounters& snmpCounters)
        : handler(requestHandler), counters(snmpCounters), reader(snmpCounters)
    {
    }
    IRequestHandler& handler;
    modules::SSnmpCounters& counters;
    BMessageReader reader;
    BNetSnmpReceivers receivers{reader};
    std::vector<std::unique_ptr<SSession>> sessions;
};

namespace {

void SwitchOn(int setting) { netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, setting, 1); }

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
                     "cannot listen on " + address.ToString() + ": " + std::strerror(systemError));
}

netsnmp_transport* OpenTransport(const BTransportAddress& address)
{
    errno = 0;
    netsnmp_transport* transport =
        netsnmp_transport_open_server("vkagentd", address.ToString().c_str());
    if (!transport)
        CannotListen(address, errno);
    if (address.IsV6() && !KeepBothEnds(*transport)) {
        int systemError = errno;
        transport->f_close(transport);
        netsnmp_transport_free(transport);
        CannotListen(address, systemError);
    }
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
        static_cast<SSession*>(self)->Answer(*pdu);
    } catch (const std::exception&) {
        // Out of memory: no answer, as if the datagram had been lost.
    }
    return 1;
}

void BNetSnmpEngine::SSession::Answer(netsnmp_pdu& pdu)
{
    SRequest request;
    request.local = address;
    if (!ReadRequest(pdu, request))
        return;
    request.maxMessage = maxMessage;
    SResponse response;
    if (!handler->Handle(request, response))
        return;
    int status = Send(pdu, response);
    if (status > 0) {
        handler->AnswerInstead(status, request, response);
        status = Send(pdu, response);
    }
    if (status == 0)
        ++traffic->answered;
    else if (status == eSnmpTooBig)
        ++counters->silentDrops;
}

int BNetSnmpEngine::SSession::Send(netsnmp_pdu& request, const SResponse& response)
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

void BNetSnmpEngine::SSession::ReadMessage(BMessageReader& reader)
{
    if (!reader.Peek(descriptor))
        return;
    ++traffic->received;
    if (traffic->isSuspended) {
        ++traffic->dropped;
        reader.Discard(descriptor);
    } else {
        reader.PassOn(descriptor, handle);
    }
}

BNetSnmpEngine::BNetSnmpEngine(IRequestHandler& handler, modules::SSnmpCounters& counters)
    : m_state(new SState(handler, counters))
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

unsigned BNetSnmpEngine::AddReceiver(const SReceiver& receiver, SDelivery& delivery)
{
    return m_state->receivers.Add(receiver, delivery);
}

void BNetSnmpEngine::Notify(unsigned receiver, SNotification notification)
{
    m_state->receivers.Notify(receiver, std::move(notification));
}

BTransportAddress BNetSnmpEngine::Open(const BTransportAddress& address, STraffic& traffic)
{
    netsnmp_session settings;
    snmp_sess_init(&settings);
    netsnmp_transport* transport = OpenTransport(address);
    // A datagram that poll() saw may still be dropped for its checksum.
    fcntl(transport->sock, F_SETFL, fcntl(transport->sock, F_GETFL) | O_NONBLOCK);
    auto session = std::make_unique<SSession>();
    session->handler = &m_state->handler;
    session->counters = &m_state->counters;
    session->traffic = &traffic;
    session->descriptor = transport->sock;
    session->maxMessage = static_cast<unsigned>(transport->msgMaxSize);
    session->address = address;
    session->address.SetPort(BoundPort(transport->sock));

    settings.version = SNMP_DEFAULT_VERSION; // every version that is switched on
    settings.peername = SNMP_DEFAULT_PEERNAME;
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

void BNetSnmpEngine::Serve(int stopDescriptor)
{
    const std::vector<std::unique_ptr<SSession>>& sessions = m_state->sessions;
    std::vector<pollfd> waits{{stopDescriptor, POLLIN, 0}};
    for (const std::unique_ptr<SSession>& session : sessions)
        waits.push_back({session->descriptor, POLLIN, 0});
    size_t firstOfReceivers = waits.size();
    m_state->receivers.AddWaits(waits);
    for (;;) {
        if (poll(waits.data(), waits.size(), m_state->receivers.Patience()) < 0) {
            if (errno == EINTR)
                continue;
            throw BHostError(eExitUsage, std::string("cannot wait: ") + std::strerror(errno));
        }
        if (waits[0].revents)
            return;
        for (size_t i = 0; i < sessions.size(); ++i) {
            if (waits[i + 1].revents)
                sessions[i]->ReadMessage(m_state->reader);
        }
        m_state->receivers.Serve(&waits[firstOfReceivers]);
    }
}

} // namespace VLK::host
