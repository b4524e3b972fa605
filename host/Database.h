// The SQLite file under the store: opening, checking, statements.
//
// A file that is damaged, not ours or of a newer schema is refused and left as
// it was. While it is open no other process can use it.
#pragma once

#include <cstdint>
#include <string>

struct sqlite3;
struct sqlite3_stmt;

namespace VLK::host {

class BDatabase {
public:
    // "VKAG" as a number marks our files; the schema this program writes.
    static constexpr int kApplicationId = 0x564b4147;
    static constexpr int kSchemaVersion = 1;

    // Opens or creates the file. Throws BHostError with one line.
    explicit BDatabase(const std::string& name);
    ~BDatabase();
    BDatabase(const BDatabase&) = delete;
    BDatabase& operator=(const BDatabase&) = delete;

    bool Execute(const char* sql);
    std::string LastError() const;
    sqlite3* Handle() const { return m_db; }

private:
    sqlite3* m_db = nullptr;
};

// One prepared statement. Its operations fail quietly when it could not be
// prepared; Step() tells.
class BStatement {
public:
    enum EStep { eRow, eDone, eFailed };

    BStatement(const BDatabase& database, const char* sql);
    ~BStatement();
    BStatement(const BStatement&) = delete;
    BStatement& operator=(const BStatement&) = delete;

    BStatement& Bind(int position, const char* text);
    BStatement& Bind(int position, const char* text, unsigned length);
    BStatement& Bind(int position, const unsigned char* bytes, unsigned length);
    BStatement& Bind(int position, int64_t value);
    EStep Step();
    void Reset();

    int64_t Integer(int column) const;
    // Valid until the next Step() or Reset(); null when empty.
    const void* Bytes(int column, unsigned& length) const;

private:
    sqlite3_stmt* m_statement = nullptr;
};

} // namespace VLK::host
