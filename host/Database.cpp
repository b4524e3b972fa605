#include "host/Database.h"

#include "host/HostError.h"
#include "host/SystemError.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

namespace VLK::host {

namespace {

// Positions are the order of the record ids; kinds are EFieldKind.
const char kSchema[] = "CREATE TABLE record ("
                       " id INTEGER PRIMARY KEY,"
                       " section TEXT NOT NULL,"
                       " key TEXT NOT NULL,"
                       " UNIQUE (section, key));"
                       "CREATE INDEX record_order ON record (section, id);"
                       "CREATE TABLE field ("
                       " record INTEGER NOT NULL REFERENCES record (id),"
                       " number INTEGER NOT NULL,"
                       " kind INTEGER NOT NULL,"
                       " value NOT NULL,"
                       " label TEXT,"
                       " PRIMARY KEY (record, number)) WITHOUT ROWID;";

[[noreturn]] void Refuse(const std::string& path, const std::string& why)
{
    throw BHostError(eExitStore, "store " + path + " " + why);
}

[[noreturn]] void RefuseFor(const std::string& path, sqlite3* db)
{
    switch (db ? sqlite3_errcode(db) & 0xff : SQLITE_NOMEM) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        Refuse(path, "is in use by another process");
    case SQLITE_NOTADB:
        Refuse(path, "is not a database");
    case SQLITE_CORRUPT:
        Refuse(path, "is damaged");
    default:
        break;
    }
    std::string why = db ? sqlite3_errmsg(db) : "out of memory";
    if (int systemError = db ? sqlite3_system_errno(db) : 0)
        why += " (" + SystemError(systemError) + ")";
    Refuse(path, "cannot be opened: " + why);
}

// A file that is not ours yet: closing it leaves file and log as they were.
class BOpenFile {
public:
    explicit BOpenFile(const std::string& path) : m_path(path)
    {
        if (sqlite3_open_v2(path.c_str(), &m_db, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) {
            try {
                RefuseFor(path, m_db);
            } catch (...) {
                sqlite3_close(m_db);
                throw;
            }
        }
        sqlite3_extended_result_codes(m_db, 1);
        sqlite3_db_config(m_db, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
        // A predecessor that is just ending may hold the file a little longer.
        sqlite3_busy_timeout(m_db, 500);
    }
    ~BOpenFile() { sqlite3_close(m_db); }
    BOpenFile(const BOpenFile&) = delete;
    BOpenFile& operator=(const BOpenFile&) = delete;

    void Run(const char* sql)
    {
        if (sqlite3_exec(m_db, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
            RefuseFor(m_path, m_db);
    }

    // Whether the query's tables and columns exist.
    bool Has(const char* query)
    {
        int result = sqlite3_exec(m_db, query, nullptr, nullptr, nullptr);
        if (result != SQLITE_OK && result != SQLITE_ERROR)
            RefuseFor(m_path, m_db);
        return result == SQLITE_OK;
    }

    // The first column of the first row.
    std::string Ask(const char* sql)
    {
        std::string answer;
        auto take = [](void* out, int, char** values, char**) {
            std::string& text = *static_cast<std::string*>(out);
            if (text.empty() && values[0])
                text = values[0];
            return 0;
        };
        if (sqlite3_exec(m_db, sql, take, &answer, nullptr) != SQLITE_OK)
            RefuseFor(m_path, m_db);
        return answer;
    }

    bool IsReadOnly() const { return sqlite3_db_readonly(m_db, "main") == 1; }

    // From here on the log goes into the file when it is closed.
    sqlite3* Release()
    {
        sqlite3_db_config(m_db, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 0, nullptr);
        sqlite3* db = m_db;
        m_db = nullptr;
        return db;
    }

private:
    std::string m_path;
    sqlite3* m_db = nullptr;
};

// Whether the file has to get our tables; refuses what is not ours or not sound.
bool IsNew(const std::string& path, BOpenFile& file)
{
    int version = std::stoi(file.Ask("PRAGMA user_version"));
    bool empty = file.Ask("SELECT count(*) FROM sqlite_master") == "0";
    if (file.Ask("PRAGMA application_id") != std::to_string(BDatabase::kApplicationId)) {
        if (empty && version == 0)
            return true;
        Refuse(path, "belongs to another program");
    }
    if (version > BDatabase::kSchemaVersion)
        Refuse(path, "was written by a newer vkagentd (schema " + std::to_string(version) +
                         ", known here up to " + std::to_string(BDatabase::kSchemaVersion) + ")");
    if (file.Ask("PRAGMA integrity_check") != "ok" || version < 1)
        Refuse(path, "is damaged");
    if (!file.Has("SELECT id, section, key FROM record LIMIT 0") ||
        !file.Has("SELECT record, number, kind, value, label FROM field LIMIT 0"))
        Refuse(path, "is damaged");
    return false;
}

void CreateFile(const std::string& path)
{
    int descriptor = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (descriptor < 0 && errno != EEXIST)
        Refuse(path, "cannot be created: " + SystemError(errno));
    if (descriptor >= 0)
        close(descriptor);
}

// Makes the names of new files outlast a power cut.
void SyncDirectory(const std::filesystem::path& directory)
{
    int descriptor = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return;
    fsync(descriptor);
    close(descriptor);
}

} // namespace

BDatabase::BDatabase(const std::string& name)
{
    std::error_code failed;
    std::filesystem::path path = std::filesystem::absolute(name, failed);
    struct stat status = {};
    bool exists = stat(path.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode))
        Refuse(path, "is not a file");
    if (!exists)
        CreateFile(path);

    BOpenFile file(path);
    if (file.IsReadOnly())
        Refuse(path, "cannot be written");
    // Before the first look: so the log's index is kept in memory, not in a
    // file that a full disk has no room for.
    file.Run("PRAGMA locking_mode = EXCLUSIVE");
    bool isNew = IsNew(path, file);
    if (file.Ask("PRAGMA journal_mode = WAL") != "wal")
        Refuse(path, "cannot be opened: no write-ahead log on this file system");
    file.Run("PRAGMA synchronous = FULL");
    if (isNew) {
        file.Run("BEGIN IMMEDIATE");
        file.Run(kSchema);
        file.Run(("PRAGMA application_id = " + std::to_string(kApplicationId)).c_str());
        file.Run(("PRAGMA user_version = " + std::to_string(kSchemaVersion)).c_str());
        file.Run("COMMIT");
    } else {
        file.Run("BEGIN IMMEDIATE; COMMIT");
    }
    SyncDirectory(path.parent_path());
    m_db = file.Release();
}

BDatabase::~BDatabase() { sqlite3_close(m_db); }

bool BDatabase::Execute(const char* sql)
{
    return sqlite3_exec(m_db, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

std::string BDatabase::LastError() const { return sqlite3_errmsg(m_db); }

BStatement::BStatement(const BDatabase& database, const char* sql)
{
    sqlite3_prepare_v3(database.Handle(), sql, -1, SQLITE_PREPARE_PERSISTENT, &m_statement,
                       nullptr);
}

BStatement::~BStatement() { sqlite3_finalize(m_statement); }

BStatement& BStatement::Bind(int position, const char* text)
{
    sqlite3_bind_text(m_statement, position, text, -1, SQLITE_TRANSIENT);
    return *this;
}

BStatement& BStatement::Bind(int position, const char* text, unsigned length)
{
    sqlite3_bind_text64(m_statement, position, text ? text : "", length, SQLITE_TRANSIENT,
                        SQLITE_UTF8);
    return *this;
}

BStatement& BStatement::Bind(int position, const unsigned char* bytes, unsigned length)
{
    static const unsigned char kEmpty[1] = {0};
    sqlite3_bind_blob64(m_statement, position, bytes ? bytes : kEmpty, length, SQLITE_TRANSIENT);
    return *this;
}

BStatement& BStatement::Bind(int position, int64_t value)
{
    sqlite3_bind_int64(m_statement, position, value);
    return *this;
}

BStatement::EStep BStatement::Step()
{
    switch (m_statement ? sqlite3_step(m_statement) : SQLITE_ERROR) {
    case SQLITE_ROW:
        return eRow;
    case SQLITE_DONE:
        return eDone;
    default:
        return eFailed;
    }
}

void BStatement::Reset()
{
    if (!m_statement)
        return;
    sqlite3_reset(m_statement);
    sqlite3_clear_bindings(m_statement);
}

int64_t BStatement::Integer(int column) const { return sqlite3_column_int64(m_statement, column); }

const void* BStatement::Bytes(int column, unsigned& length) const
{
    const void* bytes = sqlite3_column_blob(m_statement, column);
    length = static_cast<unsigned>(sqlite3_column_bytes(m_statement, column));
    return bytes;
}

} // namespace VLK::host
