// Asking a BMibHandler as a protocol engine does.
#pragma once

#include "tests/support/Oids.h"

#include <vkmibh/handler.h>

#include <initializer_list>

namespace VLK {
namespace Test {

constexpr int kV1 = 0;
constexpr int kV2c = 1;

// Sets its error index to this before a request, to see who writes it.
constexpr int kUntouched = -77;

// An open transaction, and the answers of the requests made in it.
class Client {
public:
    explicit Client(BMibHandler& handler, int protocolId = kV2c)
        : m_handler(handler), m_transaction(protocolId),
          m_id(BTransactions::GetInstance()->StartTransaction(&m_transaction))
    {
    }
    ~Client() { BTransactions::GetInstance()->EndTransaction(m_id); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    int Query(int pduType, BVarBindList& list)
    {
        errorIndex = kUntouched;
        return m_handler.Query(pduType, static_cast<int>(m_id), m_security, m_context, list,
                               errorIndex);
    }

    int Get(std::initializer_list<const char*> names) { return Ask(ePduGet, names); }
    int GetNext(std::initializer_list<const char*> names) { return Ask(ePduGetNext, names); }

    int Set(const char* name, const char* text)
    {
        answer.Clear();
        BObjectSyntax value;
        value.SetOctets(BString(text));
        answer.Append(MakeOid(name), value);
        return Query(ePduSet, answer);
    }

    unsigned Id() const { return m_id; }
    const BSecurityParams& Security() const { return m_security; }
    const BString& Context() const { return m_context; }
    std::string NameAt(int index) const { return TextOf(answer[index].Name()); }
    unsigned SyntaxAt(int index) const { return answer[index].Value().Syntax(); }
    std::string TextAt(int index) const { return answer[index].Value().ValToStr().c_str(); }

    int errorIndex = kUntouched;
    BVarBindList answer;

private:
    int Ask(int pduType, std::initializer_list<const char*> names)
    {
        answer.Clear();
        for (const char* name : names)
            answer.Append(MakeOid(name));
        return Query(pduType, answer);
    }

    BMibHandler& m_handler;
    BTransaction m_transaction;
    unsigned m_id;
    BSecurityParams m_security;
    BString m_context;
};

} // namespace Test
} // namespace VLK
