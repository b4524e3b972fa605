#include "host/access/Vacm.h"

#include "host/access/ViewChoice.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <tuple>

namespace VLK::host {

namespace {

// Not a shorter one for want of memory: it would be another's.
BString TextOf(const std::string& text)
{
    BString made(text.data(), static_cast<unsigned>(text.size()));
    if (made.length() != text.size())
        throw std::bad_alloc();
    return made;
}

bool BeginsWith(const BString& text, const BString& prefix)
{
    return prefix.length() <= text.length() &&
           std::memcmp(text.c_str(), prefix.c_str(), prefix.length()) == 0;
}

} // namespace

const char* NameOfModel(int model)
{
    switch (model) {
    case eModelAny:
        return "any";
    case eModelV1:
        return "SNMPv1";
    case eModelV2c:
        return "SNMPv2c";
    case eModelUsm:
        return "USM";
    default:
        return "another model";
    }
}

struct BVacm::SEntry {
    explicit SEntry(const SAccess& access)
        : context(TextOf(access.context)), isPrefix(access.isPrefix), model(access.model),
          level(access.level), views{TextOf(access.views[eViewRead]),
                                     TextOf(access.views[eViewWrite]),
                                     TextOf(access.views[eViewNotify])}
    {
    }

    bool Fits(const BSecurityParams& security, const BString& contextName) const
    {
        return (model == eModelAny || model == security.securityModel) &&
               level <= security.securityLevel &&
               (context == contextName || (isPrefix && BeginsWith(contextName, context)));
    }

    // An identical context is also the longest prefix of it that there can be.
    bool GoesBefore(const SEntry& other) const
    {
        return std::make_tuple(model != eModelAny, context.length(), level) >
               std::make_tuple(other.model != eModelAny, other.context.length(), other.level);
    }

    SAccess AsConfigured() const
    {
        SAccess access;
        access.context.assign(context.c_str(), context.length());
        access.isPrefix = isPrefix;
        access.model = static_cast<ESecurityModel>(model);
        access.level = static_cast<ESecurityLevel>(level);
        for (int type : {eViewRead, eViewWrite, eViewNotify})
            access.views[type].assign(views[type].c_str(), views[type].length());
        return access;
    }

    BString context;
    bool isPrefix;
    int model;
    int level;
    BString views[3];
};

struct BVacm::SGroupEntries {
    std::string name;
    std::vector<SEntry> entries;

    const SEntry* Select(const BSecurityParams& security, const BString& context) const
    {
        const SEntry* best = nullptr;
        for (const SEntry& entry : entries) {
            if (entry.Fits(security, context) && (!best || entry.GoesBefore(*best)))
                best = &entry;
        }
        return best;
    }
};

struct BVacm::SMembership {
    int model;
    BString name;
    size_t group;

