// An agent's access control: the configuration put to work.
#pragma once

#include "host/LimitedLog.h"
#include "host/Mutex.h"
#include "host/access/Rights.h"
#include "host/access/Views.h"

#include <memory>

namespace VLK::host {

// What the store keeps of the views is loaded and saved by the table itself.
//
// Ownership: the store, which may be null, outlives it.
// Threads:   as its parts: any. Replace() is called by one at a time, and while no SET
//            runs: the views are also the managers' to change.
// Errors:    the constructor throws BHostError. Replace() throws std::bad_alloc; who asks
//            has the rights from before then.
class BAccess : public IAccessControl {
public:
    BAccess(const SConfiguration& configuration, BStore* store);

    // Takes the rights of another configuration. Requests that have begun go on with
    // theirs, views included; those that come find the new ones. Views that managers
    // have changed stay.
    void Replace(const SConfiguration& configuration);

    // Those of requests that begin now.
    std::shared_ptr<SRights> Current() const;
    BFilterTable& Views() { return m_views; }
    // Of requests that get no answer.
    BLimitedLog& Unanswered() { return m_unanswered; }
    // Of requests, or bindings of theirs, that are refused.
    BLimitedLog& Refused() { return m_refused; }

    int CheckAccess(const BSecurityParams& security, unsigned char accessKind,
                    const BString& context, const BVarBind& binding) override;

private:
    void TellOfViews(const SConfiguration& configuration, bool areAsConfigured) const;

    BStore* const m_store;
    BFilterTable m_views;
    mutable BMutex m_lock;
    std::shared_ptr<SRights> m_rights VKMIBH_TSA(guarded_by(m_lock));
    BLimitedLog m_unanswered{eLogInfo};
    BLimitedLog m_refused{eLogInfo};
};

// The rights that the calling thread decides by, all the time that it lives: those of a
// request from its first question to its last. One inside another has the same.
//
//   BRightsOfRequest rights(access);
//   rights->vacm.Decide(...);
//
// Ownership: the access control outlives it.
// Threads:   made and destroyed on one, the later one first.
// Errors:    none; nothing is allocated.
class BRightsOfRequest {
public:
    explicit BRightsOfRequest(const BAccess& access);
    ~BRightsOfRequest();
    // Those that the calling thread decides by already, or null.
    static const BRightsOfRequest* OfThisThread(const BAccess& access);
    BRightsOfRequest(const BRightsOfRequest&) = delete;
    BRightsOfRequest& operator=(const BRightsOfRequest&) = delete;

    // Who asks in this request: his view is looked up once, and not for every object. The
    // two live as long as this, and are known again by their addresses.
    void Expect(const BSecurityParams& security, EViewType type, const BString& context);
    EVacmAnswer Decide(const BSecurityParams& security, EViewType type, const BString& context,
                       const BObjectIdentifier& name) const;

    SRights* operator->() const { return m_rights; }
    SRights& operator*() const { return *m_rights; }

private:
    struct SExpected {
        const BSecurityParams* security = nullptr;
        const BString* context = nullptr;
        EViewType type = eViewRead;
        SVacmDecision view;
    };

    const BAccess& m_access;
    const BRightsOfRequest* const m_outer;
    SRights* m_rights;
    std::shared_ptr<SRights> m_own; // null: those of an outer one
    SExpected m_expected;           // nobody, or the outer one's
};

} // namespace VLK::host
