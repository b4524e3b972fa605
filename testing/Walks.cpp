#include <algorithm>
#include <vkmibh/handler.h>
#include <vkmibh/testing/oids.h>
#include <vkmibh/testing/walks.h>

namespace VLK {
namespace Test {

namespace {

constexpr unsigned kId = 77;
constexpr char kEnd[] = "endOfMibView";

std::string StatusOf(int status)
{
    return status == eSnmpNoError ? "" : std::string("status ") + LabelErrorStatus(status);
}

// Where a GETNEXT has led. A handler written by hand has two more ways to say that its region
// holds nothing further.
std::string NextPlace(BMibSubtreeHandler& handler, BVarBind& binding)
{
    const bool isPlain = handler.ImplKind() == eImplPlainHandler;
    const int status = handler.GetNext(kId, binding);
    const bool isEnd =
        status == eSnmpNoError
            ? (isPlain ? binding.Value().IsException() : binding.Value().Syntax() == eEndOfMibView)
            : isPlain && status == eSnmpNoSuchName;
    if (isEnd)
        return kEnd;
    return status == eSnmpNoError ? TextOf(binding.Name()) : StatusOf(status);
}

std::string ShownOf(int tag, const char* value)
{
    return "tag " + std::to_string(tag) + " '" + value + "'";
}

} // namespace

TwoWalks::TwoWalks(BMibSubtreeHandler& handler, const char* root, std::vector<SServed> served)
    : m_handler(handler), m_root(MakeOid(root)), m_served(std::move(served))
{
    for (const SServed& item : m_served)
        m_names.push_back(MakeOid(item.name));
}

std::string TwoWalks::Run()
{
    m_wrong.clear();
    if (!std::is_sorted(m_names.begin(), m_names.end()))
        return "the fixture's names are not in rising order: sort them\n";
    Gets();
    Walk();
    for (const BObjectIdentifier& name : Questions())
        AskNext(name);
    return m_wrong;
}

bool TwoWalks::Want(const std::string& asked, const std::string& wanted, const std::string& got)
{
    if (wanted == got)
        return true;
    m_wrong += asked + ": want " + (wanted.empty() ? "an answer" : wanted) + ", got " +
               (got.empty() ? "an answer" : got) + "\n";
    return false;
}

void TwoWalks::CheckServed(size_t i, const BObjectSyntax& value, const std::string& asked)
{
    Want(asked, ShownOf(m_served[i].tag, m_served[i].value),
         ShownOf(static_cast<int>(value.Syntax()), value.ValToStr().c_str()));
}

void TwoWalks::Gets()
{
    for (size_t i = 0; i < m_names.size(); ++i) {
        const std::string asked = std::string("get ") + m_served[i].name;
        BVarBindList list;
        list.Append(m_names[i]);
        int index = 0;
        if (Want(asked, "", StatusOf(m_handler.Get(kId, list, index, 1))) &&
            Want(asked, m_served[i].name, TextOf(list[0].Name())))
            CheckServed(i, list[0].Value(), asked);
    }
}

// From the root to the end, each answer being the next question.
void TwoWalks::Walk()
{
    BVarBind binding(m_root);
    for (size_t i = 0; i < m_names.size(); ++i) {
        const std::string asked = "walk, step " + std::to_string(i + 1);
        if (!Want(asked, m_served[i].name, NextPlace(m_handler, binding)))
            return;
        CheckServed(i, binding.Value(), asked);
        binding.Value().SetNull();
    }
    Want("walk, after the last", kEnd, NextPlace(m_handler, binding));
}

// Every name, what lies just before and just after it, and all above it.
std::vector<BObjectIdentifier> TwoWalks::Questions() const
{
    std::vector<BObjectIdentifier> questions{BObjectIdentifier(), m_root};
    for (const BObjectIdentifier& name : m_names) {
        questions.push_back(name);
        for (unsigned length = m_root.Length(); length < name.Length(); ++length) {
            BObjectIdentifier above(name);
            above.Truncate(length);
            questions.push_back(above);
        }
        BObjectIdentifier near(name);
        unsigned& last = near[near.Length() - 1];
        if (last > 0) {
            --last;
            questions.push_back(near);
            near.Append(~0u);
            questions.push_back(near);
        }
        near = name;
        near.Append(0u);
        questions.push_back(near);
        near = name;
        if (near[near.Length() - 1] != ~0u) {
            ++near[near.Length() - 1];
            questions.push_back(near);
        }
    }
    BObjectIdentifier after(m_root);
    ++after[after.Length() - 1];
    questions.push_back(after);
    return questions;
}

void TwoWalks::AskNext(const BObjectIdentifier& name)
{
    const std::string asked = "next of " + TextOf(name);
    const auto next = std::upper_bound(m_names.begin(), m_names.end(), name);
    BVarBind binding(name);
    const bool wantsEnd = next == m_names.end();
    if (Want(asked, wantsEnd ? kEnd : TextOf(*next), NextPlace(m_handler, binding)) && !wantsEnd)
        CheckServed(static_cast<size_t>(next - m_names.begin()), binding.Value(), asked);
}

} // namespace Test
} // namespace VLK
