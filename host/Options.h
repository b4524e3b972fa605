// The command line of vkagentd.
#pragma once

#include "host/CommunityAccess.h"
#include "host/TransportAddress.h"

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace VLK::host {

struct SOptions {
    std::vector<BTransportAddress> listen;
    // Empty: `public` reads, from this machine only.
    std::vector<SCommunity> communities;
    // Empty: the file under the user's state directory.
    std::string store;
};

// Reads the command line. --help and --version are answered on `out` and give
// an exit status; otherwise nothing is returned and the agent shall run.
// Throws BHostError for a line that cannot be followed.
std::optional<int> ParseOptions(int argc, const char* const* argv, SOptions& options,
                                std::ostream& out);

} // namespace VLK::host
