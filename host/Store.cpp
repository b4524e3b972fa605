#include "host/Store.h"

#include "host/HostError.h"

#include <algorithm>
#include <climits>
#include <utility>

namespace VLK::host {

namespace {

// Holds a record for every section that was ever saved.
constexpr const char* kSections = "vkagentd.sections";

using CLock = std::lock_guard<std::recursive_mutex>;

// Leaves a statement ready for its next use.
class BUse {
public:
    explicit BUse(BStatement& statement) : m_statement(statement) {}
    ~BUse() { m_statement.Reset(); }
    BUse(const BUse&) = delete;
    BUse& operator=(const BUse&) = delete;

private:
    BStatement& m_statement;
};

// What cannot be told whole is not saved: an update cut short must not be committed.
bool HasUpdated(INVCallback& callback)
{
    try {
        return callback.Update() == 0;
    } catch (const std::exception&) {
        return false;
    }
}

BString TextOf(const BStatement& row)
{
    unsigned length = 0;
    const void* bytes = row.Bytes(1, length);
    return BString(static_cast<const char*>(bytes), bytes ? length : 0);
}

} // namespace

BStore::BStore(const std::string& path)
    : m_database(path),
      m_findKey(m_database, "SELECT kind, value FROM record JOIN field ON record = id"
                            " WHERE section = ?1 AND key = ?2 AND number = ?3"),
      m_findAt(m_database, "SELECT kind, value FROM field WHERE record ="
                           " (SELECT id FROM record WHERE section = ?1 ORDER BY id"
                           " LIMIT 1 OFFSET ?2) AND number = ?3"),
      m_addRecord(m_database, "INSERT INTO record (section, key) VALUES (?1, ?2)"
                              " ON CONFLICT DO NOTHING"),
      m_findRecord(m_database, "SELECT 1 FROM record WHERE section = ?1 AND key = ?2"),
      m_setField(m_database, "INSERT OR REPLACE INTO field (record, number, kind, value, label)"
                             " VALUES ((SELECT id FROM record WHERE section = ?1 AND key = ?2),"
                             " ?3, ?4, ?5, ?6)"),
      m_dropFields(m_database, "DELETE FROM field WHERE record IN"
                               " (SELECT id FROM record WHERE section = ?1)"),
      m_dropRecords(m_database, "DELETE FROM record WHERE section = ?1"),
      m_count(m_database, "SELECT count(*) FROM record WHERE section = ?1"),
      m_resetFields(m_database, "DELETE FROM field WHERE record IN"
                                " (SELECT id FROM record WHERE section <> ?1)"),
      m_resetRecords(m_database, "DELETE FROM record WHERE section <> ?1")
{
}

template <class TTake>
int BStore::Read(BStatement& query, EFieldKind kind, TTake take)
{
    switch (query.Step()) {
    case BStatement::eRow:
        return query.Integer(0) == kind && take(query) ? eDone : eNoValue;
    case BStatement::eDone:
        return eNoValue;
    default:
        NoteUnread();
        return eFileFailed;
    }
}

// What is not read would look like what was never written.
void BStore::NoteUnread()
{
    if (m_unread.empty())
        m_unread = m_database.LastError();
}

void BStore::RequireRead()
{
    CLock lock(m_lock);
    if (!m_unread.empty())
        throw BHostError(eExitStore, "the store cannot be read: " + m_unread);
}

template <class TTake>
int BStore::ReadAt(const char* section, int position, int field, EFieldKind kind, TTake take)
{
    if (position < 0)
        return eNoValue;
    CLock lock(m_lock);
    BUse use(m_findAt);
    m_findAt.Bind(1, section).Bind(2, int64_t{position}).Bind(3, int64_t{field});
    return Read(m_findAt, kind, take);
}

template <class TTake>
int BStore::ReadKey(const char* section, const char* key, int field, EFieldKind kind, TTake take)
{
    CLock lock(m_lock);
    BUse use(m_findKey);
    m_findKey.Bind(1, section).Bind(2, key).Bind(3, int64_t{field});
    return Read(m_findKey, kind, take);
}

bool BStore::Run(BStatement& statement)
{
    if (statement.Step() != BStatement::eFailed)
        return true;
    NoteFailure(m_database.LastError());
    return false;
}

void BStore::NoteFailure(const std::string& why)
{
    m_updateFailed = true;
    if (!m_failureTold)
        m_failures.Write([&] { return "the store cannot be written: " + why; });
    m_failureTold = true;
}

// SQLite ends a transaction by itself when the disk is full or fails: what its update
// goes on to write would be kept, each piece alone.
bool BStore::HasBrokenOff() const { return m_updating && m_updateFailed; }

template <class TBind>
int BStore::Write(const char* section, const char* key, int field, EFieldKind kind,
                  const char* label, TBind bind)
{
    CLock lock(m_lock);
    if (HasBrokenOff())
        return eFileFailed;
    BUse useRecord(m_addRecord);
    BUse useField(m_setField);
    m_addRecord.Bind(1, section).Bind(2, key);
    m_setField.Bind(1, section).Bind(2, key).Bind(3, int64_t{field}).Bind(4, int64_t{kind});
    bind(m_setField);
    if (label)
        m_setField.Bind(6, label);
    return Run(m_addRecord) && Run(m_setField) ? eDone : eFileFailed;
}

int BStore::GetStringAt(const char* section, int position, BString& value, int field)
{
    return ReadAt(section, position, field, eString, [&](const BStatement& row) {
        value = TextOf(row);
        return true;
    });
}

int BStore::GetString(const char* section, const char* key, BString& value, int field)
{
    return ReadKey(section, key, field, eString, [&](const BStatement& row) {
        value = TextOf(row);
        return true;
    });
}

int BStore::SetString(const char* section, const char* key, const BString& value, int field, int)
{
    return Write(section, key, field, eString, nullptr,
                 [&](BStatement& statement) { statement.Bind(5, value.data(), value.length()); });
}

int BStore::GetOctetsAt(const char* section, int position, BOctetString& value, int field)
{
    return ReadAt(section, position, field, eOctets, [&](const BStatement& row) {
        unsigned length = 0;
        const void* bytes = row.Bytes(1, length);
        return value.Assign(bytes ? length : 0, static_cast<const unsigned char*>(bytes));
    });
}

int BStore::SetOctets(const char* section, const char* key, const BOctetString& value, int field,
                      int)
{
    return Write(section, key, field, eOctets, nullptr,
                 [&](BStatement& statement) { statement.Bind(5, value.Data(), value.Length()); });
}

int BStore::GetOidAt(const char* section, int position, BObjectIdentifier& value, int field)
{
    return ReadAt(section, position, field, eOid, [&](const BStatement& row) {
        BString text = TextOf(row);
        if (!text.empty())
            return value.AssignFromDottedDecimalStr(text);
        value.Clear();
        return true;
    });
}

int BStore::SetOid(const char* section, const char* key, const BObjectIdentifier& value, int field,
                   int)
{
    return Write(section, key, field, eOid, nullptr, [&](BStatement& statement) {
        BString text = value.Length() ? value.ToString() : BString();
        statement.Bind(5, text.data(), text.length());
    });
}

int BStore::GetIntAt(const char* section, int position, int& value, int field)
{
    return ReadAt(section, position, field, eInteger, [&](const BStatement& row) {
        value = static_cast<int>(row.Integer(1));
        return row.Integer(1) == value;
    });
}

int BStore::GetInt(const char* section, const char* key, int& value, int field)
{
    return ReadKey(section, key, field, eInteger, [&](const BStatement& row) {
        value = static_cast<int>(row.Integer(1));
        return row.Integer(1) == value;
    });
}

int BStore::SetInt(const char* section, const char* key, int value, const char* label, int field,
                   int)
{
    return Write(section, key, field, eInteger, label,
                 [&](BStatement& statement) { statement.Bind(5, int64_t{value}); });
}

void BStore::OpenSection(const char* section)
{
    CLock lock(m_lock);
    if (HasBrokenOff())
        return;
    BUse useFields(m_dropFields);
    BUse useRecords(m_dropRecords);
    BUse useRecord(m_addRecord);
    m_dropFields.Bind(1, section);
    m_dropRecords.Bind(1, section);
    m_addRecord.Bind(1, kSections).Bind(2, section);
    if (Run(m_dropFields) && Run(m_dropRecords))
        Run(m_addRecord);
}

bool BStore::WasSaved(const char* section)
{
    CLock lock(m_lock);
    BUse use(m_findRecord);
    m_findRecord.Bind(1, kSections).Bind(2, section);
    const BStatement::EStep step = m_findRecord.Step();
    if (step == BStatement::eFailed)
        NoteUnread();
    return step == BStatement::eRow;
}

void BStore::Reset(const char* keptSection)
{
    CLock lock(m_lock);
    BUse useFields(m_resetFields);
    BUse useRecords(m_resetRecords);
    m_resetFields.Bind(1, keptSection);
    m_resetRecords.Bind(1, keptSection);
    if (m_database.Execute("BEGIN IMMEDIATE") && m_resetFields.Step() == BStatement::eDone &&
        m_resetRecords.Step() == BStatement::eDone && m_database.Execute("COMMIT"))
        return;
    std::string why = m_database.LastError();
    m_database.Execute("ROLLBACK");
    throw BHostError(eExitStore, "the store cannot be reset: " + why);
}

int BStore::GetRecordCount(const char* section)
{
    CLock lock(m_lock);
    BUse use(m_count);
    m_count.Bind(1, section);
    if (m_count.Step() != BStatement::eRow) {
        NoteUnread();
        return 0;
    }
    int64_t count = m_count.Integer(0);
    return count > INT_MAX ? INT_MAX : static_cast<int>(count);
}

void BStore::Hold()
{
    CLock lock(m_lock);
    m_held[std::this_thread::get_id()].clear();
}

bool BStore::SaveHeld()
{
    CLock lock(m_lock);
    auto held = m_held.find(std::this_thread::get_id());
    if (held == m_held.end())
        return true;
    std::vector<INVCallback*> callbacks = std::move(held->second);
    m_held.erase(held);
    return callbacks.empty() || Save(callbacks);
}

void BStore::RequestUpdate(INVCallback* callback)
{
    if (!callback)
        return;
    CLock lock(m_lock);
    if (m_updating) {
        callback->Update();
        return;
    }
    auto held = m_held.find(std::this_thread::get_id());
    if (held == m_held.end()) {
        Save({callback});
        return;
    }
    std::vector<INVCallback*>& waiting = held->second;
    if (std::find(waiting.begin(), waiting.end(), callback) == waiting.end())
        waiting.push_back(callback);
}

bool BStore::Save(const std::vector<INVCallback*>& callbacks)
{
    m_updating = true;
    m_updateFailed = false;
    if (!m_database.Execute("BEGIN IMMEDIATE"))
        NoteFailure(m_database.LastError());
    for (INVCallback* callback : callbacks) {
        if (!m_updateFailed && !HasUpdated(*callback))
            NoteFailure("its update was cut short");
    }
    if (!m_updateFailed && !m_database.Execute("COMMIT"))
        NoteFailure(m_database.LastError());
    if (m_updateFailed)
        m_database.Execute("ROLLBACK");
    else if (std::exchange(m_failureTold, false))
        LogLine(eLogNotice, "the store can be written again");
    m_updating = false;
    return !m_updateFailed;
}

} // namespace VLK::host
