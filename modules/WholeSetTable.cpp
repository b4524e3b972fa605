#include "modules/WholeSetTable.h"

namespace VLK::modules {

namespace {

// For the time of a call, however it ends.
class BListInReach {
public:
    BListInReach(const BVarBindList*& place, const BVarBindList& list)
        : m_place(place), m_before(place)
    {
        m_place = &list;
    }
    ~BListInReach() { m_place = m_before; }
    BListInReach(const BListInReach&) = delete;
    BListInReach& operator=(const BListInReach&) = delete;

private:
    const BVarBindList*& m_place;
    const BVarBindList* const m_before;
};

} // namespace

thread_local const BVarBindList* CWholeSetTable::s_list = nullptr;

int CWholeSetTable::Set(unsigned id, const BVarBindList& list, ESnmpSetOpCode op, void** slots,
                        int& index, int count)
{
    const BListInReach inReach(s_list, list);
    return BMibTableImplEx::Set(id, list, op, slots, index, count);
}

const BObjectSyntax* CWholeSetTable::Requested(unsigned column, const BObjectIdentifier& row) const
{
    BObjectIdentifier name(Oid());
    if (!s_list || name != Oid() || !name.Append(column) || !name.Append(row, true))
        return nullptr;
    for (int i = 0; i < static_cast<int>(s_list->Count()); ++i) {
        if ((*s_list)[i].Name() == name)
            return &(*s_list)[i].Value();
    }
    return nullptr;
}

} // namespace VLK::modules
