#include "host/wire/NetSnmpUsm.h"

#include "host/HostError.h"
#include "host/Mutex.h"
#include "host/wire/Convert.h"

#include <algorithm>
#include <cstring>

namespace VLK::host {

namespace {

void Configure(std::string&& line) { netsnmp_config_remember(line.data()); }

std::string Hexadecimal(const std::string& octets)
{
    static const char digits[] = "0123456789abcdef";
    std::string text = "0x";
    for (char octet : octets) {
        text += digits[static_cast<unsigned char>(octet) >> 4];
        text += digits[octet & 0xf];
    }
    return text;
}

// One word to the wire library's configuration, whatever is in it.
std::string Word(const std::string& text)
{
    std::string word = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\')
            word += '\\';
        word += c;
    }
    return word + "\"";
}

// The wire library adds one to the boots that it is told, and starts with 1 when the
// engine ID is another than the old one.
void Identify(const SEngineIdentity& engine)
{
    const std::string id = Hexadecimal(engine.id);
    Configure("exactEngineID " + id);
    Configure("oldEngineID " + id);
    Configure("engineBoots " + std::to_string(engine.boots - 1));
    read_premib_configs();
    read_configs();
    unsigned char is[MAX_ENGINEID_LENGTH];
    const size_t length = snmpv3_get_engineID(is, sizeof is);
    if (std::string(reinterpret_cast<char*>(is), length) != engine.id ||
        snmpv3_local_snmpEngineBoots() != static_cast<unsigned long>(engine.boots))
        throw BHostError(eExitUsage, "the SNMPv3 engine does not start");
}

size_t PrivKeyLength(const SUser& user)
{
    return user.priv.empty() ? 0 : user.priv == "AES-256" ? 32 : user.priv == "AES-192" ? 24 : 16;
}

// Whether the wire library has made of the user what he is: the last arc of an
// authentication protocol is its type.
bool IsMade(const std::string& engine, const SUser& user)
{
    const usmUser* made = usm_get_user(reinterpret_cast<const unsigned char*>(engine.data()),
                                       engine.size(), user.name.c_str());
    if (!made || !made->authProtocol || made->authProtocolLen == 0)
        return false;
    const oid auth = user.auth.empty() ? NETSNMP_USMAUTH_NOAUTH
                                       : static_cast<oid>(usm_lookup_auth_type(user.auth.c_str()));
    return made->authProtocol[made->authProtocolLen - 1] == auth &&
           (user.auth.empty() || made->authKeyLen > 0) && made->privKeyLen >= PrivKeyLength(user);
}

std::string Who(const SUser& user) { return "user '" + user.name + "': "; }

// For the engine that the wire library is, or for that of a receiver.
void Create(const SUser& user, const std::string& engine)
{
    std::string line = (engine.empty() ? "" : "-e " + Hexadecimal(engine) + " ") + Word(user.name);
    if (!user.auth.empty())
        line += " " + user.auth + " " + Word(user.authPassphrase);
    if (!user.priv.empty())
        line += " " + user.priv + " " + Word(user.privPassphrase);
    usm_parse_create_usmUser("createUser", line.data());
    std::fill(line.begin(), line.end(), '\0');
}

void CheckProtocols(const SUser& user)
{
    const std::string who = Who(user);
    if (!user.auth.empty() && usm_lookup_auth_type(user.auth.c_str()) < 0)
        throw BHostError(eExitUsage, who + "the wire library has no " + user.auth);
    if (!user.priv.empty() && usm_lookup_priv_type(user.priv.c_str()) < 0)
        throw BHostError(eExitUsage, who + "the wire library has no " + user.priv);
}

void Make(const SEngineIdentity& engine, const SUser& user)
{
    Create(user, "");
    if (!IsMade(engine.id, user))
        throw BHostError(eExitUsage, Who(user) + "the wire library does not take it");
}

// Also with his keys for the engines of receivers.
void Forget(const SUser& user)
{
    usmUser* next = nullptr;
    for (usmUser* known = usm_get_userList(); known; known = next) {
        next = known->next;
        if (!known->name || user.name != known->name)
            continue;
        usm_remove_user(known);
        usm_free_user(known);
    }
}

bool Holds(const std::vector<SUser>& users, const SUser& user)
{
    return std::any_of(users.begin(), users.end(), [&](const SUser& other) {
        return other.name == user.name && other.auth == user.auth &&
               other.authPassphrase == user.authPassphrase && other.priv == user.priv &&
               other.privPassphrase == user.privPassphrase;
    });
}

struct SCounter {
    int number;
    oid name[MAX_OID_LEN];
    size_t length;
};

// usmStatsUnknownUserNames, snmpUnknownPDUHandlers, snmpUnknownContexts.
constexpr SCounter kCounters[] = {
    {STAT_USMSTATSUNKNOWNUSERNAMES, {1, 3, 6, 1, 6, 3, 15, 1, 1, 3, 0}, 11},
    {STAT_SNMPUNKNOWNPDUHANDLERS, {1, 3, 6, 1, 6, 3, 11, 2, 1, 3, 0}, 11},
    {STAT_SNMPUNKNOWNCONTEXTS, {1, 3, 6, 1, 6, 3, 12, 1, 5, 0}, 10},
};

bool IsOwnEngine(const unsigned char* engine, size_t length)
{
    unsigned char own[MAX_ENGINEID_LENGTH];
    return length == snmpv3_get_engineID(own, sizeof own) && length != 0 &&
           std::memcmp(engine, own, length) == 0;
}

// Says who we are, and is not secured: there is no key to do it with.
netsnmp_pdu* ReportOfOwnEngine(netsnmp_pdu& request)
{
    netsnmp_pdu* pdu = snmp_clone_pdu(&request);
    if (!pdu || snmpv3_make_report(pdu, SNMPERR_USM_UNKNOWNENGINEID) == SNMPERR_SUCCESS)
        return pdu;
    snmp_free_pdu(pdu);
    return nullptr;
}

} // namespace

