#include "host/HostError.h"
#include "host/Store.h"
#include "host/StorePath.h"

#include "tests/support/EnvironmentVariable.h"
#include "tests/support/NoDescriptors.h"
#include "tests/support/TempDir.h"

#include <pwd.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

using namespace VLK;
using namespace VLK::host;

namespace {

unsigned ModeOf(const std::string& path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

void Sql(const std::string& path, const char* sql)
{
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(db, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(db);
    sqlite3_close(db);
}

// Why the file is refused; empty when it is taken.
std::string Refusal(const std::string& path)
{
    try {
        BStore store(path);
        return "";
    } catch (const BHostError& error) {
        EXPECT_EQ(error.Status(), eExitStore);
        EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
        EXPECT_NE(std::string(error.what()).find(path), std::string::npos) << error.what();
        return error.what();
    }
}

// Enough rows for several pages of every table and index.
class FillIt : public INVCallback {
public:
    explicit FillIt(BStore& store) : m_store(store) {}
    int Update() override
    {
        for (int i = 0; i < 400; ++i)
            m_store.SetString("s", std::to_string(i).c_str(), std::string(100, 'x').c_str(), 0, 0);
        return 0;
    }

private:
    BStore& m_store;
};

class StoreFile : public testing::Test {
protected:
    TempDir directory;
    std::string file = directory.File("store.db");

    void MakeStore()
    {
        BStore store(file);
        FillIt fill(store);
        store.RequestUpdate(&fill);
    }

    void ExpectRefusedUntouched(const char* because)
    {
        std::string before = ReadFile(file);
        std::string refusal = Refusal(file);
        EXPECT_NE(refusal.find(because), std::string::npos) << refusal;
        EXPECT_TRUE(ReadFile(file) == before) << "the file was changed";
    }

    void SetEnvironment(const char* state, const char* home)
    {
        if (state)
            m_state.Set(state);
        else
            m_state.Unset();
        m_home.Set(home);
    }

private:
    EnvironmentVariable m_state{"XDG_STATE_HOME"};
    EnvironmentVariable m_home{"HOME"};
};

} // namespace

TEST_F(StoreFile, ANewFileIsOursAndPrivate)
{
    EXPECT_EQ(Refusal(file), "");
    EXPECT_EQ(ModeOf(file), 0600u);
    std::string header = ReadFile(file).substr(0, 100);
    EXPECT_EQ(header.substr(0, 15), "SQLite format 3");
    EXPECT_EQ(header.substr(60, 4), std::string("\0\0\0\1", 4));
    EXPECT_EQ(header.substr(68, 4), "VKAG");
    EXPECT_EQ(Refusal(file), "") << "opened again";
}

TEST_F(StoreFile, AnEmptyFileBecomesAStore)
{
    WriteFile(file, "");
    EXPECT_EQ(Refusal(file), "");
}

TEST_F(StoreFile, ANewerSchemaIsRefused)
{
    MakeStore();
    Sql(file, "PRAGMA user_version = 2");
    ExpectRefusedUntouched("newer vkagentd");
}

TEST_F(StoreFile, ANewerSchemaStillInTheLogIsRefused)
{
    MakeStore();
    std::string copy = directory.File("copy.db");
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(file.c_str(), &db), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(db, "PRAGMA user_version = 2", nullptr, nullptr, nullptr), SQLITE_OK);
    std::filesystem::copy(file, copy);
    std::filesystem::copy(file + "-wal", copy + "-wal");
    sqlite3_close(db);
    file = copy;
    std::string log = ReadFile(file + "-wal");
    ExpectRefusedUntouched("newer vkagentd");
    EXPECT_TRUE(ReadFile(file + "-wal") == log) << "the log was changed";
}

TEST_F(StoreFile, OtherPeoplesDatabasesAreRefused)
{
    Sql(file, "CREATE TABLE t (x); INSERT INTO t VALUES (1)");
    ExpectRefusedUntouched("another program");
    std::filesystem::remove(file);
    Sql(file, "PRAGMA application_id = 7; PRAGMA user_version = 3");
    ExpectRefusedUntouched("another program");
}

TEST_F(StoreFile, WhatIsNoDatabaseIsRefused)
{
    WriteFile(file, std::string(5000, 'q'));
    ExpectRefusedUntouched("is not a database");
    WriteFile(file, "short");
    ExpectRefusedUntouched("is not a database");
}

TEST_F(StoreFile, ADamagedFileIsRefused)
{
    MakeStore();
    std::string bytes = ReadFile(file);
    ASSERT_GT(bytes.size(), 4 * 4096u);
    std::string broken = bytes;
    for (size_t i = 4096; i < bytes.size(); i += 4096)
        broken.replace(i, 64, std::string(64, '\x5a'));
    WriteFile(file, broken);
    ExpectRefusedUntouched("is damaged");
    WriteFile(file, bytes.substr(0, bytes.size() / 2));
    ExpectRefusedUntouched("is damaged");
}

TEST_F(StoreFile, AStoreWithoutItsTablesIsRefused)
{
    MakeStore();
    Sql(file, "DROP TABLE field");
    ExpectRefusedUntouched("is damaged");
    Sql(file, "CREATE TABLE field (record, number, kind, value)");
    ExpectRefusedUntouched("is damaged");
}

TEST_F(StoreFile, AStoreInUseIsRefused)
{
    BStore store(file);
    EXPECT_NE(Refusal(file).find("in use by another process"), std::string::npos);
    EXPECT_EQ(store.SetString("s", "a", "still mine", 0, 0), 0);
}

TEST_F(StoreFile, OpeningNeedsNoFileBesideTheLog)
{
    MakeStore();
    EXPECT_EQ(Refusal(file), "") << "opened again";
    BStore store(file);
    for (const auto& entry : std::filesystem::directory_iterator(directory.Path())) {
        std::string name = entry.path().filename();
        EXPECT_TRUE(name == "store.db" || name == "store.db-wal") << name;
    }
}

TEST_F(StoreFile, AStoreThatMayOnlyBeReadIsRefused)
{
    MakeStore();
    std::filesystem::permissions(file, std::filesystem::perms::owner_read);
    if (geteuid() == 0) // whom permissions do not stop
        EXPECT_EQ(Refusal(file), "");
    else
        ExpectRefusedUntouched("cannot be written");
}

TEST_F(StoreFile, PathsThatCannotBeOpenedAreRefused)
{
    EXPECT_NE(Refusal(directory.Path()).find("is not a file"), std::string::npos);
    EXPECT_NE(Refusal(directory.File("none/store.db")).find("cannot be created"),
              std::string::npos);
}

TEST_F(StoreFile, WithoutADescriptorItIsRefusedWithTheReason)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizer of undefined behaviour needs descriptors itself";
#endif
    std::string refusals[2];
    {
        const NoDescriptors none;
        refusals[0] = Refusal(file);
    }
    EXPECT_NE(refusals[0].find("cannot be created: Too many open files"), std::string::npos)
        << refusals[0];
    MakeStore();
    {
        const NoDescriptors none;
        refusals[1] = Refusal(file);
    }
    EXPECT_NE(refusals[1].find("cannot be opened: unable to open database file (Too many open "
                               "files)"),
              std::string::npos)
        << refusals[1];
    EXPECT_EQ(Refusal(file), "");
}

