// The views an agent starts with: configured, or as managers have left them.
#include "host/access/Views.h"

#include "host/HostError.h"

#include "tests/support/Oids.h"
#include "tests/support/TempDir.h"

#include <functional>

using namespace VLK;
using namespace VLK::host;
using VLK::Test::MakeOid;

namespace {

class Saver : public INVCallback {
public:
    explicit Saver(std::function<void()> save) : m_save(std::move(save)) {}
    int Update() override
    {
        m_save();
        return 0;
    }

private:
    std::function<void()> m_save;
};

SView MakeView(const char* name, const std::vector<const char*>& included,
               const std::vector<const char*>& excluded = {})
{
    SView view;
    view.name = name;
    for (const char* subtree : included)
        view.families.push_back({MakeOid(subtree), BOctetString(), eFilterIncluded});
    for (const char* subtree : excluded)
        view.families.push_back({MakeOid(subtree), BOctetString(), eFilterExcluded});
    return view;
}

// "NAME +SUBTREE" for each row that is not built in, in the table's order.
std::vector<std::string> RowsOf(BFilterTable& table)
{
    std::vector<std::string> rows;
    for (int i = 0; i < static_cast<int>(table.Count()); ++i) {
        const BFilterTable::Entry& row = *table.RowAt(i);
        if (row.storageType != eStorageReadOnly)
            rows.push_back(std::string(row.viewName.c_str()) +
                           (row.type == eFilterIncluded ? " +" : " -") + Test::TextOf(row.subtree));
    }
    return rows;
}

bool Shows(BFilterTable& table, const char* view, const char* object)
{
    return table.Filter(BString(view), MakeOid(object));
}

class Views : public testing::Test {
protected:
    using CRows = std::vector<std::string>;

    // What an agent starts with; `change` is what managers do then.
    CRows Start(const std::vector<SView>& views,
                const std::function<void(BFilterTable&)>& change = nullptr)
    {
        BStore store(file);
        BFilterTable table(&store, kViewSection);
        asConfigured = LoadViews(table, &store, views);
        CRows rows = RowsOf(table);
        EXPECT_TRUE(Shows(table, kViewEverything, "2.1.7"));
        if (change) {
            change(table);
            Saver saver([&] { EXPECT_TRUE(table.SaveToNV()); });
            store.RequestUpdate(&saver);
        }
        return rows;
    }
    static void Add(BFilterTable& table, const char* view, const char* subtree)
    {
        EXPECT_TRUE(table.Insert(BString(view), MakeOid(subtree), BOctetString(), eFilterIncluded,
                                 eStorageNonVolatile, eRowActive, false));
    }
    static void Remove(BFilterTable& table, const char* view, const char* subtree)
    {
        BObjectIdentifier index;
        ASSERT_TRUE(BFilterTable::MakeIndex(BString(view), MakeOid(subtree), false, index));
        BFilterTable::Entry* row = table.Remove(index);
        EXPECT_TRUE(row);
        delete row;
    }

    TempDir directory;
    std::string file = directory.File("store.db");
    const std::vector<SView> configured{MakeView("lan", {"1.3"}, {"1.3.6.1.6"}),
                                        MakeView("wan", {"1.3.6.1.2.1.1"})};
    const CRows configuredRows{"lan +1.3", "lan -1.3.6.1.6", "wan +1.3.6.1.2.1.1"};
    bool asConfigured = false;
};

} // namespace

TEST_F(Views, WithoutAStoreTheyAreTheConfiguredAndTheBuiltInOnes)
{
    BFilterTable table(nullptr, kViewSection);
    EXPECT_TRUE(LoadViews(table, nullptr, configured));
    EXPECT_EQ(RowsOf(table), configuredRows);
    EXPECT_TRUE(Shows(table, "lan", "1.3.6.1.2.1.1.1.0"));
    EXPECT_FALSE(Shows(table, "lan", "1.3.6.1.6.3.1.0"));
    for (const char* object : {"0", "1.3.6.1.2.1.1.1.0", "2.9"})
        EXPECT_TRUE(Shows(table, "everything", object)) << object;
    EXPECT_TRUE(Shows(table, "systemonly", "1.3.6.1.2.1.1.9.1.2.1"));
    EXPECT_FALSE(Shows(table, "systemonly", "1.3.6.1.2.1.2.1.0"));
}

TEST_F(Views, ConfiguredRowsAreNonVolatileAndBuiltInOnesReadOnly)
{
    BFilterTable table(nullptr, kViewSection);
    LoadViews(table, nullptr, configured);
    ASSERT_EQ(table.Count(), 5u);
    for (int i = 0; i < 5; ++i) {
        const BFilterTable::Entry& row = *table.RowAt(i);
        bool isConfigured = row.viewName == BString("lan") || row.viewName == BString("wan");
        EXPECT_EQ(row.storageType, isConfigured ? eStorageNonVolatile : eStorageReadOnly);
        EXPECT_EQ(row.rowStatus, eRowActive);
    }
}

