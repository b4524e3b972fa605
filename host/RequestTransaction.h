// What the library may ask about the request it is serving.
#pragma once

#include "host/Request.h"

#include <vkmibh/transactions.h>

namespace VLK::host {

// Open from construction to destruction, which are on the thread that serves the
// request.
class BRequestTransaction : public BTransaction {
public:
    BRequestTransaction(const SRequest& request, const BSecurityParams& security,
                        const BString& context);
    ~BRequestTransaction() override;
    BRequestTransaction(const BRequestTransaction&) = delete;
    BRequestTransaction& operator=(const BRequestTransaction&) = delete;

    bool GetParams(BTransactionParameters& params) override;
    bool GetLocalIpAddress(BIpAddress& address) override;
    bool GetRemoteIpAddress(BIpAddress& address) override;
    bool GetLocalUdpPort(unsigned int& port) override;
    bool GetRemoteUdpPort(unsigned int& port) override;

    unsigned Id() const { return m_id; }

    // The request that the calling thread serves; null when it serves none, as the
    // console's.
    static const SRequest* OfThisThread();

private:
    const SRequest& m_request;
    const BSecurityParams& m_security;
    const BString& m_context;
    unsigned m_id;
};

} // namespace VLK::host
