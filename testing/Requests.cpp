#include <vkmibh/testing/requests.h>

namespace VLK {
namespace Test {

BObjectSyntax Number(int value)
{
    BObjectSyntax syntax;
    syntax.SetInt(value);
    return syntax;
}

BObjectSyntax Gauge(unsigned value)
{
    BObjectSyntax syntax;
    syntax.SetGauge(value);
    return syntax;
}

BObjectSyntax Bytes(const std::string& bytes)
{
    BObjectSyntax syntax;
    syntax.SetOctets(BOctetString(static_cast<unsigned>(bytes.size()),
                                  reinterpret_cast<const unsigned char*>(bytes.data())));
    return syntax;
}

BObjectSyntax ObjectId(const char* dotted)
{
    BObjectSyntax syntax;
    syntax.SetObjectId(MakeOid(dotted));
    return syntax;
}

Client::Client(BMibHandler& handler, int protocolId)
    : m_handler(handler), m_transaction(protocolId),
      m_id(BTransactions::GetInstance()->StartTransaction(&m_transaction))
{
}

Client::~Client() { BTransactions::GetInstance()->EndTransaction(m_id); }

int Client::Query(int pduType, BVarBindList& list)
{
    errorIndex = kUntouched;
    return m_handler.Query(pduType, static_cast<int>(m_id), m_security, m_context, list,
                           errorIndex);
}

int Client::Ask(int pduType, std::initializer_list<const char*> names)
{
    answer.Clear();
    for (const char* name : names)
        answer.Append(MakeOid(name));
    return Query(pduType, answer);
}

int Client::Set(const Bindings& bindings)
{
    answer.Clear();
    for (const Binding& binding : bindings)
        answer.Append(MakeOid(binding.name.c_str()), binding.value);
    return Query(ePduSet, answer);
}

std::vector<std::string> Client::Walk(const char* root)
{
    std::vector<std::string> all;
    const BObjectIdentifier below = MakeOid(root);
    answer.Clear();
    answer.Append(below);
    BObjectIdentifier asked = below;
    while (Query(ePduGetNext, answer) == eSnmpNoError && !answer[0].Value().IsException() &&
           below.IsStartingSubOidOf(answer[0].Name())) {
        all.push_back(NameAt(0) + "=" + TextAt(0));
        if (asked.Compare(answer[0].Name()) >= 0) {
            all.push_back("this does not rise: the walk would not end");
            break;
        }
        asked = answer[0].Name();
        answer[0].Value().SetNull();
    }
    return all;
}

} // namespace Test
} // namespace VLK
