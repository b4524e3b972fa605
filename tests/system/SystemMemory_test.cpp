// The system group without memory: its texts are whole, or as they were.
#include "tests/support/AllocationSweep.h"

#include <cstring>
#include <memory>
#include <string>
#include <vkmibh/system.h>

namespace VLK {
namespace {

// Holds one long text for each key, and takes no memory for itself. What it is given
// has to be long too: a text cut short, or an empty one, is none that was ever set.
class FrugalStore : public INonVolatile {
public:
    int GetString(const char*, const char* key, BString& value, int) override
    {
        const BString text(std::strcmp(key, "sysObjectID") ? s_text : s_objectId);
        value = text;
        return text.empty() || value != text ? 1 : 0;
    }
    int SetString(const char*, const char* key, const BString& value, int, int) override
    {
        ++written;
        wrong += std::strcmp(key, "sysObjectID") != 0 && value != wanted ? 1 : 0;
        return 0;
    }
    int GetInt(const char*, const char*, int& value, int) override
    {
        value = 4;
        return 0;
    }
    int SetInt(const char*, const char*, int, const char*, int, int) override { return 0; }
    int GetStringAt(const char*, int, BString&, int) override { return 1; }
    int GetOctetsAt(const char*, int, BOctetString&, int) override { return 1; }
    int SetOctets(const char*, const char*, const BOctetString&, int, int) override { return 1; }
    int GetOidAt(const char*, int, BObjectIdentifier&, int) override { return 1; }
    int SetOid(const char*, const char*, const BObjectIdentifier&, int, int) override { return 1; }
    int GetIntAt(const char*, int, int&, int) override { return 1; }
    void OpenSection(const char*) override {}
    int GetRecordCount(const char*) override { return 0; }
    void RequestUpdate(INVCallback*) override {}

    static constexpr char s_text[] = "a text that is longer than what it replaces, by a good deal";
    // More arcs than an identifier has room for at first.
    static constexpr char s_objectId[] = "1.3.6.1.4.1.9.9.9.9.9.9.9.9.9.9.9.9.9.9.9.9.9.9.9.9.9";
    BString wanted;
    int written = 0;
    int wrong = 0;
};

void ExpectOldOrNew(const BMib2System& system)
{
    const auto expect = [](const BString& text, const char* old) {
        EXPECT_TRUE(text == BString(old) || text == BString(FrugalStore::s_text)) << text.c_str();
    };
    expect(system.Description(), "Velkoran agent");
    expect(system.Contact(), "Mr. Qwin");
    expect(system.Name(), "MIB handler");
    expect(system.Location(), "Keswold");
    const std::string objectId = system.ObjectID().ToString().c_str();
    EXPECT_TRUE(objectId == "1.3.6.1.4.1.32473" || objectId == FrugalStore::s_objectId) << objectId;
}

TEST(SystemMemory, WhatIsSetIsSetWholeOrTheOldTextStays)
{
    const BString text(FrugalStore::s_text);
    for (auto set : {&BMib2System::SetDescription, &BMib2System::SetContact, &BMib2System::SetName,
                     &BMib2System::SetLocation})
        VLKTest::SweepAllocations([] { return std::make_unique<BMib2System>(); },
                                  [&](auto& system) { return (system.get()->*set)(text); },
                                  [&](auto& system, bool done) {
                                      ExpectOldOrNew(*system);
                                      const bool isThere = system->Description() == text ||
                                                           system->Contact() == text ||
                                                           system->Name() == text ||
                                                           system->Location() == text;
                                      EXPECT_EQ(done, isThere);
                                  });
}

TEST(SystemMemory, WhatIsLoadedIsLoadedWholeOrTheOldTextStays)
{
    FrugalStore store;
    const unsigned allocations = VLKTest::SweepAllocations(
        [&] {
            auto system = std::make_unique<BMib2System>();
            system->SetStore(&store);
            return system;
        },
        [](auto& system) { return system->InitFromNV(); },
        [](auto& system, int result) {
            EXPECT_EQ(0, result);
            ExpectOldOrNew(*system);
            EXPECT_EQ(4, system->Services());
        });
    EXPECT_GE(allocations, 8u);
}

TEST(SystemMemory, WhatIsSavedIsSavedWholeOrNotAtAll)
{
    FrugalStore store;
    store.wanted = BString(FrugalStore::s_text);
    VLKTest::SweepAllocations(
        [&] {
            auto system = std::make_unique<BMib2System>();
            system->SetStore(&store);
            system->InitFromNV();
            store.written = 0;
            return system;
        },
        [](auto& system) { return system->SaveToNV(); },
        [&](auto&, int result) {
            EXPECT_EQ(0, result);
            EXPECT_TRUE(store.written == 0 || store.written == 5) << store.written;
            EXPECT_EQ(0, store.wrong);
        });
    EXPECT_EQ(5, store.written) << "in the end";
}

} // namespace
} // namespace VLK
