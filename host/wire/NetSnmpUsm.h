// The user-based security model of the wire library: one engine and its users.
#pragma once

#include "host/EngineIdentity.h"
#include "host/Mutex.h"
#include "host/Notification.h"
#include "host/access/Users.h"
#include "modules/SnmpCounters.h"

#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>
#include <vector>

namespace VLK::host {

// Once, before the first session. Whoever knows none of the users learns the engine ID
// only. Reads and writes no file. Throws BHostError for what the wire library cannot do.
void StartUsm(const SEngineIdentity& engine, const std::vector<SUser>& users);

// Has other users take the place of the old ones: those that have gone are unknown, those
// that are as they were stay untouched. `lock` is held for each single one. Throws
// BHostError, and nothing is changed, for what the wire library cannot do.
void ReplaceUsers(const SEngineIdentity& engine, const std::vector<SUser>& old,
                  const std::vector<SUser>& users, BMutex& lock);

// Makes of the settings of a session those of a receiver of SNMPv3. For traps the engine
// is our own, for informs the receiver's, which is not known yet; nothing is asked of it
// here. The settings point to the receiver's user. False without memory.
bool SetSecurity(netsnmp_session& settings, const SReceiver& receiver);
// Once the session is made of them: the wire library does not ask for the receiver's
// engine when it likes, since it waits for the answer.
void LeaveEngineToUs(netsnmp_session& session, const SReceiver& receiver);

// Makes the session's user, with his keys for the engine that the session is with. False
// when that cannot be.
bool MakeUser(const netsnmp_session& session, const std::vector<SUser>& users);
// It is with that engine, or with none. False without memory: nothing is changed then.
bool SetEngine(netsnmp_session& session, const std::string& engineId);
// The message that is answered with the engine ID of who gets it (RFC 3414 section 4). Null
// without memory.
netsnmp_pdu* MakeEngineProbe();

// What is wrong with a message of SNMPv3 that the wire library has let through: the
// number of its counter, or -1 for nothing.
int FaultOf(const netsnmp_pdu& pdu);

// Counts it, and makes the report on it; null when there is none to be sent.
netsnmp_pdu* Report(netsnmp_pdu& request, int counter);

// What the wire library has counted of messages of SNMPv3.
void CopyStatistics(modules::SSnmpCounters& counters);

} // namespace VLK::host
