#include "host/config/ConfigReader.h"

#include "host/config/ConfigValues.h"
#include "host/config/ConfigWord.h"

#include <algorithm>

namespace VLK::host {

namespace {

constexpr int64_t kMostTimeToLive = 3600000; // an hour

// The words are those that the console's clivacm knows.
constexpr SWord kModels[] = {{"SNMPv1", eModelV1}, {"SNMPv2c", eModelV2c}, {"USM", eModelUsm}};
constexpr SWord kModelsOrAny[] = {
    {"any", eModelAny}, {"SNMPv1", eModelV1}, {"SNMPv2c", eModelV2c}, {"USM", eModelUsm}};
constexpr SWord kMatches[] = {{"exact", 0}, {"prefix", 1}};

} // namespace

SConfiguration BConfigReader::Read(const toml::table& root)
{
    for (const SView& view : BuiltInViews())
        m_views[view.name] = {};
    m_groups[kGroupConsole] = {};
    BConfigTable table(root, "the file", m_problems);
    ReadListen(table);
    ReadStore(table);
    ReadContexts(table);
    m_made.log = static_cast<ELogTarget>(Word(table, "log", kLogTargets, m_made.log));
    m_made.logLevel = static_cast<ELogLevel>(Word(table, "logLevel", kLogLevels, m_made.logLevel));
    m_made.authenTraps = table.Flag("snmpEnableAuthenTraps");
    m_made.workers =
        static_cast<unsigned>(table.Integer("workers", 1, kMostWorkers).value_or(m_made.workers));
    m_made.timeToLive = static_cast<unsigned>(
        table.Integer("timeToLive", 0, kMostTimeToLive).value_or(m_made.timeToLive));
    m_made.v3 = table.Flag("v3").value_or(m_made.v3);
    // Each kind may name things of those before it.
    table.Tables("view", [this](BConfigTable& view) { ReadView(view); });
    table.Tables("group", [this](BConfigTable& group) { ReadGroup(group); });
    table.Tables("community", [this](BConfigTable& community) { ReadCommunity(community); });
    table.Tables("user", [this](BConfigTable& user) { ReadUser(user); });
    table.Tables("access", [this](BConfigTable& access) { ReadAccess(access); });
    ReadAlarmCommunity(table);
    table.Tables("trapSink", [this](BConfigTable& sink) { ReadTrapSink(sink); });
    m_made.hasCommunities = table.Has("community");
    table.Finish();
    return std::move(m_made);
}

void BConfigReader::Refuse(const SText& value, const std::string& why)
{
    m_problems.Add(value.place, std::string(value.key) + " " + Quoted(value.text) + " " + why);
}

std::optional<SText> BConfigReader::Name(BConfigTable& table, const char* key, bool isNeeded)
{
    std::optional<SText> name = isNeeded ? table.NeedText(key) : table.Text(key);
    if (!name)
        return name;
    std::string why = CheckName(name->text);
    if (why.empty())
        return name;
    Refuse(*name, why);
    return std::nullopt;
}

bool BConfigReader::Define(CPlaces& places, const char* what, const SText& name)
{
    auto [known, isNew] = places.insert({name.text, name.place});
    if (isNew)
        return true;
    unsigned line = known->second.line;
    Refuse(name,
           std::string("is a ") + what +
               (line ? " of line " + std::to_string(line) + " already" : " that is built in"));
    return false;
}

bool BConfigReader::ReadAddress(const SText& text, BTransportAddress& address)
{
    if (address.Parse(text.text))
        return true;
    Refuse(text, "is neither udp:IP:PORT nor udp6:[IP]:PORT");
    return false;
}

void BConfigReader::ReadListen(BConfigTable& root)
{
    if (root.IsEmptyList("agentAddress"))
        root.Refuse("agentAddress", "holds no address");
    std::map<std::string, unsigned> lines;
    for (const SText& text : root.Texts("agentAddress")) {
        BTransportAddress address;
        if (!ReadAddress(text, address))
            continue;
        if (address.IsV6() && address.V4Bytes())
            Refuse(text, "is IPv4: write it like udp:192.0.2.1:161");
        auto [known, isNew] = lines.insert({address.ToString(), text.place.line});
        if (!isNew && address.Port() != 0)
            Refuse(text, "is in line " + std::to_string(known->second) + " already");
        m_made.listen.push_back(address);
    }
}

void BConfigReader::ReadStore(BConfigTable& root)
{
    std::optional<SText> store = root.Text("store");
    if (!store)
        return;
    if (store->text.empty() || store->text[0] != '/')
        Refuse(*store, "does not begin with '/'");
    else if (store->text.find('\0') != store->text.npos)
        Refuse(*store, "is no file name");
    m_made.store = store->text;
}

void BConfigReader::ReadContexts(BConfigTable& root)
{
    CPlaces places{{"", {}}};
    for (const SText& context : root.Texts("contexts")) {
        std::string why = CheckName(context.text);
        if (!why.empty())
            Refuse(context, why);
        else if (Define(places, "context", context))
            m_made.contexts.push_back(context.text);
    }
}

void BConfigReader::ReadView(BConfigTable& table)
{
    SView view;
    m_subtrees.clear();
    std::optional<SText> name = Name(table, "name", true);
    ReadFamilies(table, "include", eFilterIncluded, view);
    ReadFamilies(table, "exclude", eFilterExcluded, view);
    if (!table.Has("include"))
        table.Miss("include", ": it shows nothing");
    else if (table.IsEmptyList("include") && table.Has("exclude"))
        table.Refuse("include", "shows nothing that could be excluded");
    if (name && Define(m_views, "view", *name)) {
        view.name = name->text;
        RefuseLongRows(table, view);
        m_made.views.push_back(std::move(view));
    }
}

void BConfigReader::ReadFamilies(BConfigTable& table, const char* key, EFilterType type,
                                 SView& view)
{
    table.TextsAndTables(
        key, key, [&](const SText& subtree) { ReadSubtree(subtree, std::nullopt, type, view); },
        [&](BConfigTable& family) {
            std::optional<SText> subtree = family.NeedText("subtree");
            std::optional<SText> mask = family.Text("mask");
            if (subtree)
                ReadSubtree(*subtree, mask, type, view);
        });
}

void BConfigReader::ReadSubtree(const SText& subtree, const std::optional<SText>& mask,
                                EFilterType type, SView& view)
{
    SFamily family;
    family.type = type;
    std::string why = ReadOid(subtree.text, family.subtree);
    if (!why.empty())
        Refuse(subtree, why);
    std::string whyMask = mask ? ReadMask(mask->text, family.mask) : "";
    if (!whyMask.empty())
        Refuse(*mask, whyMask);
    if (!why.empty())
        return;
    if (!m_subtrees.insert(family.subtree.ToString().c_str()).second)
        Refuse(subtree, "is twice in this view");
    view.families.push_back(std::move(family));
}

// A row that no message can name would end every walk of its table.
void BConfigReader::RefuseLongRows(BConfigTable& table, const SView& view)
{
    constexpr size_t kColumn = 12; // 1.3.6.1.6.3.16.1.5.2.1.COLUMN
    constexpr size_t kLengths = 2; // of the name and of the subtree
    for (const SFamily& family : view.families) {
        if (kColumn + kLengths + view.name.size() + family.subtree.Length() > kMostArcs)
            table.Refuse("name", "is too long for a subtree of " +
                                     std::to_string(family.subtree.Length()) +
                                     " numbers: both are in the index of its row");
    }
}

std::string BConfigReader::View(BConfigTable& table, const char* key)
{
    std::optional<SText> name = table.Text(key);
    if (!name || name->text.empty())
        return "";
    if (m_views.count(name->text))
        return name->text;
    Refuse(*name, "is no view");
    return "";
}

// A security name is, with each model, in one group.
void BConfigReader::Claim(ESecurityModel model, const SText& securityName, const std::string& group)
{
    auto [known, isNew] = m_members.insert({{model, securityName.text}, group});
    if (!isNew)
        Refuse(securityName, std::string("is with ") + NameOfModel(model) + " in the group " +
                                 Quoted(known->second) + " already");
}

void BConfigReader::AddMember(SGroup& group, ESecurityModel model, const SText& securityName)
{
    Claim(model, securityName, group.name);
    group.members.push_back({model, securityName.text});
}

bool BConfigReader::IsMember(const std::string& securityName) const
{
    return m_members.count({eModelV1, securityName}) || m_members.count({eModelV2c, securityName});
}

void BConfigReader::ReadGroup(BConfigTable& table)
{
    std::optional<SText> name = Name(table, "name", true);
    SGroup added;
    bool isConsole = name && name->text == kGroupConsole && !m_groups[kGroupConsole].line;
    if (isConsole)
        m_groups[kGroupConsole] = name->place;
    else if (name && Define(m_groups, "group", *name))
        added.name = name->text;
    SGroup& group = isConsole ? m_made.groups.front() : added;
    table.TextsAndTables(
        "members", "member",
        [&](const SText& securityName) {
            std::string why = CheckName(securityName.text);
            if (!why.empty())
                return Refuse(securityName, why);
            AddMember(group, eModelV1, securityName);
            AddMember(group, eModelV2c, securityName);
        },
        [&](BConfigTable& member) { ReadMember(member, group); });
    if (!isConsole)
        m_made.groups.push_back(std::move(added));
}

void BConfigReader::ReadMember(BConfigTable& table, SGroup& group)
{
    std::optional<SText> securityName = Name(table, "securityName", true);
    if (!table.Has("securityModel"))
        table.Miss("securityModel");
    int model = Word(table, "securityModel", kModels, 0);
    if (securityName && model)
        AddMember(group, static_cast<ESecurityModel>(model), *securityName);
}

std::vector<BNetwork> BConfigReader::ReadSources(BConfigTable& table)
{
    if (!table.Has("sources"))
        return BNetwork::ThisMachine();
    std::vector<BNetwork> networks;
    for (const SText& text : table.Texts("sources")) {
        BNetwork network;
        std::string why = network.Parse(text.text);
        if (why.empty())
            networks.push_back(network);
        else
            Refuse(text, why);
    }
    return networks;
}

void BConfigReader::ReadCommunity(BConfigTable& table)
{
    SCommunity community;
    std::optional<SText> name = table.NeedText("name");
    std::optional<SText> securityName = Name(table, "securityName", false);
    community.context = Context(table, false);
    community.sources = ReadSources(table);
    std::string why = name ? CheckCommunity(name->text) : "";
    if (!why.empty())
        Refuse(*name, why);
    else if (name && Define(m_communities, "community", *name))
        community.name = name->text;
    community.securityName = securityName ? securityName->text : community.name;
    ReadRights(table, securityName ? *securityName : name.value_or(SText()), community);
}

// Rights of its own, or those of the group its security name is in, which is said
// where `who` is.
void BConfigReader::ReadRights(BConfigTable& table, const SText& who, SCommunity& community)
{
    std::string views[3] = {View(table, "read"), View(table, "write"), View(table, "notify")};
    if (!table.Has("notify"))
        views[eViewNotify] = views[eViewRead];
    bool hasOwn = table.Has("read") || table.Has("write") || table.Has("notify");
    if (hasOwn && table.Has("securityName"))
        return table.Refuse("securityName", "stands beside read, write or notify: the rights of "
                                            "the community are its own, or those of a group");
    const std::string& securityName = community.securityName;
    if (!hasOwn && !securityName.empty() && !IsMember(securityName))
        return Refuse(who, "has no rights: make it a member of a group with SNMPv1 or SNMPv2c, or "
                           "give the community read, write or notify");
    if (community.name.empty())
        return;
    if (!hasOwn) {
        m_made.communities.push_back(community);
        return;
    }
    Claim(eModelV1, who, community.name);
    Claim(eModelV2c, who, community.name);
    AddCommunity(m_made, community, views);
}

std::string BConfigReader::Context(BConfigTable& table, bool isPrefix)
{
    std::optional<SText> context = table.Text("context");
    if (!context || context->text.empty())
        return "";
    const std::vector<std::string>& all = m_made.contexts;
    bool isKnown = std::any_of(all.begin(), all.end(), [&](const std::string& known) {
        return known.compare(0, isPrefix ? context->text.size() : known.npos, context->text) == 0;
    });
    if (!isKnown)
        Refuse(*context, isPrefix ? "begins no context" : "is no context");
    return context->text;
}

void BConfigReader::ReadAccess(BConfigTable& table)
{
    SAccess access;
    std::optional<SText> name = table.NeedText("group");
    access.isPrefix = Word(table, "contextMatch", kMatches, 0) != 0;
    access.context = Context(table, access.isPrefix);
    access.model =
        static_cast<ESecurityModel>(Word(table, "securityModel", kModelsOrAny, eModelAny));
    access.level =
        static_cast<ESecurityLevel>(Word(table, "securityLevel", kLevels, eNoAuthNoPriv));
    access.views[eViewRead] = View(table, "read");
    access.views[eViewWrite] = View(table, "write");
    access.views[eViewNotify] = View(table, "notify");
    if (!name)
        return;
    if (!m_groups.count(name->text))
        return Refuse(*name, "is no group");
    auto group = std::find_if(m_made.groups.begin(), m_made.groups.end(),
                              [&](const SGroup& known) { return known.name == name->text; });
    bool isTwice =
        std::any_of(group->access.begin(), group->access.end(), [&](const SAccess& known) {
            return known.context == access.context && known.model == access.model &&
                   known.level == access.level;
        });
    if (isTwice)
        Refuse(*name, "has an access entry of this context, securityModel and securityLevel "
                      "already");
    group->access.push_back(std::move(access));
}

// A community of the file. Null when there is none, which is a problem, or when it has
// problems of its own, which are told where it stands.
const SCommunity* BConfigReader::Known(const SText& name)
{
    auto known =
        std::find_if(m_made.communities.begin(), m_made.communities.end(),
                     [&](const SCommunity& candidate) { return candidate.name == name.text; });
    if (known != m_made.communities.end())
        return &*known;
    if (!m_communities.count(name.text))
        Refuse(name, "is no community");
    return nullptr;
}

void BConfigReader::ReadAlarmCommunity(BConfigTable& root)
{
    std::optional<SText> name = root.Text("alarmCommunity");
    const SCommunity* known = name ? Known(*name) : nullptr;
    if (!known)
        return;
    m_made.alarms.security = SecurityOf(*known, eSnmpV2c);
    m_made.alarms.context =
        BString(known->context.data(), static_cast<unsigned>(known->context.size()));
}

} // namespace VLK::host