void StartUsm(const SEngineIdentity& engine, const std::vector<SUser>& users)
{
    netsnmp_session unused;
    snmp_sess_init(&unused); // starts what is below USM
    netsnmp_ds_set_string(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_APPTYPE, "vkagentd");
    init_snmpv3("vkagentd");
    Identify(engine);
    for (const SUser& user : users) {
        CheckProtocols(user);
        Make(engine, user);
    }
}

void ReplaceUsers(const SEngineIdentity& engine, const std::vector<SUser>& old,
                  const std::vector<SUser>& users, BMutex& lock)
{
    std::for_each(users.begin(), users.end(), CheckProtocols);
    for (const SUser& user : old) {
        const BLock held(lock);
        if (!Holds(users, user))
            Forget(user);
    }
    // One at a time: to make a key of a passphrase takes milliseconds.
    for (const SUser& user : users) {
        const BLock held(lock);
        if (!Holds(old, user))
            Make(engine, user);
    }
}

bool SetSecurity(netsnmp_session& settings, const SReceiver& receiver)
{
    unsigned char own[MAX_ENGINEID_LENGTH];
    const size_t length = snmpv3_get_engineID(own, sizeof own);
    settings.version = SNMP_VERSION_3;
    settings.securityModel = SNMP_SEC_MODEL_USM;
    settings.securityLevel = receiver.level;
    settings.securityName = const_cast<char*>(receiver.user.c_str());
    settings.securityNameLen = receiver.user.size();
    // The session's own copies are made of these.
    bool isDone = snmpv3_clone_engineID(&settings.contextEngineID, &settings.contextEngineIDLen,
                                        own, length) != 0;
    // Without one the wire library would ask for it, and wait for the answer.
    isDone = isDone && snmpv3_clone_engineID(&settings.securityEngineID,
                                             &settings.securityEngineIDLen, own, length) != 0;
    return isDone;
}

void LeaveEngineToUs(netsnmp_session& session, const SReceiver& receiver)
{
    session.flags |= SNMP_FLAGS_DONT_PROBE; // which no copy of settings has
    if (receiver.isInform)
        SetEngine(session, "");
}

