// Requests of SNMPv1 and SNMPv2c in the encoding that managers use, and their answers.
#pragma once

#include "host/Request.h"

#include <vector>

namespace VLK::host {

// Reads a GET, GETNEXT, GETBULK or SET that leaves no question open: by community, its
// bindings in the shortest form, values of a SET of the types that managers set, and none
// in other requests. Whatever else a message may be is the wire library's to judge.
//
// `bindings` takes the list as it is encoded, for answers that repeat it. False, and what
// the two hold does not count, when it is no such message, or when there is no memory.
bool ReadPlainRequest(const unsigned char* message, size_t length, SRequest& request,
                      std::vector<unsigned char>& bindings);

// Encodes answers to them, byte for byte like the wire library.
//
// Threads: one.
class BPlainAnswer {
public:
    // 0, or why there is none: tooBig when it is longer than `request.maxMessage`, genErr
    // for what no message can hold.
    int Write(const SRequest& request, const std::vector<unsigned char>& bindings,
              const SResponse& response);
    const unsigned char* Data() const { return m_room.data() + m_begin; }
    size_t Length() const { return m_room.size() - m_begin; }

private:
    // Of a datagram, and what the longest name takes (RFC 3416 section 4.1) at most: so
    // much is asked for before one is written.
    static constexpr size_t kRoom = 65536 + 1024;

    std::vector<unsigned char> m_room = std::vector<unsigned char>(kRoom);
    size_t m_begin = 0;
};

} // namespace VLK::host
