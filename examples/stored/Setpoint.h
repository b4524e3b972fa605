#pragma once

#include <atomic>
#include <vkmibh/impl.h>
#include <vkmibh/nonvolatile.h>

namespace VLK::examples {

// One scalar that is kept in the host's store, served as setpointValue.0.
class CSetpoint : public BMibScalarGroupImpl, public INVCallback {
public:
    explicit CSetpoint(INonVolatile* store); // may be null

    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    const SConstraintMapEntry* GetConstraintMap() const override { return s_constraints; }
    int Update() override;

private:
    int OnGet_Value(unsigned id, int& value);
    int OnSet_Value(ESnmpSetOpCode op, unsigned id, int value, void** slot);
    void Change(int value);

    static SRqHndlrMapEntry s_map[];
    static const SConstraintMapEntry s_constraints[];

    INonVolatile* const m_store;
    // Update() may come on any thread, and takes no lock: the store has its own, which
    // comes after Mutex().
    std::atomic<int> m_value{20};
};

// What is registered with the agent.
class CSetpointModule : public BMibImplGroup {
public:
    explicit CSetpointModule(INonVolatile* store) : m_setpoint(store) {}
    int GetNumImpls() override { return 1; }
    BMibImpl* GetImplAt(int) override { return &m_setpoint; }

private:
    CSetpoint m_setpoint;
};

} // namespace VLK::examples
