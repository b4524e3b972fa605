// The whole of vkagentd, from its command line to its exit status.
#pragma once

namespace VLK::host {

int RunAgent(int argc, const char* const* argv);

} // namespace VLK::host
