// Asking a BMibHandler as a protocol engine does.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>
#include <vkmibh/handler.h>
#include <vkmibh/testing/oids.h>

namespace VLK {
namespace Test {

constexpr int kV1 = 0;
constexpr int kV2c = 1;

// Sets its error index to this before a request, to see who writes it.
constexpr int kUntouched = -77;

// Values to set.
BObjectSyntax Number(int value);
BObjectSyntax Gauge(unsigned value);
BObjectSyntax Bytes(const std::string& bytes);
BObjectSyntax ObjectId(const char* dotted);

struct Binding {
    std::string name;
    BObjectSyntax value;
};
using Bindings = std::vector<Binding>;

// An open transaction, and the answers of the requests made in it.
//
//   Client client(handler);
//   client.Get({"1.3.6.1.2.1.1.4.0"}) == eSnmpNoError && client.TextAt(0) == "..."
//   client.Set({{"1.3.6.1.2.1.1.4.0", Bytes("me")}}) == eSnmpNotWritable
//
// Ownership: the handler is the test's and outlives it.
// Threads:   one for each.
// Errors:    SNMP error status of the request; errorIndex goes with it.
class Client {
public:
    explicit Client(BMibHandler& handler, int protocolId = kV2c);
    ~Client();
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    int Query(int pduType, BVarBindList& list);

    int Get(std::initializer_list<const char*> names) { return Ask(ePduGet, names); }
    int GetNext(std::initializer_list<const char*> names) { return Ask(ePduGetNext, names); }
    int Set(const Bindings& bindings);
    int Set(const char* name, const char* text) { return Set({{name, Bytes(text)}}); }
    // "name=value" of each instance below the root, by GETNEXT from it.
    std::vector<std::string> Walk(const char* root);

    unsigned Id() const { return m_id; }
    const BSecurityParams& Security() const { return m_security; }
    const BString& Context() const { return m_context; }
    std::string NameAt(int index) const { return TextOf(answer[index].Name()); }
    unsigned SyntaxAt(int index) const { return answer[index].Value().Syntax(); }
    std::string TextAt(int index) const { return answer[index].Value().ValToStr().c_str(); }

    int errorIndex = kUntouched;
    BVarBindList answer;

private:
    int Ask(int pduType, std::initializer_list<const char*> names);

    BMibHandler& m_handler;
    BTransaction m_transaction;
    unsigned m_id;
    BSecurityParams m_security;
    BString m_context;
};

} // namespace Test
} // namespace VLK
