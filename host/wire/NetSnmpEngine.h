// The protocol engine on Net-SNMP's client library: SNMPv1, SNMPv2c and, when asked
// to, SNMPv3 with USM over UDP.
//
// It counts what it receives, and sends notifications. It reads and writes no files,
// and loads no MIBs. Everything but get, get-next, get-bulk and set requests is
// ignored; a message of SNMPv3 gets the report that it may ask for (RFC 3412 section
// 7.2, RFC 3414 section 3.2, RFC 3413 section 3.2).
//
// The thread that reads a request runs it as well. When it takes long, another
// thread goes on with reading (see BRelay), so that no other request waits. Up to
// `workers` requests run at once, one SET among them; up to 64 other SETs wait for
// it. What comes then is dropped and counted.
//
// Threads: construct, Open(), Serve() and destroy on one thread; the request
//          handler is called on it and on others, which end with Serve().
//          ReplaceUsers() on any, one at a time; what INotifier has on any, until it is
//          destroyed.
// Errors:  SpeakV3(), ReplaceUsers(), Open() and AddReceiver() throw BHostError.
#pragma once

#include "host/Engine.h"
#include "host/EngineIdentity.h"
#include "host/access/Users.h"
#include "modules/SnmpCounters.h"

#include <memory>
#include <vector>

namespace VLK::host {

class BNetSnmpEngine : public IEngine {
public:
    // Both outlive it.
    BNetSnmpEngine(IRequestHandler& handler, modules::SSnmpCounters& counters,
                   unsigned workers = DefaultWorkers());
    ~BNetSnmpEngine() override;
    static unsigned DefaultWorkers(); // four for each processor

    // Before anything is opened, and once in a process; until then messages of SNMPv3
    // are of a bad version.
    void SpeakV3(const SEngineIdentity& engine, const std::vector<SUser>& users);
    // Takes other users, while it serves. Without SpeakV3() it does nothing. Throws
    // BHostError, and nothing is changed, for what the wire library cannot do.
    void ReplaceUsers(const std::vector<SUser>& users);
    BTransportAddress Open(const BTransportAddress& address, STraffic& traffic) override;
    unsigned AddReceiver(const SReceiver& receiver, std::shared_ptr<SDelivery> delivery) override;
    void RemoveReceiver(unsigned receiver) override;
    void Notify(unsigned receiver, SNotification notification) override;
    void Serve(int stopDescriptor) override;
    // On any thread.
    SEngineLoad Load() const;

private:
    struct SArrival;
    struct SSession;
    struct SState;
    struct SServingRelay;
    std::unique_ptr<SState> m_state;
};

} // namespace VLK::host
