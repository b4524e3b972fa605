// The system group: its values, their persistence and their implementations.
#pragma once

#include <vkmibh/impl.h>
#include <vkmibh/nonvolatile.h>

namespace VLK {

class BTime;

// The values of the system group and the rows of the sysORTable (RFC 3418), and
// their persistence in section "mib-2.system" of the store.
//
//   BMib2System& system = *handler.SystemGroup();
//   system.SetLocation(BString("machine room"));
//   system.InsertORRow(BObjectIdentifier(BString("1.3.6.1.4.1.32473.5")), BString("my module"));
//
// The group writes to the store only in SaveToNV(), which the store calls after
// a SET over SNMP asked it to. A store that lacks a key leaves the value as it is.
//
// Ownership: owns its rows, also those given to InsertORRow(index, row) with
//            success; not the store and the clock, which may be null.
// Threads:   a lock inside; getters return copies. Row pointers hold until the
//            row is removed: threads that do not keep others from removing rows
//            use CopyORRow() and the index walk. The store is called unlocked.
// Errors:    1/0; pointer or null; InitFromNV() and SaveToNV() always 0.
// Contract:  field order is ABI; a removed row leaves its own upTime as
//            sysORLastChange.
class VKMIBH_API BMib2System {
public:
    // The maker's enterprise number under 1.3.6.1.4.1, the default sysObjectID.
    static constexpr unsigned s_lenOidVelkoran = 7;
    static const unsigned s_oidVelkoran[s_lenOidVelkoran];

    // upTime is in hundredths of a second of the agent's clock.
    struct SysOREntry {
        int index = 0;
        BObjectIdentifier id;
        BString descr;
        unsigned upTime = 0;
        SysOREntry() = default;
        SysOREntry(int rowIndex, const BObjectIdentifier& rowId, const BString& rowDescr,
                   unsigned rowUpTime)
            : index(rowIndex), id(rowId), descr(rowDescr), upTime(rowUpTime)
        {
        }
    };

    BMib2System();
    ~BMib2System();
    BMib2System(const BMib2System&) = delete;
    BMib2System& operator=(const BMib2System&) = delete;

    void SetStore(INonVolatile* store);
    void SetTime(BTime* time);
    bool SetDescription(const BString& text);
    bool SetContact(const BString& text);
    bool SetName(const BString& text);
    bool SetLocation(const BString& text);
    bool SetObjectID(const BObjectIdentifier& oid);
    bool SetObjectID(unsigned int count, const unsigned int* arcs);
    // Only the bits of layers 1, 2, 3, 4 and 7 are kept (79).
    void SetServices(int bits);
    void SetServices(bool physical, bool datalink, bool internet, bool endToEnd, bool application);
    // Takes the index after the largest one in use.
    bool InsertORRow(const BObjectIdentifier& id, const BString& descr);
    // On failure the row stays the caller's.
    bool InsertORRow(int index, SysOREntry* row);
    bool RemoveORRow(int index);
    // Removes the first row that equals in both.
    bool RemoveORRow(const BObjectIdentifier& id, const BString& descr);
    int InitFromNV();
    int SaveToNV();

    INonVolatile* Store() const;
    BString Description() const;
    BString Contact() const;
    BString Name() const;
    BString Location() const;
    BObjectIdentifier ObjectID() const;
    int Services() const;
    unsigned ORLastChange() const;
    // Hundredths of a second since the agent's start, 0 without a clock.
    unsigned GetUpTime() const;
    SysOREntry* GetORRow(int index) const;
    SysOREntry* GetFirstORRow() const;
    // The first row above `index`, which need not exist; null when it is negative.
    SysOREntry* GetNextORRow(int index) const;
    int GetNumORRows() const;
    // The row as it was at one moment, false when there is none or no memory.
    bool CopyORRow(int index, SysOREntry& row) const;
    // The index of the first row, of the first row above `index`.
    bool FirstORIndex(int& first) const;
    bool NextORIndex(int index, int& next) const;

private:
    friend struct SLayoutCheck;
    friend class CSystem;
    using FField = BString BMib2System::*;
    VKMIBH_LOCAL bool SetText(FField field, const BString& text);
    VKMIBH_LOCAL BString Text(FField field) const;
    // False when there is no memory for the copy.
    VKMIBH_LOCAL bool CopyText(FField field, BString& text) const;
    VKMIBH_LOCAL bool CopyObjectID(BObjectIdentifier& oid) const;
    VKMIBH_LOCAL void Remove(SysOREntry* row) VKMIBH_TSA(requires_capability(m_lock));

