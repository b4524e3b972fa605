// What the generator asks, encoded beforehand, with the answers that have to come.
#pragma once

#include <string>
#include <vector>

namespace wire {

struct SQuestion {
    std::string datagram; // of SNMPv2c, with room for its request id
    size_t idAt = 0;
    // The bindings of the answer, encoded in the shortest form; of those whose value
    // nobody knows beforehand the names only.
    std::string bindings;
    bool isValueKnown = true;
    unsigned count = 1; // of bindings in the answer
};

// The four bytes of a request id: no encoder makes them shorter or longer.
void SetId(SQuestion& question, unsigned sequence);

// The questions of a case, in the order in which they are asked, again and again. Empty
// when there is no such case.
std::vector<SQuestion> QuestionsOf(const std::string& name, unsigned table);

// Whether the answer is the one to that question, whole and without an error.
bool IsAnswer(const SQuestion& question, const unsigned char* datagram, size_t length);

} // namespace wire
