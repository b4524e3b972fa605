// SQLite's files, with writes that fail at command.
#pragma once

#include <cstring>
#include <sqlite3.h>
#include <string>

// Takes the place of the default file system of SQLite while it lives. One at a time.
class FailingVfs {
public:
    FailingVfs()
    {
        s_real = sqlite3_vfs_find(nullptr);
        m_vfs = *s_real;
        m_vfs.szOsFile = static_cast<int>(sizeof(File)) + s_real->szOsFile;
        m_vfs.zName = "failing";
        m_vfs.xOpen = Open;
        sqlite3_vfs_register(&m_vfs, 1);
        Stop();
    }
    ~FailingVfs()
    {
        sqlite3_vfs_unregister(&m_vfs);
        sqlite3_vfs_register(s_real, 1);
    }
    FailingVfs(const FailingVfs&) = delete;
    FailingVfs& operator=(const FailingVfs&) = delete;

    // Writes, syncs and truncations behind the next `after` fail: one or all.
    static void FailAfter(int after, int code, bool forGood)
    {
        s_after = after;
        s_code = code;
        s_forGood = forGood;
        s_failures = 0;
    }
    static void Stop() { s_after = -1; }
    static int Failures() { return s_failures; }
    static int Syncs() { return s_syncs; }

private:
    struct File {
        sqlite3_file base;
        sqlite3_file* Real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
    };
    static sqlite3_file* Real(sqlite3_file* file) { return reinterpret_cast<File*>(file)->Real(); }

    static int Open(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* outFlags)
    {
        file->pMethods = nullptr;
        const int result = s_real->xOpen(s_real, name, Real(file), flags, outFlags);
        if (result != SQLITE_OK)
            return result;
        // Version 1: without shared memory, which a log that one process has needs not.
        static const sqlite3_io_methods methods = {
            1,
            [](sqlite3_file* f) { return Real(f)->pMethods->xClose(Real(f)); },
            [](sqlite3_file* f, void* to, int count, sqlite3_int64 at) {
                return Real(f)->pMethods->xRead(Real(f), to, count, at);
            },
            [](sqlite3_file* f, const void* from, int count, sqlite3_int64 at) {
                return Fails() ? s_code : Real(f)->pMethods->xWrite(Real(f), from, count, at);
            },
            [](sqlite3_file* f, sqlite3_int64 size) {
                return Fails() ? s_code : Real(f)->pMethods->xTruncate(Real(f), size);
            },
            [](sqlite3_file* f, int how) {
                ++s_syncs;
                return Fails() ? s_code : Real(f)->pMethods->xSync(Real(f), how);
            },
            [](sqlite3_file* f, sqlite3_int64* size) {
                return Real(f)->pMethods->xFileSize(Real(f), size);
            },
            [](sqlite3_file* f, int level) { return Real(f)->pMethods->xLock(Real(f), level); },
            [](sqlite3_file* f, int level) { return Real(f)->pMethods->xUnlock(Real(f), level); },
            [](sqlite3_file* f, int* out) {
                return Real(f)->pMethods->xCheckReservedLock(Real(f), out);
            },
            [](sqlite3_file* f, int op, void* argument) {
                return Real(f)->pMethods->xFileControl(Real(f), op, argument);
            },
            [](sqlite3_file* f) { return Real(f)->pMethods->xSectorSize(Real(f)); },
            [](sqlite3_file* f) { return Real(f)->pMethods->xDeviceCharacteristics(Real(f)); },
            nullptr,
            nullptr,
            nullptr,
            nullptr,
            nullptr,
            nullptr,
        };
        file->pMethods = &methods;
        return SQLITE_OK;
    }

    static bool Fails()
    {
        if (s_after < 0 || (s_after > 0 && s_after--))
            return false;
        if (!s_forGood)
            s_after = -1;
        ++s_failures;
        return true;
    }

    inline static sqlite3_vfs* s_real = nullptr;
    inline static int s_after = -1;
    inline static int s_code = 0;
    inline static bool s_forGood = false;
    inline static int s_failures = 0;
    inline static int s_syncs = 0;
    sqlite3_vfs m_vfs;
};