TEST_F(StoreFile, TheDefaultIsUnderTheStateDirectoryWithMode0700)
{
    SetEnvironment(directory.File("state").c_str(), "/nowhere");
    EXPECT_EQ(DefaultStorePath(), directory.File("state/vkagentd/store.db"));
    EXPECT_EQ(ModeOf(directory.File("state")), 0700u);
    EXPECT_EQ(ModeOf(directory.File("state/vkagentd")), 0700u);
    EXPECT_EQ(DefaultStorePath(), directory.File("state/vkagentd/store.db")) << "a second time";
}

TEST_F(StoreFile, WithoutAStateDirectoryTheHomeDirectoryHoldsIt)
{
    for (const char* state : {static_cast<const char*>(nullptr), "", "relative/path"}) {
        SetEnvironment(state, directory.Path().c_str());
        EXPECT_EQ(DefaultStorePath(), directory.File(".local/state/vkagentd/store.db"));
    }
    EXPECT_EQ(ModeOf(directory.File(".local/state/vkagentd")), 0700u);
}

TEST_F(StoreFile, WithoutAnyOfTheseItIsInTheHomeDirectoryOfTheUser)
{
    passwd user = {};
    passwd* found = nullptr;
    std::vector<char> texts(65536);
    if (getpwuid_r(geteuid(), &user, texts.data(), texts.size(), &found) != 0 || !found)
        GTEST_SKIP() << "this user is not known by name";
    for (const char* home : {"", "relative/path"}) {
        SetEnvironment(nullptr, home);
        EXPECT_EQ(StateDirectory(), user.pw_dir + std::string("/.local/state/vkagentd"));
    }
}

TEST_F(StoreFile, ADirectoryThatCannotBeMadeIsOneLine)
{
    WriteFile(directory.File("file"), "x");
    SetEnvironment(directory.File("file/state").c_str(), "/nowhere");
    try {
        DefaultStorePath();
        FAIL() << "accepted";
    } catch (const BHostError& error) {
        EXPECT_EQ(error.Status(), eExitStore);
        EXPECT_NE(std::string(error.what()).find("cannot create directory"), std::string::npos);
    }
}
