// The network interfaces of a host as the kernel tells of them, and who tells.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace VLK::modules {

// ifAdminStatus and ifOperStatus (RFC 2863 section 6); the former has the first
// three values only.
enum EIfStatus : int {
    eIfUp = 1,
    eIfDown = 2,
    eIfTesting = 3,
    eIfUnknown = 4,
    eIfDormant = 5,
    eIfNotPresent = 6,
    eIfLowerLayerDown = 7
};

// Of the registry IANAifType-MIB.
enum EIfType : int {
    eIfTypeOther = 1,
    eIfTypeEthernetCsmacd = 6,
    eIfTypeTokenRing = 9,
    eIfTypeFddi = 15,
    eIfTypePpp = 23,
    eIfTypeSoftwareLoopback = 24,
    eIfTypeSlip = 28,
    eIfTypeFrameRelay = 32,
    eIfTypeAtm = 37,
    eIfTypeIeee80211 = 71,
    eIfTypeHdlc = 118,
    eIfTypeTunnel = 131,
    eIfTypeL2Vlan = 135,
    eIfTypeIeee1394 = 144,
    eIfTypeIeee8023adLag = 161,
    eIfTypeInfiniband = 199,
    eIfTypeBridge = 209
};

using CCounter = std::optional<std::uint64_t>;

// Named after the objects of RFC 2863 that they are the whole of.
struct SIfCounters {
    CCounter inOctets;
    CCounter inUcastPkts;
    CCounter inMulticastPkts;
    CCounter inDiscards;
    CCounter inErrors;
    CCounter outOctets;
    CCounter outUcastPkts;
    CCounter outDiscards;
    CCounter outErrors;
};

// What is not told has no value (RFC 2863 section 3.1.18).
struct SInterface {
    unsigned index = 0;
    std::string name;
    std::string alias;
    std::string address; // its bytes
    EIfType type = eIfTypeOther;
    EIfStatus admin = eIfDown;
    EIfStatus oper = eIfUnknown;
    std::optional<unsigned> mtu;
    std::optional<std::uint64_t> speed; // bits per second; 0: it has no bandwidth of its own
    std::optional<bool> isPromiscuous;
    std::optional<bool> hasConnector;
    SIfCounters counters;
    unsigned master = 0;        // the interface that operates on top of this one
    bool hasLowerLayer = false; // it says itself that it operates on top of another
};

// Tells of the interfaces.
//
// Ownership: outlives who asks it.
// Threads:   any, several at once.
// Errors:    throws std::system_error when they cannot be told, std::bad_alloc
//            without memory.
class IInterfaces {
public:
    virtual ~IInterfaces() = default;
    // All there are, in rising order of their indexes, each once.
    virtual std::vector<SInterface> Read() = 0;
};

// Milliseconds of uptime, on the clock of sysUpTime.
using FUptime = std::function<std::uint64_t()>;

// The host's: what /proc/uptime tells in hundredths of a second.
std::uint64_t HostUptime();

// TimeTicks, modulo 2^32 (RFC 2578 section 7.1.8).
constexpr unsigned TicksOf(std::uint64_t milliseconds)
{
    return static_cast<unsigned>(milliseconds / 10);
}

} // namespace VLK::modules
