// Runs: consecutive bindings of a request that one subtree handler serves.
#pragma once

#include <vkmibh/tree.h>

namespace VLK {

struct SBindingRun {
    BMibSubtreeHandler* handler; // null: no region holds the first binding
    int length;
};

// The run that starts at binding `first`. A handler that throws while it is
// asked for an instance gives false, and run.length is the count of bindings
// before the one it was asked for.
bool FormRun(const BMibTree& tree, const BVarBindList& list, int first, SBindingRun& run);

// Keeps a handler's idea of the failing position within the run it was given.
inline int ClampToRun(int index, int first, int length)
{
    return index < first || index >= first + length ? first : index;
}

} // namespace VLK
