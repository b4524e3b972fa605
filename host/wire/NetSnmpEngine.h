// The protocol engine on Net-SNMP's client library: SNMPv1 and SNMPv2c over
// UDP.
//
// It counts what it receives, and sends notifications. It reads and writes no files,
// and loads no MIBs. Everything but get, get-next, get-bulk and set requests is
// ignored, SNMPv3 too.
//
// The thread that reads a request runs it as well. When it takes long, another
// thread goes on with reading (see BRelay), so that no other request waits. Up to
// `workers` requests run at once, and half as many SETs; what comes then is dropped
// and counted.
//
// Threads: construct, Open(), Serve() and destroy on one thread; the request
//          handler is called on it and on others, which end with Serve(). Notify()
//          on any, until it is destroyed.
// Errors:  Open() throws BHostError.
#pragma once

#include "host/Engine.h"
#include "modules/SnmpCounters.h"

#include <memory>

namespace VLK::host {

class BNetSnmpEngine : public IEngine {
public:
    // Both outlive it.
    BNetSnmpEngine(IRequestHandler& handler, modules::SSnmpCounters& counters,
                   unsigned workers = DefaultWorkers());
    ~BNetSnmpEngine() override;
    static unsigned DefaultWorkers(); // four for each processor

    BTransportAddress Open(const BTransportAddress& address, STraffic& traffic) override;
    unsigned AddReceiver(const SReceiver& receiver, SDelivery& delivery) override;
    void Notify(unsigned receiver, SNotification notification) override;
    void Serve(int stopDescriptor) override;

private:
    struct SArrival;
    struct SSession;
    struct SState;
    std::unique_ptr<SState> m_state;
};

} // namespace VLK::host
