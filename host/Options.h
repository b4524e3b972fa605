// The command line of vkagentd, and what it makes together with a configuration
// file.
#pragma once

#include "host/config/Configuration.h"

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace VLK::host {

// A community that reads everything, or writes it too, from anywhere.
struct SCommunityOption {
    std::string name;
    bool writable = false;
};

struct SOptions {
    std::vector<BTransportAddress> listen;
    std::vector<SCommunityOption> communities;
    std::string store;
    // The configuration file, and whether to test it and go.
    std::string config;
    bool checkConfig = false;
    // Nothing: as configured.
    std::optional<ELogTarget> log;
    std::optional<ELogLevel> logLevel;
    // What managers set before is forgotten.
    bool resetStore = false;
    // Requests that may be at work at once; 0: as configured.
    unsigned workers = 0;
    // Nothing is kept: no file is opened, and what managers set ends with the
    // agent. Not on the command line.
    bool withoutStore = false;
    // Beside those of the file. Not on the command line.
    std::vector<STrapSink> trapSinks;
    // Nothing: a console for the operator who started the agent on a terminal.
    std::optional<bool> console;
};

// Reads the command line. --help and --version are answered on `out` and give
// an exit status; otherwise nothing is returned and the agent shall run.
// Throws BHostError for a line that cannot be followed.
std::optional<int> ParseOptions(int argc, const char* const* argv, SOptions& options,
                                std::ostream& out);

// What the options and their file make together. Addresses and the store of the
// options go before those of the file; communities are added to those of the
// file. Where neither names a community, `public` sees the view `systemonly`, from
// this machine. Throws BHostError, and BConfigError for the file.
SConfiguration Configure(const SOptions& options);

} // namespace VLK::host