    INonVolatile* m_store VKMIBH_TSA(guarded_by(m_lock));
    BTime* m_time VKMIBH_TSA(guarded_by(m_lock));
    BString m_description VKMIBH_TSA(guarded_by(m_lock));
    BObjectIdentifier m_objectId VKMIBH_TSA(guarded_by(m_lock));
    BString m_contact VKMIBH_TSA(guarded_by(m_lock));
    BString m_name VKMIBH_TSA(guarded_by(m_lock));
    BString m_location VKMIBH_TSA(guarded_by(m_lock));
    int m_services VKMIBH_TSA(guarded_by(m_lock));
    unsigned m_orLastChange VKMIBH_TSA(guarded_by(m_lock));
    BMapInt2Ptr m_orRows VKMIBH_TSA(guarded_by(m_lock));
    mutable TMutex m_lock;
};

// Where the implementations are registered.
inline constexpr unsigned lenOidSystem = 7;
inline constexpr unsigned oidSystem[lenOidSystem] = {1, 3, 6, 1, 2, 1, 1};
inline constexpr unsigned lenOidSysORTable = 8;
inline constexpr unsigned oidSysORTable[lenOidSysORTable] = {1, 3, 6, 1, 2, 1, 1, 9};

// The system group of RFC1213-MIB over a BMib2System. A SET of sysContact,
// sysName or sysLocation asks the store for an update after commit and undo.
//
// Ownership: refers to the record, which must outlive it; owns the callback
//            that the store is given.
// Threads:   as BMibImpl; the record has its own lock.
// Errors:    SNMP error status.
// Contract:  sysUpTime is the uptime of the host (/proc/uptime), while
//            sysORLastChange and sysORUpTime are readings of the agent's clock.
class VKMIBH_API CSystem : public BMibScalarGroupImpl {
public:
    // Saves the record.
    class VKMIBH_API NVCallback : public INVCallback {
    public:
        explicit NVCallback(BMib2System* system) : m_system(system) {}
        ~NVCallback() override;
        int Update() override;

    private:
        BMib2System* m_system;
    };

    static SRqHndlrMapEntry s_rqhndlrEntries[];
    // CONTRACT: the member's name is spelled so, here and below.
    static const SConstraintMapEntry s_sonstraintEntries[];

    explicit CSystem(BMib2System& system);
    CSystem(const BString& name, BMib2System& system);

    int OnGet_SysDescr(unsigned id, BString& value);
    int OnGet_SysObjectID(unsigned id, BObjectIdentifier& value);
    int OnGet_SysUpTime(unsigned id, unsigned& value);
    int OnGet_SysContact(unsigned id, BString& value);
    int OnGet_SysName(unsigned id, BString& value);
    int OnGet_SysLocation(unsigned id, BString& value);
    int OnGet_SysServices(unsigned id, int& value);
    int OnSet_SysContact(ESnmpSetOpCode op, unsigned id, const BString& value, void** slot);
    int OnSet_SysName(ESnmpSetOpCode op, unsigned id, const BString& value, void** slot);
    int OnSet_SysLocation(ESnmpSetOpCode op, unsigned id, const BString& value, void** slot);

    // Virtual operations, in slot order.
    ~CSystem() override;
    SRqHndlrMapEntry* GetRqHndlrMap() const override;
    const SConstraintMapEntry* GetConstraintMap() const override;

protected:
    BMib2System& System() const { return m_system; }

private:
    friend struct SLayoutCheck;
    using FTextField = BString BMib2System::*;
    VKMIBH_LOCAL int GetText(FTextField field, BString& value) const;
    VKMIBH_LOCAL int SetText(FTextField field, ESnmpSetOpCode op, const BString& value,
                             void** slot);
    VKMIBH_LOCAL int KeepText(FTextField field, void** slot) const;
    VKMIBH_LOCAL bool ChangeText(FTextField field, const BString& text);

    BMib2System& m_system;
    NVCallback m_callback;
};

// The system group of SNMPv2-MIB: with sysORLastChange.
//
// Ownership, Threads, Errors, Contract: as CSystem.
class VKMIBH_API CSystemV2 : public CSystem {
public:
    static SRqHndlrMapEntry s_rqhndlrEntries[];

    explicit CSystemV2(BMib2System& system);

    int OnGet_SysORLastChange(unsigned id, unsigned& value);

    // Virtual operations, in slot order.
    ~CSystemV2() override;
    SRqHndlrMapEntry* GetRqHndlrMap() const override;
};

// The sysORTable of SNMPv2-MIB, read-only. A row that a request asks for is read
// at one moment, also while rows come and go.
//
// Ownership: refers to the record, which must outlive it.
// Threads:   as BMibImpl; the record has its own lock.
// Errors:    SNMP error status.
// Contract:  an instance is oidSysORTable.column.index, registered without an
//            arc for the entry.
class VKMIBH_API CSysORTableV2 : public BMibTableImpl {
public:
    static SRqHndlrMapEntry s_rqhndlrEntries[];
    static const SConstraintMapEntry s_sonstraintEntries[];

    explicit CSysORTableV2(BMib2System& system);

    int OnGet_SysORID(const BObjectIdentifier& instance, unsigned id, BObjectIdentifier& value);
    int OnGet_SysORDescr(const BObjectIdentifier& instance, unsigned id, BString& value);
    int OnGet_SysORUpTime(const BObjectIdentifier& instance, unsigned id, unsigned& value);
    bool NextInstanceInColumn(unsigned column, unsigned id, const BObjectIdentifier& instance,
                              BObjectIdentifier& next);
    // Puts a row at index 1, for demonstrations.
    void CreateDemoRow();

    // Virtual operations, in slot order.
    ~CSysORTableV2() override;
    SRqHndlrMapEntry* GetRqHndlrMap() const override;
    const SConstraintMapEntry* GetConstraintMap() const override;
    int NextIndex(unsigned id, unsigned column, const BObjectIdentifier& index,
                  BObjectIdentifier& nextIndex) override;

private:
    friend struct SLayoutCheck;
    VKMIBH_LOCAL int FindRow(const BObjectIdentifier& instance, BMib2System::SysOREntry& row) const;

    BMib2System& m_system;
};

} // namespace VLK
