// A store that was opened and then cannot be read, or reset: what is not read is not
// taken for what was never written.
#include "host/EngineIdentity.h"
#include "host/HostError.h"
#include "host/Store.h"
#include "tests/support/TempDir.h"

#include <functional>
#include <gtest/gtest.h>
#include <sqlite3.h>

using namespace VLK;
using namespace VLK::host;

namespace {

// Whatever the database of this process is asked fails, while it is to.
class FailingQueries {
public:
    FailingQueries() { sqlite3_auto_extension(reinterpret_cast<void (*)()>(OnOpen)); }
    ~FailingQueries()
    {
        sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(OnOpen));
        s_fail = false;
    }
    FailingQueries(const FailingQueries&) = delete;
    FailingQueries& operator=(const FailingQueries&) = delete;
    static void Fail(bool fail) { s_fail = fail; }

private:
    static int OnOpen(sqlite3* database, const char**, const sqlite3_api_routines*)
    {
        sqlite3_progress_handler(
            database, 1, [](void*) { return s_fail ? 1 : 0; }, nullptr);
        return SQLITE_OK;
    }
    inline static bool s_fail = false;
};

class Saving : public INVCallback {
public:
    explicit Saving(BStore& store) : m_store(store) {}
    int Update() override
    {
        m_store.OpenSection("s");
        return m_store.SetString("s", "key", "kept", 0, 0);
    }

private:
    BStore& m_store;
};

class UnreadableStore : public testing::Test {
protected:
    UnreadableStore()
    {
        BStore store(m_file);
        Saving saving(store);
        store.RequestUpdate(&saving);
    }

    // Why a start that has asked so ends; "" when it goes on.
    std::string EndOf(const std::function<void(BStore&)>& ask)
    {
        BStore store(m_file);
        FailingQueries::Fail(true);
        ask(store);
        FailingQueries::Fail(false);
        try {
            store.RequireRead();
        } catch (const BHostError& error) {
            EXPECT_EQ(error.Status(), eExitStore);
            return error.what();
        }
        return "";
    }

    TempDir m_directory;
    std::string m_file = m_directory.File("store.db");
    FailingQueries m_queries;
};

constexpr const char* kEnd = "the store cannot be read: interrupted";

} // namespace

TEST_F(UnreadableStore, AValueThatIsNotReadEndsTheStart)
{
    BString value("untouched");
    EXPECT_EQ(EndOf([&](BStore& store) {
                  EXPECT_EQ(store.GetString("s", "key", value, 0), BStore::eFileFailed);
              }),
              kEnd);
    EXPECT_EQ(EndOf([&](BStore& store) {
                  EXPECT_EQ(store.GetStringAt("s", 0, value, 0), BStore::eFileFailed);
              }),
              kEnd);
    EXPECT_STREQ(value.c_str(), "untouched");
    EXPECT_EQ(EndOf([](BStore&) {}), "");
}

TEST_F(UnreadableStore, ACountThatIsNotReadEndsTheStart)
{
    EXPECT_EQ(EndOf([](BStore& store) { EXPECT_EQ(store.GetRecordCount("s"), 0); }), kEnd);
}

// The configuration's rows would take the place of what managers have set.
TEST_F(UnreadableStore, ASectionThatIsNotFoundForAFailureEndsTheStart)
{
    EXPECT_EQ(EndOf([](BStore& store) { EXPECT_FALSE(store.WasSaved("s")); }), kEnd);
}

TEST_F(UnreadableStore, TheEngineStaysWhoItWas)
{
    std::string id;
    {
        BStore store(m_file);
        id = StartEngine(&store).id;
    }
    {
        BStore store(m_file);
        FailingQueries::Fail(true);
        EXPECT_THROW(StartEngine(&store), BHostError);
        FailingQueries::Fail(false);
    }
    BStore store(m_file);
    const SEngineIdentity next = StartEngine(&store);
    EXPECT_EQ(next.id, id);
    EXPECT_EQ(next.boots, 2);
}

TEST_F(UnreadableStore, AResetThatFailsForgetsNothing)
{
    BStore store(m_file);
    FailingQueries::Fail(true);
    try {
        store.Reset(kEngineSection);
        ADD_FAILURE() << "was reset";
    } catch (const BHostError& error) {
        EXPECT_EQ(error.Status(), eExitStore);
        EXPECT_STREQ(error.what(), "the store cannot be reset: interrupted");
    }
    FailingQueries::Fail(false);
    BString value;
    EXPECT_EQ(store.GetString("s", "key", value, 0), BStore::eDone);
    EXPECT_STREQ(value.c_str(), "kept");
    store.Reset(kEngineSection);
    EXPECT_EQ(store.GetString("s", "key", value, 0), BStore::eNoValue);
}
