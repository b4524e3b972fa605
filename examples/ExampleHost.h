// What the examples share: an agent around one module.
#pragma once

#include <vkmibh/handler.h>

namespace VLK::examples {

// Serves the module at argv[1], IP:PORT (127.0.0.1:1161 without it), until SIGINT
// or SIGTERM; `public` reads, `private` reads and writes. Nothing is kept when the
// program ends. Returns the exit status.
int ServeExample(int argc, char** argv, BMibImplGroup& module);
int ServeExample(int argc, char** argv, BMibSubtreeHandler& module);

} // namespace VLK::examples
