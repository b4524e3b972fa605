#pragma once

#include <vkmibh/impl.h>

namespace VLK::examples {

// A row-status table whose handlers may look at the other bindings of a SET.
// Managers write what they want of a row in any order; whether one binding can be
// granted often depends on those that come after it.
class CWholeSetTable : public BMibTableImplEx {
public:
    using BMibTableImplEx::BMibTableImplEx;

    using BMibTableImplEx::Set;
    int Set(unsigned id, const BVarBindList& list, ESnmpSetOpCode op, void** slots, int& index,
            int count) override;

protected:
    // The value that the SET under way has for a column of that row, or null. For
    // set handlers only. The value's own binding may still be refused.
    const BObjectSyntax* Requested(unsigned column, const BObjectIdentifier& instance) const;

private:
    static thread_local const BVarBindList* s_list; // of the SET that this thread runs
};

} // namespace VLK::examples
