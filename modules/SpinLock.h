// A lock for managers that edit a table together.
#pragma once

#include <vkmibh/impl.h>

namespace VLK::modules {

// An advisory lock (TestAndIncr, RFC 2579): it takes only the value it has, and then
// counts on. What it was before a restart is not kept: it has to start anywhere, so that
// whoever read it then is refused. A derived class names it.
class CSpinLock : public BMibScalarImpl {
public:
    CSpinLock(const char* name, const char* oid, int value);

    const SConstraintMapEntry* GetConstraintMap() const override { return s_constraints; }

protected:
    int OnGet(unsigned id, int& value);
    int OnSet(ESnmpSetOpCode op, unsigned id, int value, void** slot);
    static int AnyValue();

private:
    static const SConstraintMapEntry s_constraints[];

    int m_value;
};

} // namespace VLK::modules
