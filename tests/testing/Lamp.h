// A module of two scalars, which can be made to misbehave.
#pragma once

#include <vkmibh/impl.h>
#include <vkmibh/testing/oids.h>

namespace VLK {
namespace Test {

constexpr char kLamp[] = "1.3.6.1.4.1.32473.7";

class CLamp : public BMibScalarGroupImpl {
public:
    CLamp() : BMibScalarGroupImpl("lamp", MakeOid(kLamp)) {}

    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    const SConstraintMapEntry* GetConstraintMap() const override { return s_constraints; }

    int brightness = 5;
    bool hidesName = false;
    bool forgetsUndo = false;
    int undoStatus = eSnmpNoError;
    bool ignoresSets = false;
    bool changesInTest = false;

private:
    int OnGet_Brightness(unsigned, int& value)
    {
        value = brightness;
        return eSnmpNoError;
    }
    int OnSet_Brightness(ESnmpSetOpCode op, unsigned, int value, void**)
    {
        if (op == (changesInTest ? eSetTest : eSetCommit) && !ignoresSets) {
            m_before = brightness;
            brightness = value;
        } else if (op == eSetUndo && !forgetsUndo) {
            brightness = m_before;
        }
        return op == eSetUndo ? undoStatus : eSnmpNoError;
    }
    int OnGet_Name(unsigned, BString& value)
    {
        value = "lamp";
        return hidesName ? eSnmpNoSuchName : eSnmpNoError;
    }

    static SRqHndlrMapEntry s_map[];
    static const SConstraintMapEntry s_constraints[];

    int m_before = 0;
};

inline SRqHndlrMapEntry CLamp::s_map[] = {
    ScalarRow<eKindInteger, &CLamp::OnGet_Brightness, &CLamp::OnSet_Brightness>(
        1, "lampBrightness", eAsnInteger, eRqReadWrite),
    ScalarRow<eKindDisplayString, &CLamp::OnGet_Name>(2, "lampName", eAsnOctetString, eRqReadOnly),
    kRqEnd};

inline const SConstraintMapEntry CLamp::s_constraints[] = {{eConstraintRange, 1, nullptr, 0, 9},
                                                           kConstraintEnd};

class CLampModule : public BMibImplGroup {
public:
    int GetNumImpls() override { return 1; }
    BMibImpl* GetImplAt(int) override { return isThere ? &lamp : nullptr; }

    CLamp lamp;
    bool isThere = true;
};

} // namespace Test
} // namespace VLK
