#pragma once

#include <vkmibh/impl.h>

namespace VLK::examples {

// Two scalars, served as thermostatTarget.0 and thermostatMode.0.
class CThermostat : public BMibScalarGroupImpl {
public:
    CThermostat();

    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    const SConstraintMapEntry* GetConstraintMap() const override { return s_constraints; }

private:
    enum EMode : int { eModeOff = 1, eModeHeat = 2, eModeCool = 3 };

    int OnGet_Target(unsigned id, int& value);
    int OnSet_Target(ESnmpSetOpCode op, unsigned id, int value, void** slot);
    int OnGet_Mode(unsigned id, EMode& value);
    int OnSet_Mode(ESnmpSetOpCode op, unsigned id, EMode value, void** slot);

    static SRqHndlrMapEntry s_map[];
    static const SConstraintMapEntry s_constraints[];

    int m_target = 20;
    EMode m_mode = eModeOff;
};

// What is registered with the agent.
class CThermostatModule : public BMibImplGroup {
public:
    int GetNumImpls() override { return 1; }
    BMibImpl* GetImplAt(int) override { return &m_thermostat; }

private:
    CThermostat m_thermostat;
};

} // namespace VLK::examples
