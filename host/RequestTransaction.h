// What the library may ask about the request it is serving.
#pragma once

#include "host/Request.h"

#include <vkmibh/transactions.h>

namespace VLK::host {

// The security parameters of a request: model 1 or 2, the community as
// security name, noAuthNoPriv (RFC 3584 section 5.2).
BSecurityParams SecurityOf(const SRequest& request);

// Open from construction to destruction.
class BRequestTransaction : public BTransaction {
public:
    BRequestTransaction(const SRequest& request, const BSecurityParams& security);
    ~BRequestTransaction() override;
    BRequestTransaction(const BRequestTransaction&) = delete;
    BRequestTransaction& operator=(const BRequestTransaction&) = delete;

    bool GetParams(BTransactionParameters& params) override;
    bool GetLocalIpAddress(BIpAddress& address) override;
    bool GetRemoteIpAddress(BIpAddress& address) override;
    bool GetLocalUdpPort(unsigned int& port) override;
    bool GetRemoteUdpPort(unsigned int& port) override;

    unsigned Id() const { return m_id; }

private:
    const SRequest& m_request;
    const BSecurityParams& m_security;
    unsigned m_id;
};

} // namespace VLK::host