    // By model, then by name: below, equal to or above 0.
    int Compare(int otherModel, const BString& otherName) const
    {
        return model != otherModel ? (model < otherModel ? -1 : 1) : name.compare(otherName);
    }
};

BVacm::BVacm(const std::vector<SGroup>& groups, const std::vector<std::string>& contexts,
             BFilterTable& views)
    : m_contexts(1), m_views(&views)
{
    // Not to copy names, which may fail without a word.
    m_contexts.reserve(contexts.size() + 1);
    m_groups.reserve(groups.size());
    size_t members = 0;
    for (const SGroup& group : groups)
        members += group.members.size();
    m_members.reserve(members);
    for (const std::string& context : contexts)
        m_contexts.push_back(TextOf(context));
    for (const SGroup& group : groups) {
        for (const SMember& member : group.members)
            m_members.push_back({member.model, TextOf(member.securityName), m_groups.size()});
        m_groups.push_back(
            {group.name, std::vector<SEntry>(group.access.begin(), group.access.end())});
    }
    std::stable_sort(
        m_members.begin(), m_members.end(),
        [](const SMembership& a, const SMembership& b) { return a.Compare(b.model, b.name) < 0; });
}

BVacm::~BVacm() = default;

std::optional<SAccess> BVacm::EntryFor(const BSecurityParams& security,
                                       const BString& context) const
{
    const SGroupEntries* group = GroupOf(security);
    const SEntry* entry = group ? group->Select(security, context) : nullptr;
    if (!entry)
        return std::nullopt;
    return entry->AsConfigured();
}

const BVacm::SGroupEntries* BVacm::GroupOf(const BSecurityParams& security) const
{
    auto isBefore = [](const SMembership& member, const BSecurityParams& wanted) {
        return member.Compare(wanted.securityModel, wanted.securityName) < 0;
    };
    auto found = std::lower_bound(m_members.begin(), m_members.end(), security, isBefore);
    if (found == m_members.end() ||
        found->Compare(security.securityModel, security.securityName) != 0)
        return nullptr;
    return &m_groups[found->group];
}

SVacmDecision BVacm::SelectView(const BSecurityParams& security, EViewType type,
                                const BString& context) const
{
    SVacmDecision decision;
    if (std::find(m_contexts.begin(), m_contexts.end(), context) == m_contexts.end())
        return decision;
    decision.answer = eVacmNoGroupName;
    const SGroupEntries* group = GroupOf(security);
    if (!group)
        return decision;
    decision.answer = eVacmNoAccessEntry;
    decision.group = &group->name;
    const SEntry* entry = group->Select(security, context);
    if (!entry)
        return decision;
    decision.view = &entry->views[type];
    decision.answer = decision.view->empty() ? eVacmNoSuchView : eVacmAllowed;
    return decision;
}

void BVacm::KeepViews(std::unique_ptr<BFilterTable> copy)
{
    if (m_kept)
        return;
    m_kept = std::move(copy);
    m_views = m_kept.get();
}

// An answer of views that were changed for others meanwhile does not count.
template <class TAsk>
auto BVacm::AskViews(TAsk ask) const
{
    for (;;) {
        BFilterTable* const views = m_views;
        auto answer = ask(*views);
        if (m_views == views)
            return answer;
    }
}

SViewChoice BVacm::ChooseRow(const std::string& view, const BObjectIdentifier& name) const
{
    return AskViews([&](BFilterTable& views) { return host::ChooseRow(views, view, name); });
}

bool BVacm::IsShown(const BString& view, const BObjectIdentifier& name) const
{
    return AskViews([&](BFilterTable& views) { return views.Filter(view, name); });
}

bool BVacm::HasRows(const BString& view) const
{
    return AskViews([&](BFilterTable& views) { return views.HasRows(view); });
}

SVacmDecision BVacm::FindView(const BSecurityParams& security, EViewType type,
                              const BString& context) const
{
    SVacmDecision decision = SelectView(security, type, context);
    if (decision.answer == eVacmAllowed && !HasRows(*decision.view))
        decision.answer = eVacmNoSuchView;
    return decision;
}

SVacmDecision BVacm::Decide(const BSecurityParams& security, EViewType type, const BString& context,
                            const BObjectIdentifier& name) const
{
    return Decide(SelectView(security, type, context), name);
}

SVacmDecision BVacm::Decide(const SVacmDecision& selected, const BObjectIdentifier& name) const
{
    SVacmDecision decision = selected;
    if (decision.answer == eVacmAllowed && !IsShown(*decision.view, name))
        decision.answer = HasRows(*decision.view) ? eVacmNotInView : eVacmNoSuchView;
    return decision;
}

int BVacm::CheckAccess(const BSecurityParams& security, unsigned char accessKind,
                       const BString& context, const BVarBind& binding)
{
    if (accessKind != eAccessRead && accessKind != eAccessWrite)
        return eVacmNoSuchView;
    EViewType type = accessKind == eAccessRead ? eViewRead : eViewWrite;
    return Decide(security, type, context, binding.Name()).answer;
}

} // namespace VLK::host
