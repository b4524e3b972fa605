#include "host/Store.h"

#include "tests/support/TempDir.h"

#include <csignal>
#include <functional>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace VLK;
using VLK::host::BStore;

namespace {

class Callback : public INVCallback {
public:
    explicit Callback(std::function<void()> update, int status = 0)
        : m_update(std::move(update)), m_status(status)
    {
    }
    int Update() override
    {
        m_update();
        return m_status;
    }

private:
    std::function<void()> m_update;
    const int m_status;
};

std::string String(BStore& store, const char* section, const char* key, int field = 0)
{
    BString value("untouched");
    return store.GetString(section, key, value, field) == 0 ? value.c_str() : "none";
}

// Runs `work` in a process of its own; returns the signal that ended it.
int SignalOf(const std::function<void()>& work)
{
    pid_t child = fork();
    if (child == 0) {
        work();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

class Store : public testing::Test {
protected:
    TempDir directory;
    std::string file = directory.File("store.db");
};

} // namespace

TEST_F(Store, EveryKindComesBackByKeyAndByPosition)
{
    BStore store(file);
    const unsigned char bytes[] = {0, 255, 7};
    BObjectIdentifier oid(BString("1.3.6.1.4294967295.0"));
    EXPECT_EQ(store.SetString("s", "row", "text", 0, 0), 0);
    EXPECT_EQ(store.SetOctets("s", "row", BOctetString(3, bytes), 1, 0), 0);
    EXPECT_EQ(store.SetOid("s", "row", oid, 2, 0), 0);
    EXPECT_EQ(store.SetInt("s", "row", -2147483647 - 1, "label", 3, 0), 0);

    EXPECT_EQ(String(store, "s", "row"), "text");
    BString text;
    EXPECT_EQ(store.GetStringAt("s", 0, text, 0), 0);
    EXPECT_STREQ(text.c_str(), "text");
    BOctetString octets;
    EXPECT_EQ(store.GetOctetsAt("s", 0, octets, 1), 0);
    EXPECT_TRUE(octets == BOctetString(3, bytes));
    BObjectIdentifier read;
    EXPECT_EQ(store.GetOidAt("s", 0, read, 2), 0);
    EXPECT_EQ(read, oid);
    int number = 0;
    EXPECT_EQ(store.GetIntAt("s", 0, number, 3), 0);
    EXPECT_EQ(number, -2147483647 - 1);
    EXPECT_EQ(store.GetInt("s", "row", number, 3), 0);
}

TEST_F(Store, EmptyValuesComeBackEmpty)
{
    BStore store(file);
    store.SetString("s", "a", "", 0, 0);
    store.SetOctets("s", "a", BOctetString(), 1, 0);
    store.SetOid("s", "a", BObjectIdentifier(), 2, 0);
    BString text("x");
    BOctetString octets("x", 1);
    BObjectIdentifier oid(7u);
    EXPECT_EQ(store.GetStringAt("s", 0, text, 0), 0);
    EXPECT_EQ(text.length(), 0u);
    EXPECT_EQ(store.GetOctetsAt("s", 0, octets, 1), 0);
    EXPECT_EQ(octets.Length(), 0u);
    EXPECT_EQ(store.GetOidAt("s", 0, oid, 2), 0);
    EXPECT_EQ(oid.Length(), 0u);
}

TEST_F(Store, ATextWithANulComesBackWhole)
{
    const BString text("left\0right", 10);
    {
        BStore store(file);
        EXPECT_EQ(store.SetString("s", "a", text, 0, 0), 0);
    }
    BStore store(file);
    BString byKey;
    EXPECT_EQ(store.GetString("s", "a", byKey, 0), 0);
    EXPECT_EQ(byKey, text);
    BString byPosition;
    EXPECT_EQ(store.GetStringAt("s", 0, byPosition, 0), 0);
    EXPECT_EQ(byPosition, text);
}

TEST_F(Store, WhatIsMissingLeavesTheValueAlone)
{
    BStore store(file);
    store.SetString("s", "key", "text", 0, 0);
    BString text("before");
    int number = 5;
    EXPECT_NE(store.GetString("s", "other", text, 0), 0);
    EXPECT_NE(store.GetString("t", "key", text, 0), 0);
    EXPECT_NE(store.GetString("s", "key", text, 1), 0);
    EXPECT_NE(store.GetStringAt("s", 1, text, 0), 0);
    EXPECT_NE(store.GetStringAt("s", -1, text, 0), 0);
    EXPECT_NE(store.GetInt("s", "key", number, 0), 0) << "a string is no integer";
    EXPECT_STREQ(text.c_str(), "before");
    EXPECT_EQ(number, 5);
}

TEST_F(Store, PositionsAreTheOrderOfFirstWriting)
{
    BStore store(file);
    for (const char* key : {"z", "a", "m"})
        store.SetString("s", key, key, 0, 0);
    store.SetString("other", "b", "b", 0, 0);
    store.SetString("s", "z", "again", 0, 0);
    EXPECT_EQ(store.GetRecordCount("s"), 3);
    EXPECT_EQ(store.GetRecordCount("none"), 0);
    BString text;
    const char* expected[] = {"again", "a", "m"};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(store.GetStringAt("s", i, text, 0), 0);
        EXPECT_STREQ(text.c_str(), expected[i]);
    }
}

TEST_F(Store, OpenSectionDropsThatSectionOnly)
{
    BStore store(file);
    store.SetString("s", "a", "1", 0, 0);
    store.SetString("t", "a", "2", 0, 0);
    store.OpenSection("s");
    EXPECT_EQ(store.GetRecordCount("s"), 0);
    EXPECT_EQ(String(store, "s", "a"), "none");
    EXPECT_EQ(String(store, "t", "a"), "2");
}

TEST_F(Store, ValuesSurviveACleanEnd)
{
    {
        BStore store(file);
        store.SetString("s", "a", "kept", 0, 0);
    }
    BStore store(file);
    EXPECT_EQ(String(store, "s", "a"), "kept");
}

TEST_F(Store, ARequestedUpdateSurvivesAKill)
{
    int signal = SignalOf([this] {
        BStore store(file);
        Callback save([&] {
            store.OpenSection("s");
            store.SetString("s", "a", "kept", 0, 0);
        });
        store.RequestUpdate(&save);
        raise(SIGKILL);
    });
    ASSERT_EQ(signal, SIGKILL);
    BStore store(file);
    EXPECT_EQ(String(store, "s", "a"), "kept");
}

TEST_F(Store, HeldUpdatesAreSavedOnceAndTogether)
{
    BStore store(file);
    int calls = 0;
    Callback first([&] {
        ++calls;
        store.SetString("s", "a", "kept", 0, 0);
    });
    Callback second([&] { store.SetString("s", "b", "kept", 0, 0); });
    store.Hold();
    store.RequestUpdate(&first);
    store.RequestUpdate(&second);
    store.RequestUpdate(&first);
    EXPECT_EQ(store.GetRecordCount("s"), 0);
    EXPECT_TRUE(store.SaveHeld());
    EXPECT_EQ(store.GetRecordCount("s"), 2);
    EXPECT_EQ(calls, 1);

    store.RequestUpdate(&first);
    EXPECT_EQ(calls, 2) << "no longer held";
    EXPECT_TRUE(store.SaveHeld()) << "nothing to save";
    EXPECT_EQ(calls, 2);
}

TEST_F(Store, OnlyTheHoldingThreadWaits)
{
    BStore store(file);
    Callback save([&] { store.SetString("s", "a", "kept", 0, 0); });
    store.Hold();
    std::thread([&] { store.RequestUpdate(&save); }).join();
    EXPECT_EQ(store.GetRecordCount("s"), 1);
    EXPECT_TRUE(store.SaveHeld());
}

TEST_F(Store, HeldUpdatesCutShortLeaveNothing)
{
    int signal = SignalOf([this] {
        BStore store(file);
        Callback first([&] { store.SetString("s", "a", "half", 0, 0); });
        Callback second([] { raise(SIGKILL); });
        store.Hold();
        store.RequestUpdate(&first);
        store.RequestUpdate(&second);
        store.SaveHeld();
    });
    ASSERT_EQ(signal, SIGKILL);
    EXPECT_EQ(BStore(file).GetRecordCount("s"), 0);
}

TEST_F(Store, AnUpdateCutShortLeavesTheEarlierOne)
{
    int signal = SignalOf([this] {
        BStore store(file);
        Callback first([&] {
            store.OpenSection("s");
            store.SetString("s", "a", "first", 0, 0);
            store.SetString("s", "b", "first", 0, 0);
        });
        store.RequestUpdate(&first);
        Callback second([&] {
            store.OpenSection("s");
            store.SetString("s", "a", "second", 0, 0);
            raise(SIGKILL);
        });
        store.RequestUpdate(&second);
    });
    ASSERT_EQ(signal, SIGKILL);
    BStore store(file);
    EXPECT_EQ(String(store, "s", "a"), "first");
    EXPECT_EQ(String(store, "s", "b"), "first");
}

TEST_F(Store, ManyKillsInARowLoseNothing)
{
    for (int round = 0; round < 5; ++round) {
        std::string text = std::to_string(round);
        ASSERT_EQ(SignalOf([&] {
                      BStore store(file);
                      Callback save([&] { store.SetString("s", text.c_str(), "x", 0, 0); });
                      store.RequestUpdate(&save);
                      raise(SIGKILL);
                  }),
                  SIGKILL);
    }
    EXPECT_EQ(BStore(file).GetRecordCount("s"), 5);
}

TEST_F(Store, AnUpdateThatThrowsIsTakenBackAndTheNextOneIsKept)
{
    {
        BStore store(file);
        Callback throwing([&] {
            store.SetInt("s", "half", 1, nullptr, 0, 0);
            throw std::runtime_error("cut short");
        });
        Callback whole([&] { store.SetInt("s", "whole", 2, nullptr, 0, 0); });
        store.Hold();
        store.RequestUpdate(&throwing);
        EXPECT_FALSE(store.SaveHeld());
        store.RequestUpdate(&whole);
    }
    BStore again(file);
    int value = 0;
    EXPECT_NE(0, again.GetInt("s", "half", value, 0));
    EXPECT_EQ(0, again.GetInt("s", "whole", value, 0));
    EXPECT_EQ(2, value);
}

TEST_F(Store, AnUpdateThatFailsIsTakenBack)
{
    {
        BStore store(file);
        Callback failing([&] { store.SetInt("s", "half", 1, nullptr, 0, 0); }, 1);
        store.Hold();
        store.RequestUpdate(&failing);
        EXPECT_FALSE(store.SaveHeld());
    }
    BStore again(file);
    int value = 0;
    EXPECT_NE(0, again.GetInt("s", "half", value, 0));
}

TEST_F(Store, NullAndNestedUpdatesAreTolerated)
{
    BStore store(file);
    store.RequestUpdate(nullptr);
    Callback inner([&] { store.SetString("s", "inner", "x", 0, 0); });
    Callback outer([&] {
        store.RequestUpdate(&inner);
        store.SetString("s", "outer", "x", 0, 0);
    });
    store.RequestUpdate(&outer);
    EXPECT_EQ(store.GetRecordCount("s"), 2);
}

TEST_F(Store, TheSystemGroupComesBack)
{
    {
        BStore store(file);
        BMib2System system;
        system.SetStore(&store);
        system.SetContact(BString("somebody"));
        Callback save([&] { system.SaveToNV(); });
        store.RequestUpdate(&save);
    }
    BStore store(file);
    BMib2System system;
    system.SetStore(&store);
    system.InitFromNV();
    EXPECT_STREQ(system.Contact().c_str(), "somebody");
    EXPECT_EQ(store.GetRecordCount("mib-2.system"), 6);
}

TEST_F(Store, ASectionThatWasSavedIsKnownAlsoWhenItIsEmpty)
{
    {
        BStore store(file);
        EXPECT_FALSE(store.WasSaved("s"));
        store.SetString("s", "key", BString("x"), 0, 0);
        EXPECT_FALSE(store.WasSaved("s")) << "a value alone is no save of the section";
        Callback save([&] { store.OpenSection("s"); });
        store.RequestUpdate(&save);
        EXPECT_TRUE(store.WasSaved("s"));
        EXPECT_EQ(store.GetRecordCount("s"), 0);
    }
    BStore again(file);
    EXPECT_TRUE(again.WasSaved("s"));
    EXPECT_FALSE(again.WasSaved("t"));
}

TEST_F(Store, ASaveThatIsTakenBackWasNone)
{
    BStore store(file);
    Callback throwing([&] {
        store.OpenSection("s");
        throw std::runtime_error("cut short");
    });
    store.RequestUpdate(&throwing);
    EXPECT_FALSE(store.WasSaved("s"));
}

TEST_F(Store, AResetStoreHoldsNothingAndGoesOn)
{
    {
        BStore store(file);
        Callback save([&] {
            store.OpenSection("s");
            store.SetString("s", "key", BString("x"), 0, 0);
        });
        store.RequestUpdate(&save);
        store.Reset();
        EXPECT_FALSE(store.WasSaved("s"));
        EXPECT_EQ(String(store, "s", "key"), "none");
        store.SetString("t", "key", BString("y"), 0, 0);
    }
    BStore again(file);
    EXPECT_EQ(again.GetRecordCount("s"), 0);
    EXPECT_EQ(String(again, "t", "key"), "y");
}

TEST_F(Store, AResetCanKeepASection)
{
    BStore store(file);
    Callback save([&] {
        for (const char* section : {"s", "t"}) {
            store.OpenSection(section);
            store.SetString(section, "key", BString("x"), 0, 0);
        }
    });
    store.RequestUpdate(&save);
    store.Reset("t");
    EXPECT_EQ(String(store, "s", "key"), "none");
    EXPECT_EQ(String(store, "t", "key"), "x");
}
