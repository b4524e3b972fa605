// Lines for the operator on standard error.
#pragma once

#include <string>

namespace VLK::host {

// Writes "vkagentd: " and the text as one line, with one write; control
// characters of the text become blanks.
void LogLine(const std::string& text);

} // namespace VLK::host
