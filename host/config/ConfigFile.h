// The configuration file of vkagentd; docs/configuration.md describes it.
#pragma once

#include "host/HostError.h"
#include "host/config/Configuration.h"

namespace VLK::host {

// Everything that was found wrong, a line each.
class BConfigError : public BHostError {
public:
    explicit BConfigError(std::vector<std::string> lines)
        : BHostError(eExitUsage, lines.front()), m_lines(std::move(lines))
    {
    }
    const std::vector<std::string>& Lines() const { return m_lines; }

private:
    std::vector<std::string> m_lines;
};

// Throws BConfigError: with lines "FILE:LINE: reason", or with one line
// "FILE: reason" for a file that cannot be read.
SConfiguration ReadConfigFile(const std::string& path);
// The same for a text; `file` is its name in messages. Passphrases are refused unless
// the file is its owner's alone.
SConfiguration ReadConfigText(const std::string& text, const std::string& file,
                              bool isPrivate = false);

} // namespace VLK::host
