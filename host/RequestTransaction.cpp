#include "host/RequestTransaction.h"

namespace VLK::host {

namespace {

bool ToIpAddress(const BTransportAddress& from, BIpAddress& address)
{
    const unsigned char* bytes = from.V4Bytes();
    if (!bytes)
        return false;
    address = BIpAddress(bytes[0], bytes[1], bytes[2], bytes[3]);
    return true;
}

} // namespace

BSecurityParams SecurityOf(const SRequest& request)
{
    BSecurityParams security;
    security.securityModel = request.protocol == eSnmpV1 ? 1 : 2;
    security.securityName =
        BString(request.community.data(), static_cast<unsigned>(request.community.size()));
    security.securityLevel = 1;
    return security;
}

BRequestTransaction::BRequestTransaction(const SRequest& request, const BSecurityParams& security)
    : BTransaction(request.protocol), m_request(request), m_security(security),
      m_id(BTransactions::GetInstance()->StartTransaction(this))
{
}

BRequestTransaction::~BRequestTransaction() { BTransactions::GetInstance()->EndTransaction(m_id); }

bool BRequestTransaction::GetParams(BTransactionParameters& params)
{
    params.protocolId = ProtocolId();
    params.pduType = m_request.pduType;
    params.request = m_request.requestId;
    params.securityModel = m_security.securityModel;
    params.securityName = m_security.securityName;
    params.securityLevel = m_security.securityLevel;
    params.contextName = BString();
    return true;
}

bool BRequestTransaction::GetLocalIpAddress(BIpAddress& address)
{
    return ToIpAddress(m_request.local, address);
}

bool BRequestTransaction::GetRemoteIpAddress(BIpAddress& address)
{
    return ToIpAddress(m_request.remote, address);
}

bool BRequestTransaction::GetLocalUdpPort(unsigned int& port)
{
    port = m_request.local.Port();
    return true;
}

bool BRequestTransaction::GetRemoteUdpPort(unsigned int& port)
{
    port = m_request.remote.Port();
    return true;
}

} // namespace VLK::host
