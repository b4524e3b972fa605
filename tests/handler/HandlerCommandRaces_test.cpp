// Console commands on several threads beside other requests and registration.
// Under ThreadSanitizer this finds what a plain run may not.
#include "tests/support/CommandConsole.h"
#include "tests/support/ListHandler.h"
#include <vkmibh/testing/requests.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace VLK {
namespace Test {
namespace {

constexpr int kRounds = 200;

// Answers with its transaction's local address and its operator's name.
class TellingHandler : public BMibSubtreeHandler {
public:
    using BMibSubtreeHandler::GetNext;
    explicit TellingHandler(const char* oid) : BMibSubtreeHandler(BString("tell"), MakeOid(oid)) {}
    int Get(unsigned id, BVarBindList& list, int& index, int count) override
    {
        BIpAddress address;
        BTransactionParameters params;
        BTransactions& registry = *BTransactions::GetInstance();
        if (!registry.GetLocalIpAddress(id, address) || !registry.GetParameters(id, params))
            return eSnmpGenErr;
        BString text = address.ToString();
        text.Append(' ').Append(params.securityName);
        for (int i = index; i < index + count; ++i)
            list[i].Value().SetOctets(text);
        return eSnmpNoError;
    }
    int GetNext(unsigned, BVarBind&) override { return eSnmpNoSuchName; }
    int Set(unsigned, const BVarBindList&, ESnmpSetOpCode, void**, int&, int) override
    {
        return eSnmpNoError;
    }
};

void TypeManyTimes(BMibHandler& handler, int number)
{
    const std::string id = std::to_string(number);
    CommandConsole console(handler);
    console.security.securityName = BString(("operator" + id).c_str());
    const std::string told = "10.0.0." + id + " operator" + id + "\n";
    for (int i = 0; i < kRounds; ++i) {
        EXPECT_EQ(CommandConsole::Texts{"1.3.9.1 = " + told},
                  console.Type("get 1.3.9.1 -a10.0.0." + id));
        EXPECT_EQ(CommandConsole::Texts{"1.3.6.1.2.1.1.4.0 = contact\n"},
                  console.Type("set 1.3.6.1.2.1.1.4.0 4 contact -a10.0.0." + id));
        EXPECT_EQ(CommandConsole::Texts{"get: invalid oid 'bad'"}, console.Type("get bad"));
        console.Type("getnext 1.3.5");
    }
}

TEST(HandlerCommandRaces, OperatorsBesideRequestsAndRegistration)
{
    BMibHandler handler(nullptr);
    handler.Init(nullptr, nullptr);
    TellingHandler telling("1.3.9");
    handler.RegisterSubtreeHandler(&telling);
    std::vector<std::thread> operators;
    for (int i = 1; i <= 3; ++i)
        operators.emplace_back([&handler, i] { TypeManyTimes(handler, i); });
    std::atomic<bool> stop{false};
    std::thread engine([&] {
        Client client(handler, kV1);
        while (!stop)
            client.GetNext({"1.3.5", "1.3.6.1.2.1.1.1"});
    });
    std::thread registration([&] {
        while (!stop) {
            ListHandler module("1.3.5.1");
            module.keepsLog = false;
            module.Add("1.3.5.1.1", 1);
            EXPECT_TRUE(handler.RegisterSubtreeHandler(&module));
            EXPECT_EQ(1, handler.UnregisterSubtreeHandler(&module));
        }
    });
    for (std::thread& thread : operators)
        thread.join();
    stop = true;
    engine.join();
    registration.join();
    handler.UnregisterSubtreeHandler(&telling);
}

} // namespace
} // namespace Test
} // namespace VLK
