// Calls into the code of the host and of its modules.
#pragma once

#include <cxxabi.h>

namespace VLK {

// Calls `call` and gives its result, or `onThrow` when it throws: nothing that
// a host throws crosses the library. The unwinding of a cancelled thread goes
// on, since swallowing it would end the process; it is caught as a reference
// without an object, which only the check of references would mind.
template <class TCall, class TResult>
__attribute__((no_sanitize("undefined"))) TResult HostCall(TCall&& call, TResult onThrow)
{
    try {
        return call();
    } catch (abi::__forced_unwind&) {
        throw;
    } catch (...) {
        return onThrow;
    }
}

} // namespace VLK