TEST_F(Views, UntilAManagerChangesThemTheyFollowTheConfiguration)
{
    EXPECT_EQ(Start(configured), configuredRows);
    EXPECT_TRUE(asConfigured);
    EXPECT_EQ(Start({MakeView("lan", {"1.3.6"})}), (CRows{"lan +1.3.6"}));
    EXPECT_TRUE(asConfigured);
    EXPECT_EQ(Start({}), CRows{});
    EXPECT_TRUE(asConfigured);
}

TEST_F(Views, WhatAManagerChangedWinsAndKeepsTheConfiguredRowsItLeft)
{
    Start(configured, [](BFilterTable& table) {
        Add(table, "lan", "1.3.6.1.6.3.16");
        Remove(table, "wan", "1.3.6.1.2.1.1");
    });
    const CRows left{"lan +1.3", "lan -1.3.6.1.6", "lan +1.3.6.1.6.3.16"};
    EXPECT_EQ(Start(configured), left);
    EXPECT_FALSE(asConfigured);
    EXPECT_EQ(Start({MakeView("other", {"1.3"})}), left) << "the configuration counts no more";
    EXPECT_FALSE(asConfigured);
}

TEST_F(Views, AChangeThatIsTakenBackLeavesThemAsConfigured)
{
    Start(configured, [](BFilterTable& table) { Add(table, "lan", "1.4"); });
    Start(configured, [](BFilterTable& table) { Remove(table, "lan", "1.4"); });
    EXPECT_EQ(Start(configured), configuredRows);
    EXPECT_TRUE(asConfigured);
    Start({MakeView("lan", {"1.3"})});
    EXPECT_FALSE(asConfigured);
}

TEST_F(Views, AMaskOrATypeThatDiffersIsSeen)
{
    Start(configured, [](BFilterTable& table) {
        table.GetRow(BString("lan"), MakeOid("1.3"), false)->type = eFilterExcluded;
    });
    Start(configured);
    EXPECT_FALSE(asConfigured);
    Start(configured, [](BFilterTable& table) {
        BFilterTable::Entry* row = table.GetRow(BString("lan"), MakeOid("1.3"), false);
        row->type = eFilterIncluded;
        row->mask = BOctetString(1, nullptr);
    });
    Start(configured);
    EXPECT_FALSE(asConfigured);
}

TEST_F(Views, AnEmptyTableThatManagersLeftStaysEmpty)
{
    Start(configured, [](BFilterTable& table) { table.Clear(); });
    EXPECT_EQ(Start(configured), CRows{});
    EXPECT_FALSE(asConfigured);
    EXPECT_EQ(Start(configured), CRows{});
}

TEST_F(Views, AResetStoreReturnsToTheConfiguration)
{
    Start(configured, [](BFilterTable& table) { table.Clear(); });
    BStore(file).Reset();
    EXPECT_EQ(Start(configured), configuredRows);
    EXPECT_TRUE(asConfigured);
}

TEST_F(Views, StoredRowsOfABuiltInViewAreLeftOut)
{
    {
        BStore store(file);
        BFilterTable table(&store, kViewSection);
        for (const char* subtree : {"1.3.6.1.2.1.1", "1.3.6.1.2.1.1.1"})
            EXPECT_TRUE(table.Insert(BString("systemonly"), MakeOid(subtree), BOctetString(),
                                     eFilterExcluded, eStorageNonVolatile, eRowActive, false));
        EXPECT_TRUE(table.SaveToNV());
    }
    BStore store(file);
    BFilterTable table(&store, kViewSection);
    LoadViews(table, &store, {});
    EXPECT_TRUE(Shows(table, "systemonly", "1.3.6.1.2.1.1.1.0"));
}

TEST_F(Views, ARowThatCannotBeReadKeepsTheAgentFromStarting)
{
    Start(configured, [](BFilterTable&) {});
    BStore store(file);
    store.SetString(kViewSection, "2", BString("no number"), 4, 0); // was excluded
    BFilterTable table(&store, kViewSection);
    try {
        LoadViews(table, &store, configured);
        ADD_FAILURE() << "what was excluded would be seen";
    } catch (const BHostError& error) {
        EXPECT_EQ(error.Status(), eExitStore);
        EXPECT_STREQ(error.what(), "the store holds views that cannot be read: --reset-store takes "
                                   "those of the configuration");
    }
}
