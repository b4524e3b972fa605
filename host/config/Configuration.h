// What an agent is told at its start: by a file, by the command line, or by
// neither.
#pragma once

#include "host/Log.h"
#include "host/Notification.h"
#include "host/access/Communities.h"
#include "host/access/Users.h"
#include "host/access/Vacm.h"

#include <optional>
#include <string>
#include <vector>

namespace VLK::host {

// A row of the vacmViewTreeFamilyTable.
struct SFamily {
    BObjectIdentifier subtree;
    BOctetString mask;
    EFilterType type = eFilterIncluded;
};

struct SView {
    std::string name;
    std::vector<SFamily> families;
};

// Where notifications go. What they may hold is decided by the notify view of
// `security` in `context`, which are those of the sink's community, or of its user.
struct STrapSink : SReceiver {
    BSecurityParams security;
    BString context;

    bool operator==(const STrapSink& other) const;
};

struct SAlarmReader {
    BSecurityParams security;
    BString context;
};

// The group of the operator at the console, who has an empty security name with
// model USM; no request from the wire has an empty one with that model.
constexpr const char* kGroupConsole = "console";

constexpr unsigned kMostWorkers = 1024;

struct SConfiguration {
    std::string file; // empty: there is none
    std::vector<BTransportAddress> listen;
    std::string store; // empty: the file under the user's state directory
    ELogTarget log = eLogStderr;
    ELogLevel logLevel = eLogInfo;
    // Requests that may be at work at once; 0: four for each processor.
    unsigned workers = 0;
    // Milliseconds that what the kernel has told is shown to later requests.
    unsigned timeToLive = 1000;
    // What snmpEnableAuthenTraps is until a manager sets it; nothing: disabled.
    std::optional<bool> authenTraps;
    // Whether the file says who may ask, be it nobody.
    bool hasCommunities = false;
    std::vector<std::string> contexts;
    std::vector<SView> views; // without those that are built in
    std::vector<SCommunity> communities;
    // SNMPv3 is spoken when there is one, and it is not switched off.
    std::vector<SUser> users;
    bool v3 = true;
    bool SpeaksV3() const { return v3 && !users.empty(); }
    // The first is the console's.
    std::vector<SGroup> groups{{kGroupConsole, {{eModelUsm, ""}}, {}}};
    std::vector<STrapSink> trapSinks;
    // In whose name alarms read their variables. Without one: of nobody, who has no view.
    SAlarmReader alarms;
};

// Views that are always there.
constexpr const char* kViewEverything = "everything";
constexpr const char* kViewSystemOnly = "systemonly"; // 1.3.6.1.2.1.1
const std::vector<SView>& BuiltInViews();

// Adds a community with rights of its own, in a group of its own: the views by
// EViewType, in any context.
void AddCommunity(SConfiguration& configuration, const SCommunity& community,
                  const std::string (&views)[3]);
// The same for a user, at the strongest level that he has.
void AddUser(SConfiguration& configuration, const SUser& user, const std::string (&views)[3]);
// Where nothing else is said, the operator sees and changes everything.
void OpenConsole(SConfiguration& configuration);

} // namespace VLK::host
