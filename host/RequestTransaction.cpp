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

thread_local const SRequest* t_request = nullptr;

} // namespace

BRequestTransaction::BRequestTransaction(const SRequest& request, const BSecurityParams& security,
                                         const BString& context)
    : BTransaction(request.protocol), m_request(request), m_security(security), m_context(context),
      m_id(BTransactions::GetInstance()->StartTransaction(this))
{
    t_request = &request;
}

BRequestTransaction::~BRequestTransaction()
{
    t_request = nullptr;
    BTransactions::GetInstance()->EndTransaction(m_id);
}

const SRequest* BRequestTransaction::OfThisThread() { return t_request; }

bool BRequestTransaction::GetParams(BTransactionParameters& params)
{
    params.protocolId = ProtocolId();
    params.pduType = m_request.pduType;
    params.request = m_request.requestId;
    params.securityModel = m_security.securityModel;
    params.securityName = m_security.securityName;
    params.securityLevel = m_security.securityLevel;
    params.contextName = m_context;
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
