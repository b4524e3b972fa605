// vkagentd with a module that raises notifications: what is set to its scalar says
// which.
#include "host/Agent.h"
#include "host/HostError.h"

#include <iostream>
#include <thread>
#include <vkmibh/impl.h>

using namespace VLK;

namespace {

enum EWanted : int {
    eWantFirstForm = 1,
    eWantSecondForm = 2,
    eWantCounter64 = 3,
    eWantFlood = 4, // from four threads at once, while requests go on
};

class CTrapper : public BMibScalarImpl {
public:
    CTrapper() : BMibScalarImpl("trapper", BObjectIdentifier(BString("1.3.6.1.4.1.32473.5.1"))) {}
    ~CTrapper() override { Join(); }

    ITrapSender* sender = nullptr;

    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    void Join()
    {
        for (std::thread& thread : m_threads)
            thread.join();
        m_threads.clear();
    }

private:
    int OnGet(unsigned, int& value)
    {
        value = m_value;
        return eSnmpNoError;
    }
    int OnSet(ESnmpSetOpCode op, unsigned, int value, void**)
    {
        if (op == eSetCommit) {
            m_value = value;
            Raise(value);
        }
        return eSnmpNoError;
    }

    BVarBindList Bindings(bool withCounter64) const
    {
        BVarBindList list;
        BObjectSyntax number;
        number.SetInt(m_value);
        list.Append(BObjectIdentifier(BString("1.3.6.1.4.1.32473.5.1.0")), number);
        BObjectSyntax text;
        text.SetOctets(BString("door"));
        list.Append(BObjectIdentifier(BString("1.3.6.1.4.1.32473.5.2.7")), text);
        BObjectSyntax large;
        large.SetCtr64(SCTR64{1, 0});
        if (withCounter64)
            list.Append(BObjectIdentifier(BString("1.3.6.1.4.1.32473.5.3.7")), large);
        return list;
    }

    void Raise(int wanted)
    {
        const BObjectIdentifier own(BString("1.3.6.1.4.1.32473.5"));
        const BObjectIdentifier event(BString("1.3.6.1.4.1.32473.5.0.18"));
        if (wanted == eWantFirstForm)
            sender->SendTrap(BTrapV1(own, eTrapEnterpriseSpecific, 17, Bindings(false)), nullptr);
        else if (wanted == eWantSecondForm || wanted == eWantCounter64)
            sender->SendTrap(BTrapV2(event, Bindings(wanted == eWantCounter64)), nullptr);
        else if (wanted == eWantFlood)
            Flood(event);
    }

    void Flood(const BObjectIdentifier& event)
    {
        Join();
        for (int i = 0; i < 4; ++i)
            m_threads.emplace_back([this, event] {
                for (int j = 0; j < 500; ++j)
                    sender->SendTrap(BTrapV2(event), nullptr);
            });
    }

    static SRqHndlrMapEntry s_map[];
    int m_value = 0;
    std::vector<std::thread> m_threads;
};

VKMIBH_CONSTINIT SRqHndlrMapEntry CTrapper::s_map[] = {
    ScalarRow<eKindInteger, &CTrapper::OnGet, &CTrapper::OnSet>(1, "trapper", eAsnInteger,
                                                                eRqReadWrite),
    kRqEnd};

} // namespace

int main(int argc, char** argv)
{
    CTrapper trapper;
    host::SOptions options;
    if (std::optional<int> status = host::ParseOptions(argc, argv, options, std::cout))
        return *status;
    int status =
        host::RunAgent(options, [&](IMIBHandler& handler, ITrapSender& sender, INonVolatile*) {
            trapper.sender = &sender;
            trapper.Initialize();
            handler.RegisterSubtreeHandler(&trapper);
        });
    return status;
}
