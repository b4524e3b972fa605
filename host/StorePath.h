// Where the agent keeps what outlives it, when the operator names no file.
#pragma once

#include <string>

namespace VLK::host {

// vkagentd under $XDG_STATE_HOME (when that is an absolute path) or
// ~/.local/state. Throws BHostError when there is no home directory.
std::string StateDirectory();
// Creates the directories that are missing, with mode 0700. Throws BHostError.
void CreateDirectories(const std::string& path);
// store.db in the state directory, which is created. Throws BHostError.
std::string DefaultStorePath();

} // namespace VLK::host
