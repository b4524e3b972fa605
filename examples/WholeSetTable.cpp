#include "examples/WholeSetTable.h"

namespace VLK::examples {

thread_local const BVarBindList* CWholeSetTable::s_list = nullptr;

int CWholeSetTable::Set(unsigned id, const BVarBindList& list, ESnmpSetOpCode op, void** slots,
                        int& index, int count)
{
    s_list = &list;
    const int status = BMibTableImplEx::Set(id, list, op, slots, index, count);
    s_list = nullptr;
    return status;
}

const BObjectSyntax* CWholeSetTable::Requested(unsigned column,
                                               const BObjectIdentifier& instance) const
{
    BObjectIdentifier name(Oid());
    name.Append(column);
    name.Append(instance, true);
    for (int i = 0; i < static_cast<int>(s_list->Count()); ++i) {
        if ((*s_list)[i].Name() == name)
            return &(*s_list)[i].Value();
    }
    return nullptr;
}

} // namespace VLK::examples
