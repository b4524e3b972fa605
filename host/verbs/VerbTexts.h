// What the console's commands of the agent print, one line each, without line ends.
#pragma once

#include "host/OneLine.h"
#include "host/verbs/Verbs.h"

namespace VLK::host {

using CLines = std::vector<std::string>;

// Who is asked about.
struct SAsked {
    std::string who; // for people
    // Where a community is answered; nothing for all others.
    std::optional<std::vector<BNetwork>> sources;
    BSecurityParams security;
    BString context;
    bool isV1 = false;
};

CLines ExplainLines(const BVerbs::SSources& sources, const BObjectIdentifier& name,
                    const SAsked& asked);
CLines OwnersLines(const BRegions& regions, const BObjectIdentifier& above);
CLines StatsLines(const BVerbs::SSources& sources);
CLines LastSetLines(const std::optional<SLastSet>& last);

inline std::string TextOf(const BString& text) { return std::string(text.c_str(), text.length()); }

inline BString StringOf(const std::string& text)
{
    return BString(text.data(), static_cast<unsigned>(text.size()));
}

// A name on one line, whoever gave it.
inline std::string InQuotes(const std::string& text) { return "'" + OnOneLine(text) + "'"; }

// In the time of this machine: "2026-01-31 12:00:00".
std::string TimeText(std::chrono::system_clock::time_point at);

// A name in a column of its own, and what is to be said of it.
std::string Row(const std::string& name, const std::string& text);

} // namespace VLK::host
