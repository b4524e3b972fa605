// Who asks with SNMPv3: the users of the user-based security model (RFC 3414).
#pragma once

#include <string>
#include <vkmibh/labels.h>

namespace VLK::host {

// Protocols are named as RFC 7860 and RFC 3826 abbreviate them, "SHA-256" and "AES";
// without a name there is none. Privacy needs authentication.
struct SUser {
    std::string name;
    std::string auth;
    std::string authPassphrase;
    std::string priv;
    std::string privPassphrase;

    ESecurityLevel StrongestLevel() const
    {
        if (auth.empty())
            return eNoAuthNoPriv;
        return priv.empty() ? eAuthNoPriv : eAuthPriv;
    }
};

} // namespace VLK::host
