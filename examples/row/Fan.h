#pragma once

#include <vkmibh/impl.h>

namespace VLK::examples {

// One row of a table of fans, served by an object of its own: fanName.<index> and
// fanSpeed.<index>.
class CFan : public BMibRowImpl {
public:
    enum EColumn { eName = 2, eSpeed = 3 };

    CFan(unsigned index, const char* name);

    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    const SConstraintMapEntry* GetConstraintMap() const override { return s_constraints; }

private:
    int OnGet_Name(unsigned id, BString& value);
    int OnGet_Speed(unsigned id, unsigned& value);
    int OnSet_Speed(ESnmpSetOpCode op, unsigned id, unsigned value, void** slot);

    static SRqHndlrMapEntry s_map[];
    static const SConstraintMapEntry s_constraints[];

    const BString m_name;
    unsigned m_speed = 0; // percent
};

// The table around the fans, which has no row of its own. The agent knows a row by
// its first column: a GETNEXT from the name of another column finds it only from a
// region around it, which is this one.
class CFanTable : public BMibTableImpl {
public:
    CFanTable();

    int NextIndex(unsigned, unsigned, const BObjectIdentifier&, BObjectIdentifier&) override
    {
        return 0;
    }
};

// What is registered with the agent.
class CFanModule : public BMibImplGroup {
public:
    int GetNumImpls() override { return 3; }
    BMibImpl* GetImplAt(int index) override
    {
        BMibImpl* const impls[] = {&m_table, &m_intake, &m_exhaust};
        return impls[index];
    }

private:
    CFanTable m_table;
    CFan m_intake{1, "intake"};
    CFan m_exhaust{2, "exhaust"};
};

} // namespace VLK::examples