bool MakeUser(const netsnmp_session& session, const std::vector<SUser>& users)
{
    const std::string engine(reinterpret_cast<const char*>(session.securityEngineID),
                             session.securityEngineIDLen);
    const std::string name(session.securityName, session.securityNameLen);
    const auto user = std::find_if(users.begin(), users.end(),
                                   [&](const SUser& candidate) { return candidate.name == name; });
    if (user == users.end())
        return false;
    if (!IsMade(engine, *user))
        Create(*user, engine);
    return IsMade(engine, *user);
}

bool SetEngine(netsnmp_session& session, const std::string& engineId)
{
    unsigned char* engine = nullptr;
    if (!engineId.empty()) {
        engine = static_cast<unsigned char*>(malloc(engineId.size()));
        if (!engine)
            return false;
        std::memcpy(engine, engineId.data(), engineId.size());
    }
    free(session.securityEngineID);
    session.securityEngineID = engine;
    session.securityEngineIDLen = engineId.size();
    return true;
}

netsnmp_pdu* MakeEngineProbe()
{
    netsnmp_pdu* pdu = snmp_pdu_create(SNMP_MSG_GET);
    if (!pdu)
        return nullptr;
    pdu->version = SNMP_VERSION_3;
    pdu->securityModel = SNMP_SEC_MODEL_USM;
    pdu->securityLevel = SNMP_SEC_LEVEL_NOAUTH;
    // No name is not the same as the session's.
    pdu->securityName = static_cast<char*>(calloc(1, 1));
    if (pdu->securityName)
        return pdu;
    snmp_free_pdu(pdu);
    return nullptr;
}

// The wire library knows our users for the engines of receivers, too: who has a key for
// one of those has none for us, and nothing keeps his messages from being sent again.
// The user without a name is for the discovery of the engine ID: no request is his.
int FaultOf(const netsnmp_pdu& pdu)
{
    if (!IsOwnEngine(pdu.securityEngineID, pdu.securityEngineIDLen))
        return STAT_USMSTATSUNKNOWNENGINEIDS;
    if (pdu.securityNameLen == 0)
        return STAT_USMSTATSUNKNOWNUSERNAMES;
    if (!IsRequest(pdu) || !IsOwnEngine(pdu.contextEngineID, pdu.contextEngineIDLen))
        return STAT_SNMPUNKNOWNPDUHANDLERS;
    return -1;
}

netsnmp_pdu* Report(netsnmp_pdu& request, int counter)
{
    const unsigned value = snmp_increment_statistic(counter);
    const bool isAskedFor = request.flags & SNMP_MSG_FLAG_RPRT_BIT;
    if (counter == STAT_USMSTATSUNKNOWNENGINEIDS)
        return isAskedFor ? ReportOfOwnEngine(request) : nullptr;
    auto known =
        std::find_if(std::begin(kCounters), std::end(kCounters),
                     [=](const SCounter& candidate) { return candidate.number == counter; });
    if (!isAskedFor || known == std::end(kCounters))
        return nullptr;
    return MakeReport(request, known->name, known->length, value);
}

void CopyStatistics(modules::SSnmpCounters& counters)
{
    using Counters = modules::SSnmpCounters;
    static constexpr struct {
        int number;
        Counters::CCounter Counters::*copy;
    } kStatistics[] = {
        {STAT_SNMPUNKNOWNSECURITYMODELS, &Counters::unknownSecurityModels},
        {STAT_SNMPINVALIDMSGS, &Counters::invalidMsgs},
        {STAT_SNMPUNKNOWNPDUHANDLERS, &Counters::unknownPDUHandlers},
        {STAT_USMSTATSUNSUPPORTEDSECLEVELS, &Counters::unsupportedSecLevels},
        {STAT_USMSTATSNOTINTIMEWINDOWS, &Counters::notInTimeWindows},
        {STAT_USMSTATSUNKNOWNUSERNAMES, &Counters::unknownUserNames},
        {STAT_USMSTATSUNKNOWNENGINEIDS, &Counters::unknownEngineIDs},
        {STAT_USMSTATSWRONGDIGESTS, &Counters::wrongDigests},
        {STAT_USMSTATSDECRYPTIONERRORS, &Counters::decryptionErrors},
    };
    for (const auto& statistic : kStatistics)
        counters.*statistic.copy = snmp_get_statistic(statistic.number);
}

} // namespace VLK::host
