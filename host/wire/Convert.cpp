#include "host/wire/Convert.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <vkmibh/handler.h>

namespace VLK::host {

namespace {

BTransportAddress ReadAddress(const netsnmp_sockaddr_storage& from)
{
    if (from.sa.sa_family == AF_INET6)
        return BTransportAddress::V6(from.sin6.sin6_addr.s6_addr, ntohs(from.sin6.sin6_port));
    unsigned char bytes[4];
    std::memcpy(bytes, &from.sin.sin_addr, sizeof bytes);
    return BTransportAddress::V4(bytes, ntohs(from.sin.sin_port));
}

bool ReadEnds(const netsnmp_pdu& pdu, netsnmp_indexed_addr_pair& ends)
{
    if (!pdu.transport_data || pdu.transport_data_length != static_cast<int>(sizeof ends))
        return false;
    std::memcpy(&ends, pdu.transport_data, sizeof ends);
    return true;
}

bool ReadAddresses(const netsnmp_pdu& pdu, SRequest& request)
{
    netsnmp_indexed_addr_pair ends;
    if (!ReadEnds(pdu, ends))
        return false;
    TakeEnds(ends, request);
    return true;
}

int ClampToInt(long value) { return static_cast<int>(std::clamp<long>(value, INT_MIN, INT_MAX)); }

bool ReadOid(const oid* arcs, size_t count, BObjectIdentifier& out)
{
    unsigned buffer[MAX_OID_LEN];
    if (count > MAX_OID_LEN)
        return false;
    for (size_t i = 0; i < count; ++i)
        buffer[i] = static_cast<unsigned>(arcs[i]);
    return out.Set(static_cast<unsigned>(count), buffer);
}

// Returns the error status that says why a value cannot be ours, 0 when it can.
int ReadValue(const netsnmp_variable_list& from, BObjectSyntax& value)
{
    switch (from.type) {
    case ASN_INTEGER:
        if (*from.val.integer < INT_MIN || *from.val.integer > INT_MAX)
            return eSnmpWrongEncoding;
        value.SetInt(static_cast<int>(*from.val.integer));
        return eSnmpNoError;
    case ASN_COUNTER:
        value.SetCounter(static_cast<unsigned>(*from.val.integer));
        return eSnmpNoError;
    case ASN_GAUGE:
        value.SetGauge(static_cast<unsigned>(*from.val.integer));
        return eSnmpNoError;
    case ASN_TIMETICKS:
        value.SetTimeTicks(static_cast<unsigned>(*from.val.integer));
        return eSnmpNoError;
    case ASN_COUNTER64:
        value.SetCtr64(SCTR64{static_cast<unsigned>(from.val.counter64->high),
                              static_cast<unsigned>(from.val.counter64->low)});
        return eSnmpNoError;
    case ASN_OCTET_STR:
        value.SetOctets(BOctetString(static_cast<unsigned>(from.val_len), from.val.string));
        return eSnmpNoError;
    case ASN_OPAQUE:
        value.SetOpaque(BOctetString(static_cast<unsigned>(from.val_len), from.val.string));
        return eSnmpNoError;
    case ASN_OBJECT_ID: {
        BObjectIdentifier arcs;
        if (!ReadOid(from.val.objid, from.val_len / sizeof(oid), arcs))
            return eSnmpWrongLength;
        value.SetObjectId(arcs);
        return eSnmpNoError;
    }
    case ASN_IPADDRESS:
        if (from.val_len != 4)
            return eSnmpWrongLength;
        value.SetIpAddress(BIpAddress(from.val.string[0], from.val.string[1], from.val.string[2],
                                      from.val.string[3]));
        return eSnmpNoError;
    case ASN_NULL:
        value.SetNull();
        return eSnmpNoError;
    default:
        return eSnmpWrongType;
    }
}

// Only a set carries values; the others' are ignored (RFC 3416 section 4.2).
bool ReadBindings(const netsnmp_pdu& pdu, SRequest& request)
{
    unsigned count = 0;
    for (const netsnmp_variable_list* from = pdu.variables; from; from = from->next_variable)
        ++count;
    if (!request.bindings.Reserve(count))
        return false;
    int index = 0;
    for (const netsnmp_variable_list* from = pdu.variables; from; from = from->next_variable) {
        ++index;
        BObjectIdentifier name;
        BObjectSyntax value;
        if (!ReadOid(from->name, from->name_length, name))
            return false;
        int status = pdu.command == SNMP_MSG_SET ? ReadValue(*from, value) : eSnmpNoError;
        if (status != eSnmpNoError && request.unfitStatus == eSnmpNoError) {
            request.unfitStatus = status;
            request.unfitIndex = index;
        }
        if (!request.bindings.Append(name, value))
            return false;
    }
    return true;
}

BString TextOf(const char* text, size_t length)
{
    return text ? BString(text, static_cast<unsigned>(length)) : BString();
}

// By community, or by user.
bool ReadRequester(const netsnmp_pdu& pdu, SRequest& request)
{
    switch (pdu.version) {
    case SNMP_VERSION_1:
    case SNMP_VERSION_2c:
        request.protocol = pdu.version == SNMP_VERSION_1 ? eSnmpV1 : eSnmpV2c;
        if (pdu.community)
            request.community.assign(reinterpret_cast<const char*>(pdu.community),
                                     pdu.community_len);
        return true;
    case SNMP_VERSION_3:
        request.protocol = eSnmpV3;
        request.security.securityModel = pdu.securityModel;
        request.security.securityName = TextOf(pdu.securityName, pdu.securityNameLen);
        request.security.securityLevel = pdu.securityLevel;
        request.context = TextOf(pdu.contextName, pdu.contextNameLen);
        request.engineIdLength = pdu.securityEngineIDLen;
        return pdu.securityModel == SNMP_SEC_MODEL_USM;
    default:
        return false;
    }
}

size_t FillOid(const BObjectIdentifier& from, oid* out)
{
    for (unsigned i = 0; i < from.Length(); ++i)
        out[i] = from[i];
    return from.Length();
}

netsnmp_variable_list* WriteBinding(netsnmp_variable_list** tail, const BVarBind& binding)
{
    oid name[MAX_OID_LEN];
    if (binding.Name().Length() > MAX_OID_LEN)
        return nullptr;
    size_t count = FillOid(binding.Name(), name);
    const BObjectSyntax& value = binding.Value();
    unsigned char type = value.Syntax();
    switch (type) {
    case eAsnInteger: {
        long number = value.Int();
        return snmp_varlist_add_variable(tail, name, count, type, &number, sizeof number);
    }
    case eAsnCounter32:
    case eAsnGauge32:
    case eAsnTimeTicks: {
        unsigned long number = value.Unsigned();
        return snmp_varlist_add_variable(tail, name, count, type, &number, sizeof number);
    }
    case eAsnCounter64: {
        counter64 number = {value.Ctr64().high, value.Ctr64().low};
        return snmp_varlist_add_variable(tail, name, count, type, &number, sizeof number);
    }
    case eAsnOctetString:
    case eAsnOpaque:
        return snmp_varlist_add_variable(tail, name, count, type, value.Octets().Data(),
                                         value.Octets().Length());
    case eAsnObjectId: {
        oid arcs[MAX_OID_LEN];
        if (value.ObjectId().Length() > MAX_OID_LEN)
            return nullptr;
        size_t arcCount = FillOid(value.ObjectId(), arcs);
        return snmp_varlist_add_variable(tail, name, count, type, arcs, arcCount * sizeof(oid));
    }
    case eAsnIpAddress: {
        BIpAddress address = value.IpAddress();
        unsigned char bytes[4] = {address[0], address[1], address[2], address[3]};
        return snmp_varlist_add_variable(tail, name, count, type, bytes, sizeof bytes);
    }
    default: // null and the exceptions carry nothing
        return snmp_varlist_add_variable(tail, name, count, type, nullptr, 0);
    }
}

// Puts bindings at the end of a PDU.
class BBindingWriter {
public:
    explicit BBindingWriter(netsnmp_pdu& pdu) : m_tail(&pdu.variables) {}

