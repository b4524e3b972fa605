// A socket of rtnetlink.
#pragma once

#include <cstddef>
#include <vector>

struct mnl_socket;
struct nlmsghdr;

namespace VLK::modules {

// Ownership: owns the socket and its buffer.
// Threads:   one at a time.
// Errors:    the constructor and Send() throw std::system_error.
class CLinkSocket {
public:
    enum EReading { eReadingWaits, eReadingGoesOn };
    // `groups` is a mask of those of linux/rtnetlink.h.
    CLinkSocket(unsigned groups, EReading reading);
    ~CLinkSocket();
    CLinkSocket(const CLinkSocket&) = delete;
    CLinkSocket& operator=(const CLinkSocket&) = delete;

    int Descriptor() const;
    void Send(const nlmsghdr& message);
    // The next datagram; false with errno when there is none.
    bool Receive();

    // Calls `take` with every message of the datagram that Receive() got, until it
    // returns false.
    template <class Take>
    bool ForEach(Take take) const;

private:
    static const nlmsghdr* Checked(const nlmsghdr* message, int left);
    static const nlmsghdr* Next(const nlmsghdr* message, int& left);

    mnl_socket* m_socket;
    std::vector<char> m_buffer;
    int m_received = 0;
};

template <class Take>
bool CLinkSocket::ForEach(Take take) const
{
    int left = m_received;
    const auto* message = reinterpret_cast<const nlmsghdr*>(m_buffer.data());
    while ((message = Checked(message, left))) {
        if (!take(*message))
            return false;
        message = Next(message, left);
    }
    return true;
}

} // namespace VLK::modules
