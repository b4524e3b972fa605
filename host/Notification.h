// Notifications and their receivers, free of any protocol library's types.
#pragma once

#include "host/Request.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <vkmibh/labels.h>
#include <vkmibh/traps.h>

namespace VLK::host {

// A notification in both forms, at the time it was raised.
struct SNotification {
    BObjectIdentifier trapOid;
    BObjectIdentifier enterprise;
    ESNMPv1TrapType generic = eTrapEnterpriseSpecific;
    int specific = 0;
    unsigned upTime = 0; // sysUpTime
    BVarBindList bindings;
};

struct SReceiver {
    BTransportAddress address;
    EProtocol protocol = eSnmpV2c;
    std::string community; // SNMPv1 and SNMPv2c
    // SNMPv3: a user of this agent, and the level of the message.
    std::string user;
    ESecurityLevel level = eNoAuthNoPriv;
    bool isInform = false; // not with SNMPv1
    // Of informs: how long an answer is waited for, and how often it is asked
    // again.
    std::chrono::milliseconds timeout{15000};
    unsigned retries = 3;
};

// What becomes of the notifications for one receiver.
//
// Threads: the engine counts; any may read, suspend and resume.
struct SDelivery {
    // Nothing is sent, nothing again either.
    std::atomic<bool> isSuspended{false};
    std::atomic<unsigned> sent{0};
    // To be encoded or sent; an inform is tried as often as it may be sent.
    std::atomic<unsigned> failed{0};
    // Of informs that were sent.
    std::atomic<unsigned> acknowledged{0};
    std::atomic<unsigned> retried{0};
    std::atomic<unsigned> givenUp{0};
    // For want of room: too many wait to be sent, or to be acknowledged.
    std::atomic<unsigned> overflowed{0};
};

class INotifier {
public:
    virtual ~INotifier() = default;
    // On any thread, each of these, while it serves too.
    //
    // The number to notify by, which is given once only. Throws BHostError.
    virtual unsigned AddReceiver(const SReceiver& receiver,
                                 std::shared_ptr<SDelivery> delivery) = 0;
    // Nothing is sent to it from here on, nothing again either.
    virtual void RemoveReceiver(unsigned receiver) = 0;
    // Has the notification sent by the thread that serves, and does not wait for it.
    // One for a receiver that was removed goes nowhere.
    virtual void Notify(unsigned receiver, SNotification notification) = 0;
};

} // namespace VLK::host
