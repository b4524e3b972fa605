// What TAB does to a command line.
#pragma once

#include <string>
#include <vector>

namespace VLK::host {

struct SCompletion {
    // Goes in at the cursor: what all candidates have in common, and a blank
    // behind the only one.
    std::string insert;
    // Several candidates, and nothing to go in: what they are, sorted.
    std::vector<std::string> choices;
};

// Completes the command's name, or the one that "help" or "?" is asked about.
SCompletion Complete(const std::vector<std::string>& names, const std::string& beforeCursor);

} // namespace VLK::host
