// The trap sinks of a configuration file.
#include "host/config/ConfigReader.h"
#include "host/config/ConfigWord.h"

#include <algorithm>

namespace VLK::host {

namespace {

constexpr double kLeastTimeout = 0.01;
constexpr double kMostTimeout = 3600;
constexpr int64_t kMostRetries = 255;

constexpr SWord kVersions[] = {{"1", eSnmpV1}, {"2c", eSnmpV2c}, {"3", eSnmpV3}};

const char* NameOf(ESecurityLevel level) { return kLevels[level - eNoAuthNoPriv].text; }

} // namespace

void BConfigReader::ReadTrapSink(BConfigTable& table)
{
    STrapSink sink;
    std::optional<SText> address = table.NeedText("address");
    table.Has("community"); // so that it is named first where a key is unknown
    sink.protocol = static_cast<EProtocol>(Word(table, "version", kVersions, eSnmpV2c));
    sink.isInform = table.Flag("inform").value_or(sink.isInform);
    std::optional<double> timeout = table.Number("timeout", kLeastTimeout, kMostTimeout);
    if (timeout)
        sink.timeout = std::chrono::milliseconds(std::lround(*timeout * 100) * 10);
    sink.retries =
        static_cast<unsigned>(table.Integer("retries", 0, kMostRetries).value_or(sink.retries));
    if (sink.isInform && sink.protocol == eSnmpV1)
        table.Refuse("inform", "is not for version '1', which has no informs");
    bool hasAddress = address && ReadAddress(*address, sink.address);
    if (hasAddress && sink.address.Port() == 0)
        Refuse(*address, "has no port");
    const bool isV3 = sink.protocol == eSnmpV3;
    if (!(isV3 ? ReadSinkUser(table, sink) : ReadSinkCommunity(table, sink)))
        return;
    if (hasAddress && !m_sinks
                           .emplace(sink.address.ToString(), isV3 ? sink.user : sink.community,
                                    sink.protocol, sink.isInform)
                           .second)
        Refuse(*address, std::string("is a trapSink of this ") + (isV3 ? "user" : "community") +
                             ", version and inform already");
    m_made.trapSinks.push_back(std::move(sink));
}

// False where it is not known.
bool BConfigReader::ReadSinkCommunity(BConfigTable& table, STrapSink& sink)
{
    for (const char* key : {"user", "level"}) {
        if (table.Has(key))
            table.Refuse(key, "is for version '3' only");
    }
    std::optional<SText> community = table.NeedText("community");
    const SCommunity* known = community ? Known(*community) : nullptr;
    if (!known)
        return false;
    sink.community = community->text;
    sink.security = SecurityOf(*known, sink.protocol);
    sink.context = BString(known->context.data(), static_cast<unsigned>(known->context.size()));
    return true;
}

bool BConfigReader::ReadSinkUser(BConfigTable& table, STrapSink& sink)
{
    if (table.Has("community"))
        table.Refuse("community", "is not for version '3', which has users");
    if (!m_made.v3)
        table.Refuse("version", "is not with v3 = false");
    std::optional<SText> name = table.NeedText("user");
    const int level = Word(table, "level", kLevels, 0);
    const auto user =
        std::find_if(m_made.users.begin(), m_made.users.end(),
                     [&](const SUser& candidate) { return name && candidate.name == name->text; });
    if (user == m_made.users.end()) {
        if (name && !m_users.count(name->text))
            Refuse(*name, "is no user");
        return false;
    }
    const ESecurityLevel strongest = user->StrongestLevel();
    if (level > strongest)
        table.Refuse("level", std::string("is more than the user has: ") + NameOf(strongest));
    sink.user = user->name;
    sink.level = level == 0 ? strongest : static_cast<ESecurityLevel>(level);
    sink.security.securityModel = eModelUsm;
    sink.security.securityName =
        BString(user->name.data(), static_cast<unsigned>(user->name.size()));
    sink.security.securityLevel = sink.level;
    return true;
}

} // namespace VLK::host
