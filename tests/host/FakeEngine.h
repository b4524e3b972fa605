// An engine that opens nothing and keeps what it is given to send.
#pragma once

#include "host/Engine.h"
#include "host/HostError.h"

#include <new>
#include <vector>

namespace VLK {
namespace Test {

class FakeEngine : public host::IEngine {
public:
    struct SSent {
        unsigned receiver;
        host::SNotification notification;
    };

    host::BTransportAddress Open(const host::BTransportAddress& address,
                                 host::STraffic& traffic) override
    {
        host::BTransportAddress opened = address;
        if (opened.Port() == 0)
            opened.SetPort(4711);
        traffics.push_back(&traffic);
        return opened;
    }
    unsigned AddReceiver(const host::SReceiver& receiver,
                         std::shared_ptr<host::SDelivery> delivery) override
    {
        if (receiver.address.ToString() == refused)
            throw host::BHostError(host::eExitUsage, "cannot send to " + refused);
        receivers.push_back(receiver);
        deliveries.push_back(std::move(delivery));
        return static_cast<unsigned>(receivers.size() - 1);
    }
    void RemoveReceiver(unsigned receiver) override { removed.push_back(receiver); }
    void Notify(unsigned receiver, host::SNotification notification) override
    {
        if (isOutOfMemory)
            throw std::bad_alloc();
        sent.push_back({receiver, std::move(notification)});
    }
    void Serve(int) override {}

    std::vector<host::STraffic*> traffics;
    std::vector<host::SReceiver> receivers;
    std::vector<std::shared_ptr<host::SDelivery>> deliveries;
    std::vector<unsigned> removed;
    std::string refused; // an address that cannot be sent to
    std::vector<SSent> sent;
    bool isOutOfMemory = false;
};

} // namespace Test
} // namespace VLK
