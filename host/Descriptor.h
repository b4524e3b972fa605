// A file descriptor that is closed with its owner.
#pragma once

#include <unistd.h>

namespace VLK::host {

class BDescriptor {
public:
    explicit BDescriptor(int descriptor) : m_descriptor(descriptor) {}
    ~BDescriptor()
    {
        if (m_descriptor >= 0)
            close(m_descriptor);
    }
    BDescriptor(const BDescriptor&) = delete;
    BDescriptor& operator=(const BDescriptor&) = delete;

    int Get() const { return m_descriptor; }
    bool IsOpen() const { return m_descriptor >= 0; }

private:
    int m_descriptor;
};

} // namespace VLK::host
