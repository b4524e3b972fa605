// The library's non-volatile store in one SQLite file.
//
//   BStore store("/var/lib/vkagentd/store.db");
//   handler.Init(&time, &store);
//
// RequestUpdate() saves at once, or, between Hold() and SaveHeld() on the same
// thread, in the latter: in one transaction that is on the disk when it
// returns. So a SET that the agent has acknowledged survives a kill and a power
// cut, and one that was cut short leaves nothing. A save that fails changes
// nothing in the file; the first of a series is told on standard error, and its end.
//
// Threads: one lock inside, held while the store calls back.
// Errors:  0 = done; 1 = no such value, or of another kind; 2 = the file failed.
//          The constructor throws BHostError.
#pragma once

#include "host/Database.h"
#include "host/LimitedLog.h"
#include "host/SetSaves.h"

#include <map>
#include <mutex>
#include <thread>
#include <vector>
#include <vkmibh/system.h>

namespace VLK::host {

class BStore : public INonVolatile, public ISetSaves {
public:
    enum EResult { eDone = 0, eNoValue = 1, eFileFailed = 2 };

    explicit BStore(const std::string& path);

    int GetStringAt(const char* section, int position, BString& value, int field) override;
    int GetString(const char* section, const char* key, BString& value, int field) override;
    int SetString(const char* section, const char* key, const BString& value, int field,
                  int flag) override;
    int GetOctetsAt(const char* section, int position, BOctetString& value, int field) override;
    int SetOctets(const char* section, const char* key, const BOctetString& value, int field,
                  int flag) override;
    int GetOidAt(const char* section, int position, BObjectIdentifier& value, int field) override;
    int SetOid(const char* section, const char* key, const BObjectIdentifier& value, int field,
               int flag) override;
    int GetIntAt(const char* section, int position, int& value, int field) override;
    int GetInt(const char* section, const char* key, int& value, int field) override;
    int SetInt(const char* section, const char* key, int value, const char* label, int field,
               int flag) override;
    void OpenSection(const char* section) override;
    int GetRecordCount(const char* section) override;
    void RequestUpdate(INVCallback* callback) override;

    void Hold() override;
    bool SaveHeld() override;

    // Whether the section was ever opened for a save, even if nothing was saved.
    bool WasSaved(const char* section);
    // Throws BHostError when anything was not read that is there.
    void RequireRead();
    // Starts over with nothing but one section. Throws BHostError.
    void Reset(const char* keptSection = "");

private:
    enum EFieldKind { eString = 1, eOctets = 2, eOid = 3, eInteger = 4 };
    template <class TTake>
    int Read(BStatement& query, EFieldKind kind, TTake take);
    template <class TTake>
    int ReadAt(const char* section, int position, int field, EFieldKind kind, TTake take);
    template <class TTake>
    int ReadKey(const char* section, const char* key, int field, EFieldKind kind, TTake take);
    template <class TBind>
    int Write(const char* section, const char* key, int field, EFieldKind kind, const char* label,
              TBind bind);
    bool Save(const std::vector<INVCallback*>& callbacks);
    bool HasBrokenOff() const;
    bool Run(BStatement& statement);
    void NoteUnread();
    void NoteFailure(const std::string& why);

    std::recursive_mutex m_lock;
    BDatabase m_database;
    BStatement m_findKey;
    BStatement m_findAt;
    BStatement m_addRecord;
    BStatement m_findRecord;
    BStatement m_setField;
    BStatement m_dropFields;
    BStatement m_dropRecords;
    BStatement m_count;
    BStatement m_resetFields;
    BStatement m_resetRecords;
    std::map<std::thread::id, std::vector<INVCallback*>> m_held;
    std::string m_unread; // why
    bool m_updating = false;
    bool m_updateFailed = false;
    bool m_failureTold = false;
    BLimitedLog m_failures{eLogError}; // they may come and go
};

} // namespace VLK::host
