// What the examples share: an agent around one module.
#pragma once

#include <functional>
#include <string>
#include <vkmibh/agents.h>
#include <vkmibh/handler.h>

namespace VLK::examples {

// Serves the module at argv[1], IP:PORT (127.0.0.1:1161 without it), until SIGINT
// or SIGTERM; `public` reads, `private` reads and writes. Nothing is kept when the
// program ends. Returns the exit status.
int ServeExample(int argc, char** argv, BMibImplGroup& module);
int ServeExample(int argc, char** argv, BMibImpl& module);
int ServeExample(int argc, char** argv, BMibSubtreeHandler& module);

// Makes the module, too.
template <class TModule>
int ServeExample(int argc, char** argv)
{
    TModule module;
    return ServeExample(argc, argv, module);
}

// The same for a module that needs more of its agent; empty: not there.
struct SExampleHost {
    std::string storeFile; // in which values are kept
    std::string receiver;  // of notifications, IP:PORT
};
// Makes the module, which outlives the agent. The store may be null.
using FMakeModule = std::function<BMibImplGroup&(INonVolatile* store, ITrapSender& traps)>;
int ServeExample(int argc, char** argv, const SExampleHost& host, const FMakeModule& make);

} // namespace VLK::examples
