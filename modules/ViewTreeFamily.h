// vacmViewTreeFamilyTable and vacmViewSpinLock (RFC 3415 section 4).
#pragma once

#include "modules/SpinLock.h"

#include <vkmibh/filter.h>
#include <vkmibh/impl.h>

namespace VLK::modules {

// Asks the store, after a SET changed it, to save a view filter table.
class CViewSaver : public INVCallback {
public:
    // Either may be null: nothing is saved then.
    CViewSaver(BFilterTable& views, INonVolatile* store) : m_views(views), m_store(store) {}

    void Request()
    {
        if (m_store)
            m_store->RequestUpdate(this);
    }
    int Update() override { return m_views.SaveToNV() ? 0 : 1; }

private:
    BFilterTable& m_views;
    INonVolatile* m_store;
};

// The rows of a live view filter table as managers see and edit them. All columns
// have defaults, so a row is made by its status alone: no mask, included,
// nonVolatile. Rows may be changed while they are active. Rows that are permanent
// cannot be destroyed, those that are readOnly not changed either; managers can
// make neither. A view with a readOnly row takes no others. A SET asks for one
// status of a row at most; its bindings stand in any order, also among others.
//
// Ownership: not of the filter table, which outlives it.
// Threads:   as BMibTableImplEx; the filter table may be asked meanwhile.
// Errors:    as BMibTableImplEx.
// Contract:  a change is saved in the phase that makes it, commit or undo; what
//            the store saves are the rows that are active and nonVolatile.
class CViewTreeFamilyTable : public BMibTableImplEx {
public:
    enum EColumn { eViewName = 1, eSubtree = 2, eMask = 3, eType = 4, eStorage = 5, eStatus = 6 };

    CViewTreeFamilyTable(BFilterTable& views, INonVolatile* store);

    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    const SConstraintMapEntry* GetConstraintMap() const override { return s_constraints; }
    int NextIndex(unsigned id, unsigned column, const BObjectIdentifier& index,
                  BObjectIdentifier& nextIndex) override;
    using BMibTableImplEx::Set;
    int Set(unsigned id, const BVarBindList& list, ESnmpSetOpCode op, void** slots, int& index,
            int count) override;
    int Set(unsigned id, ESnmpSetOpCode op, void** slot, const BVarBind& binding) override;

private:
    using Row = BFilterTable::Entry;

    template <class V>
    int GetColumn(const BObjectIdentifier& index, V Row::*field, V& value);
    template <class V>
    int SetColumn(const BObjectIdentifier& index, ESnmpSetOpCode op, V Row::*field, const V& value,
                  void** slot);
    int Keep(const BObjectIdentifier& index, void** slot);
    int Leave(const BObjectIdentifier& index, ESnmpSetOpCode op, void** slot);
    int Restore(const BObjectIdentifier& index, void** slot);
    bool WillBeMade(const BObjectIdentifier& index) const;
    int TestColumn(const BObjectIdentifier& index);
    int TestStorage(const BObjectIdentifier& index, EStorageType value);
    int TestStatus(const BObjectIdentifier& index, ERowStatus value);
    bool MayExist(const BObjectIdentifier& index);
    bool IsReadOnly(const BString& view);
    int AskForRow(const BObjectIdentifier& index);
    int CommitStatus(const BObjectIdentifier& index);
    bool MakeRow(const BObjectIdentifier& index);

    int OnGet_Mask(const BObjectIdentifier& index, unsigned id, BOctetString& value);
    int OnSet_Mask(const BObjectIdentifier& index, ESnmpSetOpCode op, unsigned id,
                   const BOctetString& value, void** slot);
    int OnGet_Type(const BObjectIdentifier& index, unsigned id, EFilterType& value);
    int OnSet_Type(const BObjectIdentifier& index, ESnmpSetOpCode op, unsigned id,
                   EFilterType value, void** slot);
    int OnGet_Storage(const BObjectIdentifier& index, unsigned id, EStorageType& value);
    int OnSet_Storage(const BObjectIdentifier& index, ESnmpSetOpCode op, unsigned id,
                      EStorageType value, void** slot);
    int OnGet_Status(const BObjectIdentifier& index, unsigned id, ERowStatus& value, int flag);
    int OnSet_Status(const BObjectIdentifier& index, ESnmpSetOpCode op, unsigned id,
                     ERowStatus value, void** slot);

    static SRqHndlrMapEntry s_map[];
    static const SConstraintMapEntry s_constraints[];

    BFilterTable& m_views;
    CViewSaver m_saver;
    // Rows whose status the SET under way asks for.
    BMapOid2Ptr m_asked;
};

class CViewSpinLock : public CSpinLock {
public:
    explicit CViewSpinLock(int value = AnyValue())
        : CSpinLock("SNMP-VIEW-BASED-ACM-MIB.vacmViewSpinLock", "1.3.6.1.6.3.16.1.5.1", value)
    {
    }
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }

private:
    static SRqHndlrMapEntry s_map[];
};

// Both, to be registered together.
class CViewModule : public BMibImplGroup {
public:
    CViewModule(BFilterTable& views, INonVolatile* store)
        : BMibImplGroup(BString("SNMP-VIEW-BASED-ACM-MIB")), m_table(views, store)
    {
    }
    int GetNumImpls() override { return 2; }
    BMibImpl* GetImplAt(int index) override
    {
        return index == 0 ? static_cast<BMibImpl*>(&m_spinLock) : &m_table;
    }

private:
    CViewSpinLock m_spinLock;
    CViewTreeFamilyTable m_table;
};

} // namespace VLK::modules
