// A table whose rows managers make, which sees the whole of a SET.
#pragma once

#include <vkmibh/impl.h>

namespace VLK::modules {

// A row-status table whose handlers may look at the other bindings of their SET.
class CWholeSetTable : public BMibTableImplEx {
public:
    using BMibTableImplEx::BMibTableImplEx;
    using BMibTableImplEx::Set;
    int Set(unsigned id, const BVarBindList& list, ESnmpSetOpCode op, void** slots, int& index,
            int count) override;

protected:
    // What the SET under way asks for in a column of that row, or null.
    const BObjectSyntax* Requested(unsigned column, const BObjectIdentifier& row) const;

private:
    static thread_local const BVarBindList* s_list; // of the SET that this thread runs
};

} // namespace VLK::modules
