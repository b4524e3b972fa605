// The whole of an agent: from its command line, or its options, to its exit
// status.
#pragma once

#include "host/Options.h"

#include <functional>
#include <vkmibh/agents.h>

namespace VLK::host {

// Registers what an agent serves beside the system group; called once, before
// the first request. What is registered must outlive the agent. The sender may be used
// on any thread, and outlives the agent: before its start and after its end traps go
// nowhere. The store is there as long as requests run, null without one.
using FAddModules = std::function<void(IMIBHandler&, ITrapSender&, INonVolatile*)>;

// vkagentd.
int RunAgent(int argc, const char* const* argv);

// Serves until SIGINT or SIGTERM. Not for a process that goes on using the
// library's singletons: they end with the agent.
int RunAgent(const SOptions& options, const FAddModules& addModules);

} // namespace VLK::host
