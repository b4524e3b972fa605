// Two walks over one fixture: GET and GETNEXT of a module must tell the same
// story as a sorted list of what it serves.
#pragma once

#include <string>
#include <vector>
#include <vkmibh/subtree.h>

namespace VLK {
namespace Test {

struct SServed {
    const char* name;
    int tag;           // an EAsnSyntax
    const char* value; // as ValToStr() gives it
};

// Asks for every instance, for the next of every instance, of all that lies just
// before and just after it and above it, and walks from the root to the end. So
// holes, order, and what is served twice or not at all come to light.
//
//   TwoWalks(table, "1.3.6.1.4.1.32473.7.1", {{"1.3.6.1.4.1.32473.7.1.2.1", eAsnInteger, "5"}})
//       .Run()
//
// Ownership: the handler is the test's, initialised, and outlives it.
// Threads:   what is served must not change meanwhile.
// Errors:    Run() returns what is wrong, a line for each, or an empty text.
class TwoWalks {
public:
    TwoWalks(BMibSubtreeHandler& handler, const char* root, std::vector<SServed> served);

    std::string Run();

private:
    void CheckServed(size_t i, const BObjectSyntax& value, const std::string& asked);
    void Gets();
    void Walk();
    std::vector<BObjectIdentifier> Questions() const;
    void AskNext(const BObjectIdentifier& name);
    // False, and a line, when it is not as wanted.
    bool Want(const std::string& asked, const std::string& wanted, const std::string& got);

    BMibSubtreeHandler& m_handler;
    BObjectIdentifier m_root;
    std::vector<SServed> m_served;
    std::vector<BObjectIdentifier> m_names;
    std::string m_wrong;
};

} // namespace Test
} // namespace VLK
