#include "host/EngineIdentity.h"

#include "host/HostError.h"
#include "tests/support/TempDir.h"

#include <functional>
#include <sys/resource.h>

using namespace VLK;
using namespace VLK::host;

namespace {

class EngineIdentity : public testing::Test {
protected:
    SEngineIdentity Start()
    {
        BStore store(file);
        return StartEngine(&store);
    }
    // As if the engine had been kept so.
    void Keep(const std::string& id, int boots)
    {
        struct SSave : INVCallback {
            std::function<void()> update;
            int Update() override
            {
                update();
                return 0;
            }
        } save;
        BStore store(file);
        save.update = [&] {
            store.OpenSection(kEngineSection);
            BOctetString octets(static_cast<unsigned>(id.size()),
                                reinterpret_cast<const unsigned char*>(id.data()));
            store.SetOctets(kEngineSection, "engine", octets, 1, 0);
            store.SetInt(kEngineSection, "engine", boots, nullptr, 2, 0);
        };
        store.RequestUpdate(&save);
    }

    TempDir directory;
    std::string file = directory.File("store.db");
};

} // namespace

TEST_F(EngineIdentity, TheIdIsOfTheEnterpriseAndOfRandomOctets)
{
    SEngineIdentity engine = Start();
    ASSERT_EQ(engine.id.size(), 17u);
    EXPECT_EQ(engine.id.substr(0, 5), std::string("\x80\x00\x7e\xd9\x05", 5));
    EXPECT_NE(engine.id, StartEngine(nullptr).id);
    EXPECT_NE(StartEngine(nullptr).id, StartEngine(nullptr).id);
}

TEST_F(EngineIdentity, EveryStartHasTheSameIdAndOneMoreBoot)
{
    SEngineIdentity first = Start();
    EXPECT_EQ(first.boots, 1);
    for (int boots = 2; boots <= 4; ++boots) {
        SEngineIdentity next = Start();
        EXPECT_EQ(next.id, first.id);
        EXPECT_EQ(next.boots, boots);
    }
}

TEST_F(EngineIdentity, WithoutAStoreTheBootsAreOne) { EXPECT_EQ(StartEngine(nullptr).boots, 1); }

TEST_F(EngineIdentity, AResetKeepsIt)
{
    SEngineIdentity first = Start();
    BStore(file).Reset(kEngineSection);
    SEngineIdentity second = Start();
    EXPECT_EQ(second.id, first.id);
    EXPECT_EQ(second.boots, 2);
}

TEST_F(EngineIdentity, TheBootsStopAtTheirMost)
{
    std::string id = Start().id;
    Keep(id, kMostBoots - 1);
    for (int i = 0; i < 3; ++i) {
        SEngineIdentity engine = Start();
        EXPECT_EQ(engine.id, id);
        EXPECT_EQ(engine.boots, kMostBoots);
    }
}

TEST_F(EngineIdentity, WhatCannotBeAnEngineMakesANewOne)
{
    const std::string good = Start().id;
    const std::pair<std::string, int> kept[] = {
        {good, 0},
        {good, -7},
        {"\x80\x01", 5},
        {std::string("\0\0\0\0\0\0", 6), 5},
        {"\x80" + std::string(32, 'x'), 5},
    };
    for (const auto& [id, boots] : kept) {
        Keep(id, boots);
        SEngineIdentity engine = Start();
        EXPECT_NE(engine.id, id);
        EXPECT_NE(engine.id, good);
        EXPECT_EQ(engine.boots, 1);
    }
}

// A number of boots that is not kept would be used again.
TEST_F(EngineIdentity, AStoreThatCannotBeWrittenMakesNoStart)
{
    Start();
    BStore store(file);
    rlimit whole = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &whole), 0);
    const rlimit nothing{0, whole.rlim_max};
    auto* former = signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &nothing), 0);
    EXPECT_THROW(StartEngine(&store), BHostError);
    setrlimit(RLIMIT_FSIZE, &whole);
    signal(SIGXFSZ, former);
}
