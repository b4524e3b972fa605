// The protocol engine on Net-SNMP's client library: SNMPv1 and SNMPv2c over
// UDP.
//
// It counts what it receives, and sends notifications. It reads and writes no files, and loads no
// MIBs. Everything but get, get-next, get-bulk and set requests is ignored, SNMPv3 too.
//
// Threads: construct, Open(), Serve() and destroy on one thread; the request
//          handler is called on it. Notify() on any, until it is destroyed.
// Errors:  Open() throws BHostError.
#pragma once

#include "host/Engine.h"
#include "modules/SnmpCounters.h"

#include <memory>

namespace VLK::host {

class BNetSnmpEngine : public IEngine {
public:
    // Both outlive it.
    BNetSnmpEngine(IRequestHandler& handler, modules::SSnmpCounters& counters);
    ~BNetSnmpEngine() override;

    BTransportAddress Open(const BTransportAddress& address, STraffic& traffic) override;
    unsigned AddReceiver(const SReceiver& receiver, SDelivery& delivery) override;
    void Notify(unsigned receiver, SNotification notification) override;
    void Serve(int stopDescriptor) override;

private:
    struct SSession;
    struct SState;
    std::unique_ptr<SState> m_state;
};

} // namespace VLK::host
