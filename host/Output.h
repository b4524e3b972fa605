// A descriptor to write to, piece by piece, without being held up in a write.
#pragma once

#include "host/Descriptor.h"

#include <sys/types.h>

namespace VLK::host {

// Wait until Descriptor() is ready (POLLOUT), then Write(): it comes back at
// once, also on a terminal that has room for less, or none any more.
//
// Ownership: the descriptor stays its owner's. A terminal is opened a second
//            time, since all who have a descriptor of it share its flags; where
//            that is not allowed, a write to it may wait.
// Threads:   no lock inside.
// Errors:    as write(2).
class BOutput {
public:
    explicit BOutput(int descriptor);

    int Descriptor() const { return m_own.IsOpen() ? m_own.Get() : m_descriptor; }
    // Maybe not all of it.
    ssize_t Write(const char* bytes, size_t length) const;

private:
    int m_descriptor;
    BDescriptor m_own;
};

} // namespace VLK::host
