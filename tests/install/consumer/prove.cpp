// A module, and the ten lines that prove its order, holes, undo and statuses with
// the installed testing kit and nothing else.
#include <cstdio>
#include <vkmibh/testing/testing.h>
#include <vkmibh/vkmibh.h>

using namespace VLK;

namespace {

class CDoor : public BMibScalarGroupImpl {
public:
    CDoor() : BMibScalarGroupImpl("door", BObjectIdentifier("1.3.6.1.4.1.32473.7")) {}
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }

private:
    int OnGet_Open(unsigned, int& value)
    {
        value = m_open;
        return eSnmpNoError;
    }
    int OnSet_Open(ESnmpSetOpCode op, unsigned, int value, void**)
    {
        if (op == eSetTest && (value < 0 || value > 100))
            return eSnmpWrongValue;
        if (op == eSetCommit)
            m_before = m_open;
        if (op == eSetCommit || op == eSetUndo)
            m_open = op == eSetCommit ? value : m_before;
        return eSnmpNoError;
    }

    static SRqHndlrMapEntry s_map[];
    int m_open = 5;
    int m_before = 0;
};

VKMIBH_CONSTINIT SRqHndlrMapEntry CDoor::s_map[] = {
    ScalarRow<eKindInteger, &CDoor::OnGet_Open, &CDoor::OnSet_Open>(3, "doorOpen", eAsnInteger,
                                                                    eRqReadWrite),
    kRqEnd};

class CDoorModule : public BMibImplGroup {
public:
    int GetNumImpls() override { return 1; }
    BMibImpl* GetImplAt(int) override { return &door; }

    CDoor door;
};

} // namespace

int main()
{
    CDoorModule module;
    Test::ModuleClient client(module, "1.3.6.1.4.1.32473.7");
    std::string wrong = client.Problem() + Test::CheckMaps(module);
    wrong += Test::TwoWalks(module.door, "1.3.6.1.4.1.32473.7",
                            {{"1.3.6.1.4.1.32473.7.3.0", eAsnInteger, "5"}})
                 .Run();
    wrong += client.CheckUndo({{"3.0", Test::Number(50)}});
    if (client.Set({{"3.0", Test::Number(101)}}) != eSnmpWrongValue)
        wrong += "101 is taken\n";
    std::printf("%s", wrong.empty() ? "proved\n" : wrong.c_str());
    return wrong.empty() ? 0 : 1;
}
