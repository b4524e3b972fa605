// Who may see and change what: the view-based access control model (RFC 3415).
#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>
#include <vkmibh/filter.h>
#include <vkmibh/handler.h>

namespace VLK::host {

// Of RFC 3411, as in BSecurityParams.
enum ESecurityModel { eModelAny = 0, eModelV1 = 1, eModelV2c = 2, eModelUsm = 3 };

// As the configuration and the console write it; "another model" for others.
const char* NameOfModel(int model);

enum EViewType { eViewRead, eViewWrite, eViewNotify };

// A row of the vacmSecurityToGroupTable.
struct SMember {
    ESecurityModel model = eModelV1;
    std::string securityName;
};

// A row of the vacmAccessTable. A view without a name shows nothing.
struct SAccess {
    std::string context;
    bool isPrefix = false; // the context's name begins so
    ESecurityModel model = eModelAny;
    ESecurityLevel level = eNoAuthNoPriv; // at least
    std::string views[3];                 // by EViewType
};

struct SGroup {
    std::string name; // for messages; two groups may be called alike
    std::vector<SMember> members;
    std::vector<SAccess> access;
};

// The answers of isAccessAllowed (RFC 3415 section 3.2).
enum EVacmAnswer {
    eVacmAllowed,
    eVacmNoSuchContext,
    eVacmNoGroupName,
    eVacmNoAccessEntry,
    eVacmNoSuchView,
    eVacmNotInView
};

struct SViewChoice;

// An answer, and how far the question came; null where it did not.
struct SVacmDecision {
    EVacmAnswer answer = eVacmNoSuchContext;
    const std::string* group = nullptr;
    const BString* view = nullptr; // may be empty
};

// Decides by security model, name and level, context and object.
//
// Of several access entries that fit, that of the very security model goes
// before that of any model; of those the one with the longest context prefix; of
// those the one with the highest level (RFC 3415 section 4, vacmAccessTable).
//
// Ownership: the views outlive it.
// Threads:   any; unchanging after construction, but for KeepViews(). The views have
//            their own lock, and may be changed meanwhile.
// Errors:    CheckAccess() answers 0 or an EVacmAnswer. Nothing is allocated by
//            a question.
// Contract:  the first group that holds a member counts.
class BVacm : public IAccessControl {
public:
    // There is always the context without a name.
    BVacm(const std::vector<SGroup>& groups, const std::vector<std::string>& contexts,
          BFilterTable& views);
    ~BVacm() override;
    BVacm(const BVacm&) = delete;
    BVacm& operator=(const BVacm&) = delete;

    // isAccessAllowed.
    SVacmDecision Decide(const BSecurityParams& security, EViewType type, const BString& context,
                         const BObjectIdentifier& name) const;
    // The same in two steps, for many objects of one request: as far as the view's name,
    // which none of them has a part in, and then the object.
    SVacmDecision SelectView(const BSecurityParams& security, EViewType type,
                             const BString& context) const;
    SVacmDecision Decide(const SVacmDecision& selected, const BObjectIdentifier& name) const;
    // Whether the requester has any view of that type: as Decide(), but for the
    // object.
    SVacmDecision FindView(const BSecurityParams& security, EViewType type,
                           const BString& context) const;

    int CheckAccess(const BSecurityParams& security, unsigned char accessKind,
                    const BString& context, const BVarBind& binding) override;

    // From now on it decides by that copy of the views, which are then changed for
    // others; a second copy is not taken. One at a time.
    void KeepViews(std::unique_ptr<BFilterTable> copy);

    // For whoever wants to show it: the access entry that decides, nothing when there is
    // none, and the row of a view.
    std::optional<SAccess> EntryFor(const BSecurityParams& security, const BString& context) const;
    SViewChoice ChooseRow(const std::string& view, const BObjectIdentifier& name) const;

private:
    struct SEntry;
    struct SGroupEntries;
    struct SMembership;

    const SGroupEntries* GroupOf(const BSecurityParams& security) const;
    bool IsShown(const BString& view, const BObjectIdentifier& name) const;
    bool HasRows(const BString& view) const;
    template <class TAsk>
    auto AskViews(TAsk ask) const;

    std::vector<BString> m_contexts;
    std::vector<SGroupEntries> m_groups;
    std::vector<SMembership> m_members; // by model and name
    std::atomic<BFilterTable*> m_views;
    std::unique_ptr<BFilterTable> m_kept; // what m_views points to, once it is there
};

} // namespace VLK::host
