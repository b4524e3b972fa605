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
    virtual int GetOctetsAt(const char* section, int position, BOctetString& value,
                            int field) = 0;
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
    INonVolatile* Store() const;
    void SetDescription(const BString& text);
    void SetContact(const BString& text);
    void SetName(const BString& text);
    void SetLocation(const BString& text);
    void SetObjectID(const BObjectIdentifier& oid);
    void SetObjectID(unsigned int count, const unsigned int* arcs);
    void SetServices(int bits);
    void SetServices(bool physical, bool datalink, bool internet, bool endToEnd,
                     bool application);
    BString Description() const;
    BString Contact() const;
    BString Name() const;
    BString Location() const;
    BObjectIdentifier ObjectID() const;
    int Services() const;
    unsigned ORLastChange() const;
    unsigned GetUpTime() const;

    bool InsertORRow(const BObjectIdentifier& id, const BString& descr);
    bool InsertORRow(int index, SysOREntry* row);
    bool RemoveORRow(int index);
    bool RemoveORRow(const BObjectIdentifier& id, const BString& descr);
    SysOREntry* GetORRow(int index) const;
    SysOREntry* GetFirstORRow() const;
    SysOREntry* GetNextORRow(int index) const;
    int GetNumORRows() const;

    int InitFromNV();
    int SaveToNV();

private:
    friend struct SLayoutCheck;
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

} // namespace VLK
