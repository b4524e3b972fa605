// Descriptors that are waited on together, whatever comes and goes among them.
#pragma once

#include "host/Descriptor.h"

#include <cstddef>

namespace VLK::host {

// Asks the system only for those that have become readable (epoll(7)), where a poll would
// ask for each of them twice.
//
// Ownership: the descriptors stay their owner's. One that is closed leaves the set, unless
//            there is a copy of it.
// Threads:   any; several may wait, each of which sees what is readable.
// Errors:    BHostError.
class BPollSet {
public:
    // The keys of those that were readable, or had an error to tell. There may be more.
    class CReady {
    public:
        const unsigned* begin() const { return m_keys; }
        const unsigned* end() const { return m_keys + m_count; }
        bool Has(unsigned key) const;

    private:
        friend BPollSet;
        static constexpr size_t kMost = 16;
        unsigned m_keys[kMost] = {};
        size_t m_count = 0;
    };

    BPollSet();

    void Add(int descriptor, unsigned key);
    void Remove(int descriptor);
    // None after so many milliseconds, of which -1 is for ever, or for a signal.
    CReady Wait(int milliseconds) const;
    // Readable while one of them is.
    int Descriptor() const { return m_set.Get(); }

private:
    BDescriptor m_set;
};

} // namespace VLK::host
