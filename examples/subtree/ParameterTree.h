#pragma once

#include <vkmibh/subtree.h>

#include <map>

namespace VLK::examples {

// Whole numbers whose names are known at run time only, so that no static map can
// declare them: everything from the identifiers to the phases of a SET is done by
// hand. Managers read and change them, but make none.
class CParameterTree : public BMibSubtreeHandler {
public:
    CParameterTree();

    // The name is relative to the tree; before the tree is registered.
    void Add(const char* name, int value);

    using BMibSubtreeHandler::GetNext;
    int Get(unsigned id, BVarBindList& list, int& index, int count) override;
    int GetNext(unsigned id, BVarBind& binding) override;
    int Set(unsigned id, const BVarBindList& list, ESnmpSetOpCode op, void** slots, int& index,
            int count) override;

private:
    int SetOne(const BVarBind& binding, ESnmpSetOpCode op, SSetSlot& slot);

    std::map<BObjectIdentifier, int> m_values; // by whole name
};

} // namespace VLK::examples
