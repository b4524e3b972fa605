// A process that has no descriptor left.
#pragma once

#include <sys/resource.h>

// While it lives nothing can be opened. What is open stays so. A sanitizer of undefined
// behaviour opens pipes where it sees a class for the first time, and ends the process.
class NoDescriptors {
public:
    NoDescriptors()
    {
        getrlimit(RLIMIT_NOFILE, &m_before);
        const rlimit none{0, m_before.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &m_before); }
    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;

private:
    rlimit m_before = {};
};
