// Notifications over Net-SNMP's client library, to any number of receivers.
#pragma once

#include "host/Descriptor.h"
#include "host/Notification.h"
#include "host/wire/MessageReader.h"

#include <deque>
#include <list>
#include <memory>
#include <mutex>
#include <poll.h>

namespace VLK::host {

// Sends what is queued, and asks for informs until they are acknowledged. Nothing
// waits for a receiver: sockets do not block, and a deadline is one of the poll.
//
// Ownership: the reader outlives it.
// Threads:   Notify() on any; all else on that of the wire library.
// Errors:    Add() throws BHostError.
class BNetSnmpReceivers {
public:
    // Notifications that wait to be sent, and informs of one receiver that wait to
    // be acknowledged; more are dropped and counted.
    static constexpr size_t kMostQueued = 256;
    static constexpr size_t kMostPending = 64;

    explicit BNetSnmpReceivers(BMessageReader& reader);
    ~BNetSnmpReceivers();
    // Before the wire library ends.
    void Close();

    unsigned Add(const SReceiver& receiver, SDelivery& delivery);
    void Notify(unsigned receiver, SNotification&& notification);

    // Adds what Serve() waits for.
    void AddWaits(std::vector<pollfd>& waits) const;
    // Milliseconds after which Serve() has something to do anyway; -1 for none.
    int Patience() const;
    // Does what is to be done, given the waits as poll() left them.
    void Serve(const pollfd* waits);

private:
    struct SPending;
    struct SLink;
    struct SQueued {
        unsigned receiver;
        SNotification notification;
    };

    void SendQueued();
    void Send(SLink& link, SNotification&& notification);
    bool SendInform(SPending& pending);
    void Sweep(SLink& link);
    bool GoesOn(SPending& pending);

    BMessageReader& m_reader;
    BDescriptor m_wake; // readable when something is queued
    std::vector<std::unique_ptr<SLink>> m_links;
    std::mutex m_lock;
    std::deque<SQueued> m_queue; // under the lock
};

} // namespace VLK::host
