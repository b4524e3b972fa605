// What an agent is to the managers of SNMPv3: its engine ID, and how often it has
// started under it (RFC 3414 section 2.2).
#pragma once

#include "host/Store.h"

#include <string>

namespace VLK::host {

constexpr int kMostBoots = 0x7fffffff;
// Of the store; a reset leaves it.
constexpr const char* kEngineSection = "vkagentd.engine";

struct SEngineIdentity {
    std::string id; // RFC 3411 section 5
    int boots = 1;
};

// The identity of the start that is going on, which is on the disk when this returns:
// no number of boots is used twice under one engine ID. The engine ID is made of
// random octets once. The number of boots stays when it has reached kMostBoots:
// then authenticated requests are answered under a new engine ID only. Without a store
// the engine ID is a new one.
//
// Throws BHostError when the store cannot be written.
SEngineIdentity StartEngine(BStore* store);

} // namespace VLK::host
