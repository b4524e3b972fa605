// A store that saves on a thread of its own.
#include "tests/support/FakeStore.h"
#include <vkmibh/testing/requests.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace VLK {
namespace Test {
namespace {

constexpr char kContact[] = "1.3.6.1.2.1.1.4.0";
constexpr char kName[] = "1.3.6.1.2.1.1.5.0";

// Has another thread save, and waits for it.
class WaitingStore : public FakeStore {
public:
    void RequestUpdate(INVCallback* callback) override
    {
        std::thread([callback] { callback->Update(); }).join();
    }
};

TEST(StoreThread, TheStoreIsAskedOutsideTheRecordsLock)
{
    WaitingStore store;
    BMibHandler handler(nullptr);
    handler.Init(nullptr, &store);
    Client client(handler);
    EXPECT_EQ(0, client.Set(kContact, "a contact")); // hangs when the lock is held
    EXPECT_EQ("a contact", store.strings["mib-2.system/sysContact"]);
}

// Notes the callback; the test's thread calls it.
class NotingStore : public FakeStore {
public:
    void RequestUpdate(INVCallback* callback) override { wanted = callback; }
    std::atomic<INVCallback*> wanted{nullptr};
};

TEST(StoreThread, SavesWholeTextsWhileSetsChangeThem)
{
    NotingStore store;
    BMibHandler handler(nullptr);
    handler.Init(nullptr, &store);
    std::atomic<bool> stop{false};
    std::thread sets([&] {
        Client client(handler);
        for (int i = 0; i < 2000; ++i) {
            client.Set(kContact, i % 2 ? "short" : "a longer text that needs other storage");
            client.Set(kName, i % 2 ? "another long text in other storage" : "brief");
        }
        stop = true;
    });
    while (!stop) {
        INVCallback* const callback = store.wanted;
        if (!callback)
            continue;
        callback->Update();
        const std::string text = store.strings["mib-2.system/sysContact"];
        EXPECT_TRUE(text == "short" || text == "a longer text that needs other storage") << text;
    }
    sets.join();
    ASSERT_NE(nullptr, store.wanted);
    store.wanted.load()->Update();
    EXPECT_EQ("short", store.strings["mib-2.system/sysContact"]);
    EXPECT_EQ("another long text in other storage", store.strings["mib-2.system/sysName"]);
}

} // namespace
} // namespace Test
} // namespace VLK
