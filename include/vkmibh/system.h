// The system group: its values, their persistence and their implementations.
#pragma once

#include <vkmibh/impl.h>

namespace VLK {

class BTime;

class VKMIBH_API INVCallback {
public:
    virtual ~INVCallback();
    virtual int Update() = 0;
};

// The host's non-volatile store.
class VKMIBH_API INonVolatile {
public:
    virtual ~INonVolatile();
    virtual int GetStringAt(const char* section, int position, BString& value, int field) = 0;
    virtual int GetString(const char* section, const char* key, BString& value, int field) = 0;
    virtual int SetString(const char* section, const char* key, const char* value, int field,
                          int flag) = 0;
    virtual int GetOctetsAt(const char* section, int position, BOctetString& value, int field) = 0;
    virtual int SetOctets(const char* section, const char* key, const BOctetString& value,
                          int field, int flag) = 0;
    virtual int GetOidAt(const char* section, int position, BObjectIdentifier& value,
                         int field) = 0;
    virtual int SetOid(const char* section, const char* key, const BObjectIdentifier& value,
                       int field, int flag) = 0;
    virtual int GetIntAt(const char* section, int position, int& value, int field) = 0;
    virtual int GetInt(const char* section, const char* key, int& value, int field) = 0;
    virtual int SetInt(const char* section, const char* key, int value, const char* label,
                       int field, int flag) = 0;
    virtual void OpenSection(const char* section) = 0;
    virtual int GetRecordCount(const char* section) = 0;
    virtual void RequestUpdate(INVCallback* callback) = 0;
};

class VKMIBH_API BMib2System {
public:
    static const BObjectIdentifier& s_oidVelkoran();

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
    bool InsertORRow(const BObjectIdentifier& id, const BString& descr);
    bool InsertORRow(int index, SysOREntry* row);
    bool RemoveORRow(int index);
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
    unsigned GetUpTime() const;
    SysOREntry* GetORRow(int index) const;
    SysOREntry* GetFirstORRow() const;
    SysOREntry* GetNextORRow(int index) const;
    int GetNumORRows() const;
    // The row as it was at one moment, false when there is none.
    bool CopyORRow(int index, SysOREntry& row) const;
    // The index of the first row, of the first row above `index`.
    bool FirstORIndex(int& first) const;
    bool NextORIndex(int index, int& next) const;

private:
    friend struct SLayoutCheck;
    bool SetText(BString& field, const BString& text);
    BString Text(const BString& field) const;
    void Remove(SysOREntry* row);

    INonVolatile* m_store;
    BTime* m_time;
    BString m_description;
    BObjectIdentifier m_objectId;
    BString m_contact;
    BString m_name;
    BString m_location;
    int m_services;
    unsigned m_orLastChange;
    BMapInt2Ptr m_orRows;
    mutable TMutex m_lock;
};

inline constexpr unsigned lenOidSystem = 7;
inline constexpr unsigned oidSystem[lenOidSystem] = {1, 3, 6, 1, 2, 1, 1};
inline constexpr unsigned lenOidSysORTable = 8;
inline constexpr unsigned oidSysORTable[lenOidSysORTable] = {1, 3, 6, 1, 2, 1, 1, 9};

class VKMIBH_API CSystem : public BMibScalarGroupImpl {
public:
    class VKMIBH_API NVCallback : public INVCallback {
    public:
        explicit NVCallback(BMib2System* system) : m_system(system) {}
        ~NVCallback() override;
        int Update() override;

    private:
        BMib2System* m_system;
    };

    static SRqHndlrMapEntry s_rqhndlrEntries[];
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
    using FGetText = BString (BMib2System::*)() const;
    using FSetText = bool (BMib2System::*)(const BString&);
    int SetText(FGetText get, FSetText set, ESnmpSetOpCode op, const BString& value, void** slot);
    static int KeepText(const BString& text, void** slot);
    bool ChangeText(FSetText set, const BString& text);

    BMib2System& m_system;
    NVCallback m_callback;
};

class VKMIBH_API CSystemV2 : public CSystem {
public:
    static SRqHndlrMapEntry s_rqhndlrEntries[];

    explicit CSystemV2(BMib2System& system);

    int OnGet_SysORLastChange(unsigned id, unsigned& value);

    // Virtual operations, in slot order.
    ~CSystemV2() override;
    SRqHndlrMapEntry* GetRqHndlrMap() const override;
};

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
    void CreateDemoRow();

    // Virtual operations, in slot order.
    ~CSysORTableV2() override;
    SRqHndlrMapEntry* GetRqHndlrMap() const override;
    const SConstraintMapEntry* GetConstraintMap() const override;
    int NextIndex(unsigned id, unsigned column, const BObjectIdentifier& index,
                  BObjectIdentifier& nextIndex) override;

private:
    friend struct SLayoutCheck;
    int FindRow(const BObjectIdentifier& instance, BMib2System::SysOREntry& row) const;

    BMib2System& m_system;
};

} // namespace VLK
