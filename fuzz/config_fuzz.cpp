// Configurations of any bytes: the reader makes one, or says in lines that can be
// read what is wrong; what it makes keeps the rules of a configuration, and can be put to
// work.
#include "fuzz/Fuzz.h"
#include "host/access/Access.h"
#include "host/config/ConfigFile.h"

#include <algorithm>
#include <set>
#include <tuple>

namespace VLK::Fuzz {
namespace {

constexpr const char* kFile = "f";

// Of what is too long, empty or not ASCII a manager could not be told.
void CheckName(const std::string& name)
{
    const bool isPrintable =
        std::all_of(name.begin(), name.end(), [](char c) { return c >= 32 && c < 127; });
    Require(!name.empty() && name.size() <= 32 && isPrintable, "a name that is none");
}

template <class TAll>
auto NamesOf(const TAll& all)
{
    std::set<std::string> names;
    for (const auto& one : all)
        Require(names.insert(one.name).second, "a name twice");
    return names;
}

// What SNMP can say (RFC 2578 section 3.5, RFC 3415 section 4).
void CheckFamily(const std::string& view, const host::SFamily& family)
{
    const BObjectIdentifier& subtree = family.subtree;
    const unsigned length = subtree.Length();
    Require(length > 0 && length <= 128, "a subtree of no length");
    Require(subtree[0] <= 2 && (length == 1 || subtree[0] == 2 || subtree[1] < 40),
            "a subtree that no message can hold");
    Require(family.mask.Length() <= 16, "a mask that is too long");
    Require(view.size() + length + 14 <= 128, "a row that no message can name");
}

std::set<std::string> CheckViews(const host::SConfiguration& made)
{
    std::set<std::string> names = NamesOf(made.views);
    for (const host::SView& view : made.views) {
        CheckName(view.name);
        std::set<std::string> subtrees;
        for (const host::SFamily& family : view.families) {
            CheckFamily(view.name, family);
            Require(subtrees.insert(PlainOf(family.subtree.ToString())).second, "a subtree twice");
        }
    }
    for (const host::SView& view : host::BuiltInViews())
        Require(names.insert(view.name).second, "a built-in view of the file");
    names.insert(""); // none
    return names;
}

void CheckGroups(const host::SConfiguration& made)
{
    const std::set<std::string> views = CheckViews(made);
    const auto& contexts = made.contexts;
    std::set<std::pair<int, std::string>> members;
    for (const host::SGroup& group : made.groups) {
        for (const host::SMember& member : group.members)
            Require(members.insert({member.model, member.securityName}).second,
                    "a member of two groups");
        for (const host::SAccess& access : group.access) {
            Require(std::all_of(std::begin(access.views), std::end(access.views),
                                [&](const std::string& view) { return views.count(view) == 1; }),
                    "a view that is not there");
            const auto fits = [&](const std::string& context) {
                return access.isPrefix ? context.rfind(access.context, 0) == 0
                                       : context == access.context;
            };
            Require(access.context.empty() || std::any_of(contexts.begin(), contexts.end(), fits),
                    "access in a context that is not there");
        }
    }
}

void CheckAskers(const host::SConfiguration& made)
{
    const auto& contexts = made.contexts;
    NamesOf(made.communities);
    for (const host::SCommunity& community : made.communities) {
        Require(!community.name.empty() && community.name.size() <= 255, "a community's name");
        Require(community.context.empty() || std::find(contexts.begin(), contexts.end(),
                                                       community.context) != contexts.end(),
                "a community in a context that is not there");
    }
    NamesOf(made.users);
    for (const host::SUser& user : made.users) {
        CheckName(user.name);
        Require(user.priv.empty() || !user.auth.empty(), "privacy without authentication");
        Require(user.auth.empty() == user.authPassphrase.empty() &&
                    user.priv.empty() == user.privPassphrase.empty(),
                "a passphrase for nothing, or none");
        for (const std::string* word : {&user.authPassphrase, &user.privPassphrase})
            Require(word->empty() || (word->size() >= 8 && word->size() <= 255), "a passphrase");
    }
}

void CheckSinks(const host::SConfiguration& made)
{
    std::set<std::tuple<std::string, std::string, int, bool>> sinks;
    for (const host::STrapSink& sink : made.trapSinks) {
        const bool isV3 = sink.protocol == host::eSnmpV3;
        Require(sink.address.Port() != 0, "a sink without a port");
        Require(sink.timeout.count() >= 10 && sink.timeout.count() <= 3600000, "a sink's timeout");
        Require(sink.retries <= 255, "a sink's retries");
        Require(!sink.isInform || sink.protocol != host::eSnmpV1, "an inform of SNMPv1");
        Require(!isV3 || made.v3, "a sink with SNMPv3, which is off");
        Require(sinks
                    .emplace(sink.address.ToString(), isV3 ? sink.user : sink.community,
                             sink.protocol, sink.isInform)
                    .second,
                "a sink twice");
    }
}

void CheckMade(const host::SConfiguration& made)
{
    Require(made.workers <= 1024 && made.timeToLive <= 3600000, "a number");
    Require(made.store.empty() || made.store[0] == '/', "a store that depends on where it starts");
    std::set<std::string> contexts;
    for (const std::string& context : made.contexts) {
        CheckName(context);
        Require(contexts.insert(context).second, "a context twice");
    }
    CheckGroups(made);
    CheckAskers(made);
    CheckSinks(made);
}

void CheckLines(const std::vector<std::string>& lines)
{
    Require(!lines.empty(), "a refusal without a reason");
    for (const std::string& line : lines) {
        Require(line.rfind(std::string(kFile) + ":", 0) == 0, "a line without its place");
        const bool isReadable = std::all_of(line.begin(), line.end(), [](char c) {
            return static_cast<unsigned char>(c) >= 32 && c != 127;
        });
        if (!isReadable)
            Differ("a line with control characters: " + line);
        // What was written is quoted, but for secrets.
        const std::string what = line.substr(std::min(line.size(), line.find(": ")));
        for (const char* key : {": authPassphrase '", ": privPassphrase '"})
            Require(what.rfind(key, 0) != 0, "a passphrase is told");
    }
}

// Many dots of keys are never given to the parser, which would recurse for each of them.
void CheckDots(const std::string& text, const std::vector<std::string>& lines)
{
    const bool hasTexts = text.find_first_of("\"'#") != text.npos;
    if (!hasTexts && std::count(text.begin(), text.end(), '.') > 1000)
        Require(lines.front().find("dots") != std::string::npos, "keys of many dots");
}

void CheckAccess(const host::SConfiguration& configuration)
{
    host::BAccess access(configuration, nullptr);
    BSecurityParams nobody;
    const BObjectIdentifier name(BString("1.3.6.1.2.1.1.1.0"));
    const host::SVacmDecision decision = host::BRightsOfRequest(access)->vacm.Decide(
        nobody, host::eViewWrite, BString("no such context"), name);
    Require(decision.answer != host::eVacmAllowed, "rights of a context that is not there");
}

} // namespace
} // namespace VLK::Fuzz

int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size)
{
    using namespace VLK;
    const std::string text(reinterpret_cast<const char*>(data), size);
    if (text.find("PassphraseFile") != std::string::npos)
        return 0; // would read any file of this machine
    try {
        const host::SConfiguration made = host::ReadConfigText(text, Fuzz::kFile, true);
        Fuzz::CheckMade(made);
        Fuzz::CheckAccess(made);
    } catch (const host::BConfigError& error) {
        Fuzz::CheckLines(error.Lines());
        Fuzz::CheckDots(text, error.Lines());
    }
    return 0;
}
