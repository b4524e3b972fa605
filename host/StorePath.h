// Where the store lives when the operator names no file.
#pragma once

#include <string>

namespace VLK::host {

// vkagentd/store.db under $XDG_STATE_HOME (when that is an absolute path) or
// ~/.local/state. Creates the directories that are missing, with mode 0700.
// Throws BHostError.
std::string DefaultStorePath();

} // namespace VLK::host
