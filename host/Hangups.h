// What is done at SIGHUP, as long as it lives.
#pragma once

#include "host/Descriptor.h"

#include <functional>
#include <thread>

namespace VLK::host {

// Ownership: of a thread, on which the work is done; the descriptor stays its owner's.
// Threads:   made and destroyed on one. The end waits for work that is being done.
// Errors:    the constructor throws BHostError, or std::system_error. The work throws
//            nothing.
class BHangups {
public:
    // `hangups` is read when it becomes readable, and then the work is done: once for all
    // that have come until then.
    BHangups(int hangups, std::function<void()> work);
    ~BHangups();
    BHangups(const BHangups&) = delete;
    BHangups& operator=(const BHangups&) = delete;

private:
    void Run();

    const int m_hangups;
    const std::function<void()> m_work;
    BDescriptor m_end;
    std::thread m_thread;
};

} // namespace VLK::host
