#include "host/verbs/Verbs.h"

#include "host/verbs/VerbTexts.h"

#include <algorithm>

namespace VLK::host {

namespace {

enum ECommand { eCmdExplain, eCmdOwners, eCmdStats, eCmdLastSet };

// What an operator has typed wrongly.
struct SMistake {
    std::string text;
};

BObjectIdentifier ReadOid(const std::string& word)
{
    BObjectIdentifier oid;
    if (!oid.AssignFromDottedDecimalStr(StringOf(word)))
        throw SMistake{"invalid oid " + InQuotes(word)};
    return oid;
}

ESecurityLevel ReadLevel(const std::string& word)
{
    for (ESecurityLevel level : {eNoAuthNoPriv, eAuthNoPriv, eAuthPriv}) {
        if (word == LabelSecurityLevel(level))
            return level;
    }
    throw SMistake{"invalid level " + InQuotes(word) + ": noAuthNoPriv, authNoPriv or authPriv"};
}

// The words behind the object: who, and how he asks.
struct SWho {
    std::string name;
    std::string version; // empty: what the name is known for
    std::string level;
    std::string context;
};

SWho ReadWho(const std::vector<std::string>& words)
{
    SWho who;
    who.name = words[1];
    who.version = words.size() > 2 ? words[2] : "";
    const bool isV3 = who.version == "v3";
    if (!who.version.empty() && !isV3 && who.version != "v1" && who.version != "v2c")
        throw SMistake{"invalid version " + InQuotes(who.version) + ": v1, v2c or v3"};
    if (words.size() > (isV3 ? 5u : 3u))
        throw SMistake{};
    who.level = words.size() > 3 ? words[3] : "";
    who.context = words.size() > 4 ? words[4] : "";
    return who;
}

SAsked AskedCommunity(const SCommunity& community, EProtocol protocol)
{
    SAsked asked;
    asked.who = "community " + InQuotes(community.name);
    asked.sources = community.sources;
    asked.security = SecurityOf(community, protocol);
    asked.context = StringOf(community.context);
    asked.isV1 = protocol == eSnmpV1;
    return asked;
}

SAsked AskedUser(const SKnownUser& user, const SWho& who)
{
    SAsked asked;
    asked.who = "user " + InQuotes(user.name);
    asked.security.securityModel = eModelUsm;
    asked.security.securityName = StringOf(user.name);
    asked.security.securityLevel = who.level.empty() ? user.strongest : ReadLevel(who.level);
    if (asked.security.securityLevel > user.strongest)
        throw SMistake{"the user " + InQuotes(user.name) + " has no level above " +
                       LabelSecurityLevel(user.strongest)};
    asked.context = StringOf(who.context);
    return asked;
}

// A name may be that of a community and that of a user: the community counts, unless
// the version says otherwise.
SAsked FindAsked(const SRights& rights, const SWho& who)
{
    if (who.version != "v3") {
        if (const auto community = rights.communities.Find(who.name))
            return AskedCommunity(*community, who.version == "v1" ? eSnmpV1 : eSnmpV2c);
    }
    if (who.version.empty() || who.version == "v3") {
        const auto user = std::find_if(rights.users.begin(), rights.users.end(),
                                       [&](const SKnownUser& one) { return one.name == who.name; });
        if (user != rights.users.end())
            return AskedUser(*user, who);
    }
    const char* kind = who.version.empty()   ? "community or user"
                       : who.version == "v3" ? "user"
                                             : "community";
    throw SMistake{std::string("there is no ") + kind + " " + InQuotes(who.name)};
}

void Expect(const std::vector<std::string>& words, size_t least, size_t most)
{
    if (words.size() < least)
        throw SMistake{"argument(s) required."};
    if (words.size() > most)
        throw SMistake{};
}

} // namespace

const SCmdMapEntry BVerbs::s_cliEntries[] = {
    {eCmdExplain, "explain", "Tell who serves an object, and who may read, write and be notified",
     "<oid> [<community> [v1 | v2c] | <user> [v3 [<level> [<context>]]]]"},
    {eCmdOwners, "owners", "List the registered regions and their modules", "[<oid>]"},
    {eCmdStats, "stats", "Print counts of requests, and the slow modules", nullptr},
    {eCmdLastSet, "lastset", "Print the last set, phase by phase", nullptr},
    {-1, nullptr, nullptr, nullptr}};

const char BVerbs::s_cmdHandlerName[] = "\"BVerbs\"";

BVerbs::BVerbs(SSources sources) : m_sources(std::move(sources)) {}

const char* BVerbs::CmdGetHndlrName() const { return s_cmdHandlerName; }

const SCmdMapEntry* BVerbs::CmdGetMap() const { return s_cliEntries; }

int BVerbs::CmdExecute(ICmdStream& out, const BString& cmd, const BStringArray& args,
                       const BSecurityParams& secParams, const BString& contextName)
{
    if (!CmdFind(cmd)) {
        CmdId(cmd, out);
        return 0;
    }
    CWords words;
    for (int i = 0; i < static_cast<int>(args.Count()); ++i)
        words.push_back(TextOf(args[i]));
    for (const std::string& line : Run(cmd, words, secParams, contextName))
        out.Write(StringOf(line + "\n"));
    return 0;
}

BVerbs::CLines BVerbs::Run(const BString& cmd, const CWords& words, const BSecurityParams& security,
                           const BString& context)
{
    try {
        switch (CmdFind(cmd)->id) {
        case eCmdExplain:
            return Explain(words, security, context);
        case eCmdOwners:
            return Owners(words);
        case eCmdStats:
            Expect(words, 0, 0);
            return StatsLines(m_sources);
        default:
            Expect(words, 0, 0);
            return LastSetLines(m_sources.handler.LastSet().Get());
        }
    } catch (const SMistake& mistake) {
        const bool isUsage = mistake.text.empty() || mistake.text.back() == '.';
        const std::string text = mistake.text.empty() ? "invalid argument(s)" : mistake.text;
        CLines lines{TextOf(cmd) + ": " + text};
        const char* arguments = CmdGetArgsDescr(cmd);
        if (isUsage)
            lines.push_back("Usage " + TextOf(cmd) + (arguments ? " " : "") +
                            (arguments ? arguments : ""));
        return lines;
    }
}

BVerbs::CLines BVerbs::Explain(const CWords& words, const BSecurityParams& security,
                               const BString& context)
{
    Expect(words, 1, 5);
    const BObjectIdentifier name = ReadOid(words[0]);
    const BRightsOfRequest rights(m_sources.access); // all of it is told by them
    if (words.size() > 1)
        return ExplainLines(m_sources, name, FindAsked(*rights, ReadWho(words)));
    SAsked asked;
    asked.who = "the console";
    asked.security = security;
    asked.context = context;
    return ExplainLines(m_sources, name, asked);
}

BVerbs::CLines BVerbs::Owners(const CWords& words) const
{
    Expect(words, 0, 1);
    return OwnersLines(m_sources.regions, words.empty() ? BObjectIdentifier() : ReadOid(words[0]));
}

} // namespace VLK::host
