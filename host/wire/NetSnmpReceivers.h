// Notifications over Net-SNMP's client library, to any number of receivers.
#pragma once

#include "host/Descriptor.h"
#include "host/Mutex.h"
#include "host/Notification.h"
#include "host/PollSet.h"
#include "host/access/Users.h"
#include "host/wire/MessageReader.h"

#include <deque>
#include <list>
#include <map>
#include <memory>

namespace VLK::host {

// Sends what is queued, and asks for informs until they are acknowledged. Nothing
// waits for a receiver: sockets do not block, and Patience() tells the next deadline.
//
// Ownership: the reader outlives it.
// Threads:   Notify() and Remove() on any; all else under the wire library's lock, and
//            Patience() and Serve() on the thread that serves.
// Errors:    Add() throws BHostError. What cannot be sent for want of memory is counted
//            as failed.
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

    // Until then no receiver of SNMPv3 can be added. The users it sends as.
    void SpeakV3(const std::vector<SUser>& users) { m_users = users; }
    // The receiver's number; none is given twice.
    unsigned Add(const SReceiver& receiver, std::shared_ptr<SDelivery> delivery);
    // Its session ends when something is served next.
    void Remove(unsigned receiver);
    void Notify(unsigned receiver, SNotification&& notification);

    // Readable when Serve() has something to do.
    int Descriptor() const { return m_polled.Descriptor(); }
    // Milliseconds after which it has anyway; -1 for none.
    int Patience() const;
    void Serve();

private:
    struct SPending;
    struct SLink;
    struct SQueued {
        unsigned receiver;
        SNotification notification;
    };

    void ServeLink(SLink& link, bool hasMessage);
    void CarryOut();
    void Send(SQueued& queued);
    void Send(SLink& link, SNotification&& notification);
    bool SendInform(SPending& pending);
    void Sweep(SLink& link);
    bool GoesOn(SPending& pending);

    BMessageReader& m_reader;
    std::vector<SUser> m_users;
    BDescriptor m_wake; // readable when there is something to carry out
    BPollSet m_polled;  // that, and the links by their numbers
    std::map<unsigned, std::unique_ptr<SLink>> m_links;
    unsigned m_next = 0;
    BMutex m_lock;
    std::deque<SQueued> m_queue VKMIBH_TSA(guarded_by(m_lock));
    std::map<unsigned, std::shared_ptr<SDelivery>>
        m_deliveries VKMIBH_TSA(guarded_by(m_lock));                // of those not removed
    std::vector<unsigned> m_removed VKMIBH_TSA(guarded_by(m_lock)); // with room for all links
};

} // namespace VLK::host
