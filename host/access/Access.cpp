#include "host/access/Access.h"

#include "host/Log.h"

namespace VLK::host {

namespace {

thread_local const BRightsOfRequest* t_innermost = nullptr;

} // namespace

std::vector<SKnownUser> UsersOf(const SConfiguration& configuration)
{
    std::vector<SKnownUser> users;
    if (configuration.SpeaksV3()) {
        for (const SUser& user : configuration.users)
            users.push_back({user.name, user.StrongestLevel()});
    }
    return users;
}

BAccess::BAccess(const SConfiguration& configuration, BStore* store)
    : m_store(store), m_views(store, kViewSection),
      m_rights(std::make_shared<SRights>(configuration, m_views))
{
    TellOfViews(configuration, LoadViews(m_views, store, configuration.views));
}

void BAccess::TellOfViews(const SConfiguration& configuration, bool areAsConfigured) const
{
    if (!areAsConfigured && !configuration.file.empty())
        LogLine(eLogWarning, "views are as managers have set them, not as in " +
                                 configuration.file + "; --reset-store returns to the file");
}

void BAccess::Replace(const SConfiguration& configuration)
{
    auto next = std::make_shared<SRights>(configuration, m_views);
    const bool areManaged = AreManaged(m_store);
    if (areManaged) {
        TellOfViews(configuration, AreThere(m_views, configuration.views));
    } else if (!AreThere(m_views, configuration.views)) {
        Current()->vacm.KeepViews(CopyOf(m_views));
        ReplaceViews(m_views, configuration.views);
    }
    const BLock lock(m_lock);
    m_rights.swap(next);
}

std::shared_ptr<SRights> BAccess::Current() const
{
    const BLock lock(m_lock);
    return m_rights;
}

int BAccess::CheckAccess(const BSecurityParams& security, unsigned char accessKind,
                         const BString& context, const BVarBind& binding)
{
    const BRightsOfRequest* rights = BRightsOfRequest::OfThisThread(*this);
    if (rights && (accessKind == eAccessRead || accessKind == eAccessWrite))
        return rights->Decide(security, accessKind == eAccessRead ? eViewRead : eViewWrite, context,
                              binding.Name());
    return Current()->vacm.CheckAccess(security, accessKind, context, binding);
}

const BRightsOfRequest* BRightsOfRequest::OfThisThread(const BAccess& access)
{
    const BRightsOfRequest* innermost = t_innermost;
    while (innermost && &innermost->m_access != &access)
        innermost = innermost->m_outer;
    return innermost;
}

BRightsOfRequest::BRightsOfRequest(const BAccess& access)
    : m_access(access), m_outer(t_innermost), m_rights(nullptr)
{
    if (const BRightsOfRequest* known = OfThisThread(access)) {
        m_rights = known->m_rights;
        m_expected = known->m_expected;
    } else {
        m_own = access.Current();
        m_rights = m_own.get();
    }
    t_innermost = this;
}

BRightsOfRequest::~BRightsOfRequest() { t_innermost = m_outer; }

void BRightsOfRequest::Expect(const BSecurityParams& security, EViewType type,
                              const BString& context)
{
    m_expected = {&security, &context, type, m_rights->vacm.SelectView(security, type, context)};
}

EVacmAnswer BRightsOfRequest::Decide(const BSecurityParams& security, EViewType type,
                                     const BString& context, const BObjectIdentifier& name) const
{
    const bool isExpected = m_expected.security == &security && m_expected.context == &context &&
                            m_expected.type == type;
    return isExpected ? m_rights->vacm.Decide(m_expected.view, name).answer
                      : m_rights->vacm.Decide(security, type, context, name).answer;
}

} // namespace VLK::host