    bool Write(const BVarBind& binding)
    {
        netsnmp_variable_list* added = WriteBinding(m_tail, binding);
        if (!added)
            return false;
        m_tail = &added->next_variable;
        return true;
    }

private:
    netsnmp_variable_list** m_tail;
};

bool WriteBindings(netsnmp_pdu& pdu, const std::vector<BVarBind>& bindings)
{
    BBindingWriter writer(pdu);
    return std::all_of(bindings.begin(), bindings.end(),
                       [&](const BVarBind& binding) { return writer.Write(binding); });
}

// What every notification of SNMPv2 starts with (RFC 3416 section 4.2.6).
bool WriteHead(BBindingWriter& writer, const SNotification& notification)
{
    const BTrapOIDs* oids = BTrapOIDs::GetInstance();
    if (!oids)
        return false;
    BObjectSyntax upTime;
    upTime.SetTimeTicks(notification.upTime);
    BObjectSyntax trapOid;
    trapOid.SetObjectId(notification.trapOid);
    return writer.Write(BVarBind(oids->SysUpTime(), upTime)) &&
           writer.Write(BVarBind(oids->SnmpTrapOid(), trapOid));
}

bool WriteV1(netsnmp_pdu& pdu, const SNotification& notification, const unsigned char (&agent)[4])
{
    unsigned count = notification.enterprise.Length();
    if (count > MAX_OID_LEN)
        return false;
    pdu.enterprise = static_cast<oid*>(calloc(MAX_OID_LEN, sizeof(oid)));
    if (!pdu.enterprise)
        return false;
    pdu.enterprise_length = FillOid(notification.enterprise, pdu.enterprise);
    std::memcpy(pdu.agent_addr, agent, sizeof agent);
    pdu.trap_type = notification.generic;
    pdu.specific_type = notification.specific;
    pdu.time = notification.upTime;
    return true;
}

bool WriteNotification(netsnmp_pdu& pdu, const SNotification& notification,
                       const unsigned char (&agent)[4])
{
    BBindingWriter writer(pdu);
    bool isBegun = pdu.command == SNMP_MSG_TRAP ? WriteV1(pdu, notification, agent)
                                                : WriteHead(writer, notification);
    for (int i = 0; isBegun && i < static_cast<int>(notification.bindings.Count()); ++i)
        isBegun = writer.Write(notification.bindings[i]);
    return isBegun;
}

// The copy shares nothing with the request; its bindings only when asked for.
netsnmp_pdu* CopyPdu(netsnmp_pdu& request, bool withBindings)
{
    netsnmp_variable_list* bindings = request.variables;
    if (!withBindings)
        request.variables = nullptr;
    netsnmp_pdu* copy = snmp_clone_pdu(&request);
    request.variables = bindings;
    return copy;
}

} // namespace

bool IsRequest(const netsnmp_pdu& pdu)
{
    switch (pdu.command) {
    case SNMP_MSG_GET:
    case SNMP_MSG_GETNEXT:
    case SNMP_MSG_GETBULK:
    case SNMP_MSG_SET:
        return true;
    default:
        return false;
    }
}

void TakeEnds(const netsnmp_indexed_addr_pair& ends, SRequest& request)
{
    const unsigned port = request.local.Port();
    request.remote = ReadAddress(ends.remote_addr);
    request.local = ReadAddress(ends.local_addr);
    request.local.SetPort(port);
}

bool ReadRequest(const netsnmp_pdu& pdu, SRequest& request)
{
    if (!IsRequest(pdu) || !ReadRequester(pdu, request) || !ReadAddresses(pdu, request))
        return false;
    request.pduType = pdu.command;
    request.requestId = static_cast<int>(pdu.reqid);
    if (pdu.command == SNMP_MSG_GETBULK) {
        request.nonRepeaters = ClampToInt(pdu.non_repeaters);
        request.maxRepetitions = ClampToInt(pdu.max_repetitions);
    }
    return ReadBindings(pdu, request);
}

bool ReadRemote(const netsnmp_pdu& pdu, BTransportAddress& remote)
{
    netsnmp_indexed_addr_pair ends = {};
    if (pdu.transport_data && pdu.transport_data_length == static_cast<int>(sizeof(sockaddr_in6)))
        std::memcpy(&ends.remote_addr, pdu.transport_data, sizeof(sockaddr_in6));
    else if (!ReadEnds(pdu, ends))
        return false;
    remote = ReadAddress(ends.remote_addr);
    return true;
}

netsnmp_pdu* MakeNotification(const SNotification& notification, const SReceiver& receiver,
                              const unsigned char (&agent)[4])
{
    bool isV1 = receiver.protocol == eSnmpV1;
    const unsigned command = isV1                ? SNMP_MSG_TRAP
                             : receiver.isInform ? SNMP_MSG_INFORM
                                                 : SNMP_MSG_TRAP2;
    netsnmp_pdu* pdu = snmp_pdu_create(static_cast<int>(command));
    if (!pdu || WriteNotification(*pdu, notification, agent))
        return pdu;
    snmp_free_pdu(pdu);
    return nullptr;
}

netsnmp_pdu* MakeReport(netsnmp_pdu& request, const oid* counter, size_t count, unsigned value)
{
    netsnmp_pdu* pdu = CopyPdu(request, false);
    if (!pdu)
        return nullptr;
    pdu->command = SNMP_MSG_REPORT;
    pdu->errstat = 0;
    pdu->errindex = 0;
    u_long number = value;
    if (snmp_varlist_add_variable(&pdu->variables, counter, count, ASN_COUNTER, &number,
                                  sizeof number))
        return pdu;
    snmp_free_pdu(pdu);
    return nullptr;
}

netsnmp_pdu* MakeResponse(netsnmp_pdu& request, const SResponse& response)
{
    netsnmp_pdu* pdu = CopyPdu(request, response.echo);
    if (!pdu)
        return nullptr;
    pdu->command = SNMP_MSG_RESPONSE;
    pdu->errstat = response.status;
    pdu->errindex = response.index;
    if (!response.echo && !WriteBindings(*pdu, response.bindings)) {
        snmp_free_pdu(pdu);
        return nullptr;
    }
    return pdu;
}

} // namespace VLK::host
