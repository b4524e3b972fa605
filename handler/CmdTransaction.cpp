// The transaction of a console command.
#include <vkmibh/handler.h>

#include <utility>

namespace VLK {

namespace {
constexpr int kConsoleProtocolId = 6;
} // namespace

BMibHandler::BCLITransaction::BCLITransaction(const BSecurityParams& security,
                                              const BString& contextName,
                                              const BIpAddress& localAddress)
    : BTransaction(kConsoleProtocolId), m_pduType(-1), m_securityModel(security.securityModel),
      m_securityName(security.securityName), m_securityLevel(security.securityLevel),
      m_contextName(contextName), m_request(0), m_localAddress(localAddress)
{
}

BMibHandler::BCLITransaction::~BCLITransaction() = default;

bool BMibHandler::BCLITransaction::Describes(const BSecurityParams& security,
                                             const BString& contextName) const
{
    return m_securityName == security.securityName && m_contextName == contextName;
}

bool BMibHandler::BCLITransaction::GetParams(BTransactionParameters& params)
{
    BString securityName(m_securityName);
    BString contextName(m_contextName);
    if (securityName != m_securityName || contextName != m_contextName)
        return false;
    params.protocolId = ProtocolId();
    params.pduType = m_pduType;
    params.request = m_request;
    params.securityModel = m_securityModel;
    params.securityName = std::move(securityName);
    params.securityLevel = m_securityLevel;
    params.contextName = std::move(contextName);
    return true;
}

bool BMibHandler::BCLITransaction::GetLocalIpAddress(BIpAddress& address)
{
    // CONTRACT: 0.0.0.0 counts as not known, also when it was given with -a.
    if (!m_localAddress[0] && !m_localAddress[1] && !m_localAddress[2] && !m_localAddress[3])
        return false;
    address = m_localAddress;
    return true;
}

} // namespace VLK
