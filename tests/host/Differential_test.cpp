// What the agent serves of a machine, beside what the distribution's agent does. Where
// they differ on purpose a row of kKnown says so, and why.
#include "SnmpDaemon.h"
#include "ToolAgent.h"

#include <algorithm>
#include <map>
#include <set>

namespace {

const std::string kMib2 = ".1.3.6.1.2.1.";

struct SValue {
    std::string type;
    std::string text;
};
// An object, without its index, and the row: a name that both agents have for it.
using CPlace = std::pair<std::string, std::string>;
using CView = std::map<CPlace, SValue>;

enum EKind { eOnlyOurs, eOnlyTheirs, eOtherType, eOtherValue };
const char* const kKinds[] = {"only ours", "only theirs", "another type", "another value"};

using FRows = bool (*)(const std::string& row);
bool AnyRow(const std::string&) { return true; }
bool Loopback(const std::string& row) { return row == "lo"; }
bool NotLoopback(const std::string& row) { return row != "lo"; }
bool Cached(const std::string& row) { return row == "Cached memory"; }
bool OtherMemory(const std::string& row)
{
    return row == "Shared memory" || row == "Available memory";
}

// Mounted, and no disk.
bool InMemory(const std::string& row)
{
    std::istringstream mounts(ReadFile("/proc/self/mounts"));
    for (std::string device, place, type, rest; mounts >> device >> place >> type;) {
        std::getline(mounts, rest);
        if (place == row && device[0] != '/')
            return true;
    }
    return false;
}

struct SKnown {
    std::string object; // below mib-2; with a dot at its end any below it
    EKind kind;
    FRows rows;
    bool isCertain; // on every machine
    const char* reason;
};

constexpr bool kCertain = true;
constexpr bool kSometimes = false;

const char kOwn[] = "each agent has its own name and place";
const char kModules[] = "each agent has its own MIB modules";
const char kUncounted[] = "the kernel does not count it: no instance, not a zero";
const char kUnicasts[] = "the kernel does not tell unicasts apart, so no instance here; where an "
                         "interface has nothing else they are all packets";
const char kDeprecated[] = "deprecated by RFC 2863";
const char kNoSpeed[] = "a speed that is not known at the moment has no instance";
const char kLoopbackSpeed[] = "the loopback has no bandwidth: 0, not a made-up one";
const char kLoopbackState[] = "as the kernel has it: the loopback's state is unknown";
const char kIndexes[] = "each agent numbers its rows itself";
const char kMemoryRows[] = "no storage areas of their own";
const char kPseudo[] = "file systems in memory are no storage of the host";
const char kNoSessions[] = "without a record of sessions there is no number of users";
const char kUnknown[] = "unknown there: a zero; here from the kernel";

const SKnown kKnown[] = {
    {"1.1", eOtherValue, AnyRow, kCertain, kOwn},
    {"1.2", eOtherValue, AnyRow, kCertain, kOwn},
    {"1.4", eOtherValue, AnyRow, kCertain, kOwn},
    {"1.5", eOtherValue, AnyRow, kCertain, kOwn},
    {"1.6", eOtherValue, AnyRow, kCertain, kOwn},
    {"1.7", eOnlyOurs, AnyRow, kCertain, "sysServices is not configured there"},
    {"1.9.1.2", eOtherValue, AnyRow, kSometimes, kModules},
    {"1.9.1.3", eOtherValue, AnyRow, kCertain, kModules},
    {"2.2.1.5", eOtherValue, Loopback, kCertain, kLoopbackSpeed},
    {"2.2.1.5", eOnlyTheirs, NotLoopback, kSometimes, kNoSpeed},
    {"2.2.1.8", eOtherValue, Loopback, kCertain, kLoopbackState},
    {"2.2.1.11", eOnlyTheirs, NotLoopback, kSometimes, kUnicasts},
    {"2.2.1.12", eOnlyTheirs, AnyRow, kCertain, kDeprecated},
    {"2.2.1.15", eOnlyTheirs, AnyRow, kCertain, kUncounted},
    {"2.2.1.17", eOnlyTheirs, NotLoopback, kSometimes, kUnicasts},
    {"2.2.1.18", eOnlyTheirs, AnyRow, kCertain, kDeprecated},
    {"2.2.1.21", eOnlyTheirs, AnyRow, kCertain, kDeprecated},
    {"2.2.1.22", eOnlyTheirs, AnyRow, kCertain, kDeprecated},
    {"31.1.1.1.3", eOnlyTheirs, AnyRow, kCertain, kUncounted},
    {"31.1.1.1.4", eOnlyTheirs, AnyRow, kCertain, kUncounted},
    {"31.1.1.1.5", eOnlyTheirs, AnyRow, kCertain, kUncounted},
    {"31.1.1.1.7", eOnlyTheirs, NotLoopback, kSometimes, kUnicasts},
    {"31.1.1.1.9", eOnlyTheirs, AnyRow, kCertain, kUncounted},
    {"31.1.1.1.11", eOnlyTheirs, NotLoopback, kSometimes, kUnicasts},
    {"31.1.1.1.12", eOnlyTheirs, AnyRow, kCertain, kUncounted},
    {"31.1.1.1.13", eOnlyTheirs, AnyRow, kCertain, kUncounted},
    {"31.1.1.1.14", eOnlyOurs, AnyRow, kCertain, "ifLinkUpDownTrapEnable can be set here"},
    {"31.1.1.1.15", eOtherValue, Loopback, kCertain, kLoopbackSpeed},
    {"31.1.1.1.15", eOnlyTheirs, NotLoopback, kSometimes, kNoSpeed},
    {"31.1.1.1.17", eOtherValue, NotLoopback, kSometimes, "what the kernel made has no connector"},
    {"25.1.3", eOtherValue, AnyRow, kSometimes, kIndexes},
    {"25.1.3", eOnlyTheirs, AnyRow, kSometimes, "where / is no disk of the host: no instance"},
    {"25.1.5", eOnlyTheirs, AnyRow, kSometimes, kNoSessions},
    {"25.1.7", eOtherValue, AnyRow, kCertain, kUnknown},
    {"25.2.3.1.", eOnlyTheirs, OtherMemory, kCertain, kMemoryRows},
    {"25.2.3.1.", eOnlyTheirs, InMemory, kSometimes, kPseudo},
    {"25.2.3.1.1", eOtherValue, AnyRow, kCertain, kIndexes},
    {"25.2.3.1.5", eOtherValue, Cached, kCertain, "of all memory, as other kinds of it"},
    {"25.3.3.1.2", eOnlyOurs, AnyRow, kSometimes, "a load is told after a second, not a minute"},
};

// Values that move on, of other types than counters and times.
const std::set<std::string> kMoving{"25.1.2", "25.1.5", "25.1.6", "25.2.3.1.6", "25.3.3.1.2"};

const char* const kRoots[] = {"1", "2", "31", "25.1", "25.2", "25.3.3"};
// With the column whose value names a row; none: all rows are one.
const std::pair<std::string, std::string> kEntries[] = {{"1.9.1", ""},
                                                        {"2.2.1", "2.2.1.2"},
                                                        {"31.1.1.1", "2.2.1.2"},
                                                        {"25.2.3.1", "25.2.3.1.3"},
                                                        {"25.3.3.1", ""}};

bool StartsWith(const std::string& text, const std::string& start)
{
    return text.compare(0, start.size(), start) == 0;
}

std::string Unquoted(std::string text)
{
    text.erase(std::remove(text.begin(), text.end(), '"'), text.end());
    return text;
}

bool IsSteady(const CPlace& place, const SValue& value)
{
    return value.type != "Counter32" && value.type != "Counter64" && value.type != "Timeticks" &&
           kMoving.count(place.first) == 0;
}

// By name below mib-2.
std::map<std::string, SValue> Walk(const SnmpTools& tools, const std::string& address)
{
    std::map<std::string, SValue> values;
    for (const char* root : kRoots) {
        const Outcome walk = tools.Ask(address, "snmpbulkwalk", "2c", "public", {kMib2 + root});
        for (const std::string& line : Lines(walk.output)) {
            const size_t equals = line.find(" = ");
            if (!StartsWith(line, kMib2) || equals == line.npos)
                continue;
            SValue value{"STRING", line.substr(equals + 3)};
            const size_t colon = value.text.find(": ");
            if (value.text != "\"\"" && colon != value.text.npos) {
                value.type = value.text.substr(0, colon);
                value.text.erase(0, colon + 2);
            }
            if (value.type == "Hex-STRING")
                value.type = "STRING";
            values[line.substr(kMib2.size(), equals - kMib2.size())] = value;
        }
    }
    return values;
}

CPlace PlaceOf(const std::string& name, const std::map<std::string, SValue>& values)
{
    for (const auto& [entry, naming] : kEntries) {
        if (!StartsWith(name, entry + "."))
            continue;
        const size_t index = name.find('.', entry.size() + 1);
        const auto row = values.find(naming + name.substr(index));
        return {name.substr(0, index), row == values.end() ? "" : Unquoted(row->second.text)};
    }
    return {name.substr(0, name.rfind('.')), ""};
}

CView Read(const SnmpTools& tools, const std::string& address)
{
    CView view;
    const std::map<std::string, SValue> values = Walk(tools, address);
    for (const auto& [name, value] : values)
        view[PlaceOf(name, values)] = value;
    const auto processors = std::count_if(values.begin(), values.end(), [](const auto& value) {
        return StartsWith(value.first, "25.3.3.1.1.");
    });
    view[{"25.3.3.1", "number of rows"}] = {"INTEGER", std::to_string(processors)};
    return view;
}

struct SDifference {
    CPlace place;
    EKind kind;
    std::string what;
};

std::vector<SDifference> Compare(const CView& ours, const CView& theirs)
{
    std::vector<SDifference> all;
    for (const auto& [place, value] : ours) {
        const auto other = theirs.find(place);
        if (other == theirs.end())
            all.push_back({place, eOnlyOurs, value.text});
        else if (other->second.type != value.type)
            all.push_back({place, eOtherType, value.type + " and " + other->second.type});
        else if (IsSteady(place, value) && other->second.text != value.text)
            all.push_back({place, eOtherValue, value.text + " and " + other->second.text});
    }
    for (const auto& [place, value] : theirs) {
        if (ours.count(place) == 0)
            all.push_back({place, eOnlyTheirs, value.text});
    }
    return all;
}

bool IsOf(const SDifference& difference, const SKnown& known)
{
    const std::string& object = difference.place.first;
    const bool isOfEntry = known.object.back() == '.' && StartsWith(object, known.object);
    return (object == known.object || isOfEntry) && known.kind == difference.kind &&
           known.rows(difference.place.second);
}

// Differences that nobody knows of, and known ones that are there no more.
std::string Surprises(const std::vector<SDifference>& differences)
{
    std::string surprises;
    for (const SDifference& difference : differences) {
        if (std::none_of(std::begin(kKnown), std::end(kKnown),
                         [&](const SKnown& known) { return IsOf(difference, known); }))
            surprises += difference.place.first + " of '" + difference.place.second +
                         "': " + kKinds[difference.kind] + ": " + difference.what + "\n";
    }
    for (const SKnown& known : kKnown) {
        if (known.isCertain &&
            std::none_of(differences.begin(), differences.end(),
                         [&](const SDifference& difference) { return IsOf(difference, known); }))
            surprises += "no longer " + std::string(kKinds[known.kind]) + ": " + known.object +
                         " (" + known.reason + ")\n";
    }
    return surprises;
}

} // namespace

TEST(Differential, TheAgentDiffersFromTheDistributionsOnPurposeOnly)
{
    if (!SnmpDaemon::IsInstalled())
        GTEST_SKIP() << "snmpd is not installed: its package starts a service on the machine";
    SnmpDaemon theirs;
    ASSERT_TRUE(theirs.IsReady()) << theirs.Log();
    ToolAgent ours;
    ASSERT_TRUE(ours.IsReady()) << ours.FirstLine();
    ASSERT_TRUE(ours.IsComplete());
    std::string surprises;
    // What the kernel tells may change between two walks.
    EXPECT_TRUE(VLK::Eventually([&] {
        surprises = Surprises(
            Compare(Read(ours.Tools(), ours.Address()), Read(ours.Tools(), theirs.Address())));
        return surprises.empty();
    })) << surprises;
}
