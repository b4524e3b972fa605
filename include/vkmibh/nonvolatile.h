// The host's non-volatile store.
#pragma once

#include <vkmibh/objectid.h>
#include <vkmibh/octets.h>

namespace VLK {

// What a store calls when it wants values saved.
//
// Ownership: of whoever asked for the update; valid until that is destroyed.
// Threads:   Update() may be called on any thread, beside requests.
// Errors:    0 = done.
// Contract:  slot order is ABI.
class VKMIBH_API INVCallback {
public:
    virtual ~INVCallback();
    virtual int Update() = 0;
};

// The host's non-volatile store: named sections of records. A record is written
// by its key and read by key or by its position in the section (0 up to the
// count minus 1); it holds numbered fields, field 0 when it has one value only.
// A text is its length of characters: a DisplayString may hold a NUL (RFC 2579).
//
// A save of a section starts with OpenSection(), which drops the records the
// section had: it writes those that exist now. RequestUpdate() asks the store to
// call back, at once or later, on this thread or another.
//
// Ownership: the host's; outlives the handler it is given to.
// Threads:   called on the threads of requests and in Init(); never with a lock
//            of the system group held, but with that of a view filter table.
// Errors:    0 = done; results of writes are not looked at.
// Contract:  slot order is ABI; `flag` is always 0, `label` null or the name of
//            an enumerated value.
class VKMIBH_API INonVolatile {
public:
    virtual ~INonVolatile();
    virtual int GetStringAt(const char* section, int position, BString& value, int field) = 0;
    virtual int GetString(const char* section, const char* key, BString& value, int field) = 0;
    virtual int SetString(const char* section, const char* key, const BString& value, int field,
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

} // namespace VLK
