// View filter tables against a naive model, with families at random. The seed is
// printed; VKMIBH_SEED sets it.
#include "tests/support/ViewRows.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <random>

namespace VLK {
namespace Test {
namespace {

constexpr unsigned kArcs[] = {0, 1, 2, 4294967295u};
const char* const kViews[] = {"v", "w", "vw"};

struct Row {
    std::string view;
    Arcs subtree;
    Octets mask;
    bool included;
    bool active;

    // RFC 3415 section 4, vacmViewTreeFamilyMask, bit by bit.
    bool Covers(const Arcs& oid) const
    {
        if (oid.size() < subtree.size())
            return false;
        for (std::size_t i = 0; i < subtree.size(); ++i) {
            const bool counts = i >= 8 * mask.size() || (mask[i / 8] >> (7 - i % 8) & 1) != 0;
            if (counts && oid[i] != subtree[i])
                return false;
        }
        return true;
    }
};

struct Answer {
    bool isIn;
    unsigned matches;
};

// Rows by their indexes, in the order of plain vectors.
class Model {
public:
    // Only the rules of views: what covers, most arcs, then the order.
    Answer ByTheRules(const std::string& view, const Arcs& oid) const
    {
        std::vector<const Row*> found;
        for (const auto& item : rows) {
            const Row& row = item.second;
            if (row.active && row.view == view && row.Covers(oid))
                found.push_back(&row);
        }
        const auto isLess = [](const Row* a, const Row* b) {
            return a->subtree.size() != b->subtree.size() ? a->subtree.size() < b->subtree.size()
                                                          : a->subtree < b->subtree;
        };
        if (found.empty())
            return {false, 0};
        const Row* const best = *std::max_element(found.begin(), found.end(), isLess);
        const auto count = std::count_if(found.begin(), found.end(), [best](const Row* row) {
            return row->subtree.size() == best->subtree.size();
        });
        return {best->included, static_cast<unsigned>(count)};
    }

    // With the limit and the write into the first row, step by step.
    Answer StepByStep(const std::string& view, const Arcs& oid)
    {
        std::vector<Row*> found;
        for (auto item = rows.rbegin(); item != rows.rend() && found.size() < 32; ++item) {
            Row& row = item->second;
            if (row.active && row.view == view && row.Covers(oid))
                found.push_back(&row);
        }
        limited += found.size() == 32;
        std::size_t most = 0;
        for (const Row* row : found)
            most = std::max(most, row->subtree.size());
        std::vector<Row*> longest;
        for (Row* row : found) {
            if (row->subtree.size() == most)
                longest.push_back(row);
        }
        if (longest.empty())
            return {false, 0};
        bool isIn = longest[0]->included;
        for (Row* row : longest) {
            if (row->subtree > longest[0]->subtree) {
                longest[0]->subtree = row->subtree;
                isIn = row->included;
            }
        }
        return {isIn, static_cast<unsigned>(longest.size())};
    }

    std::map<Arcs, Row> rows;
    unsigned limited = 0; // look-ups that saw 32 matches
};

class Random {
public:
    explicit Random(unsigned seed) : m_engine(seed) {}

    unsigned Below(unsigned limit) { return static_cast<unsigned>(m_engine() % limit); }
    Arcs MakeArcs(unsigned atMost)
    {
        Arcs arcs(Below(atMost + 1));
        for (unsigned& arc : arcs)
            arc = kArcs[Below(4)];
        return arcs;
    }
    // Lengths around one and two octets, where masks end.
    Arcs MakeLongArcs() { return Below(4) ? MakeArcs(5) : MakeArcs(18); }
    Row MakeRow()
    {
        Row row{kViews[Below(3)], MakeLongArcs(), Octets(Below(4)), Below(2) == 0, Below(5) != 0};
        for (unsigned char& octet : row.mask)
            octet = static_cast<unsigned char>(Below(3) ? Below(256) : 0);
        return row;
    }
    // Often one that a row covers.
    Arcs MakeQuestion(const Model& model)
    {
        if (model.rows.empty() || Below(4) == 0)
            return MakeLongArcs();
        const Row& row =
            std::next(model.rows.begin(), Below(static_cast<unsigned>(model.rows.size())))->second;
        Arcs oid = row.subtree;
        for (std::size_t i = 0; i < oid.size(); ++i) {
            if (i < 8 * row.mask.size() && (row.mask[i / 8] >> (7 - i % 8) & 1) == 0)
                oid[i] = kArcs[Below(4)];
        }
        const Arcs more = MakeArcs(2);
        oid.insert(oid.end(), more.begin(), more.end());
        return oid;
    }

private:
    std::mt19937 m_engine;
};

Arcs IndexOf(const Row& row, bool implied)
{
    Arcs index{static_cast<unsigned>(row.view.size())};
    index.insert(index.end(), row.view.begin(), row.view.end());
    if (!implied)
        index.push_back(static_cast<unsigned>(row.subtree.size()));
    index.insert(index.end(), row.subtree.begin(), row.subtree.end());
    return index;
}

void Fill(BFilterTable::Entry& entry, const Row& row)
{
    entry.viewName = TextString(row.view);
    entry.subtree = MakeOid(row.subtree);
    entry.mask = MaskOf(row.mask);
    entry.type = row.included ? eFilterIncluded : eFilterExcluded;
    entry.rowStatus = row.active ? eRowActive : eRowNotInService;
}

void ExpectSameRows(BFilterTable& table, const Model& model)
{
    ASSERT_EQ(model.rows.size(), table.Count());
    for (const auto& item : model.rows) {
        const BFilterTable::Entry* const row = table.GetRow(MakeOid(item.first));
        ASSERT_NE(nullptr, row) << TextOf(item.first);
        ASSERT_EQ(item.second.subtree, ArcsOf(row->subtree)) << TextOf(item.first);
    }
}

unsigned Seed()
{
    const char* const given = std::getenv("VKMIBH_SEED");
    return given ? static_cast<unsigned>(std::strtoul(given, nullptr, 10)) : std::random_device{}();
}

class FilterTableOracle : public ::testing::Test {
protected:
    FilterTableOracle() : seed(Seed()), random(seed) { std::printf("VKMIBH_SEED=%u\n", seed); }

    // Asks all three views, and the model by `rule`.
    template <class Rule>
    void Compare(const Arcs& oid, Rule rule)
    {
        for (const char* view : kViews) {
            const Answer expected = rule(view);
            unsigned matches = 77;
            ASSERT_EQ(expected.isIn, table->Filter(view, MakeOid(oid), &matches))
                << view << " " << TextOf(oid) << ", seed " << seed;
            ASSERT_EQ(expected.matches, matches) << view << " " << TextOf(oid) << ", seed " << seed;
            total.matches += matches;
            total.several += matches > 1;
            total.isIn += expected.isIn;
        }
    }

    void NewTable()
    {
        model.rows.clear();
        table = std::make_unique<BFilterTable>(nullptr);
    }

    const unsigned seed;
    Random random;
    Model model;
    std::unique_ptr<BFilterTable> table;
    struct {
        unsigned matches = 0;
        unsigned several = 0;
        unsigned isIn = 0;
    } total;
};

TEST_F(FilterTableOracle, TablesWithTheirOwnIndexesFollowTheRulesOfViews)
{
    for (int round = 0; round < 300; ++round) {
        NewTable();
        const bool implied = random.Below(2) == 0;
        const unsigned count = random.Below(30);
        for (unsigned i = 0; i < count; ++i) {
            const Row row = random.MakeRow();
            const Arcs index = IndexOf(row, implied);
            const bool isNew = model.rows.emplace(index, row).second;
            BFilterTable::Entry entry;
            Fill(entry, row);
            ASSERT_EQ(isNew, table->Insert(entry.viewName, entry.subtree, entry.mask, entry.type,
                                           eStorageOther, entry.rowStatus, implied));
        }
        for (int question = 0; question < 40; ++question) {
            const Arcs oid = random.MakeQuestion(model);
            Compare(oid, [&](const char* view) { return model.ByTheRules(view, oid); });
        }
        ExpectSameRows(*table, model); // no look-up changed a row
    }
    EXPECT_GT(total.several, 1000u);
    EXPECT_GT(total.isIn, 1000u);
}

TEST_F(FilterTableOracle, TablesWithAnyIndexesDoWhatTheStepsSay)
{
    unsigned changed = 0;
    for (int round = 0; round < 200; ++round) {
        NewTable();
        const unsigned count = random.Below(120);
        for (unsigned i = 0; i < count; ++i) {
            Row row = random.MakeRow();
            if (round % 4 == 0) {
                row.view = "v";
                row.mask = Octets(3);
            }
            const Arcs index = random.MakeArcs(6);
            if (model.rows.emplace(index, row).second) {
                auto* const entry = new BFilterTable::Entry;
                Fill(*entry, row);
                ASSERT_TRUE(table->Insert(MakeOid(index), entry));
            }
        }
        const auto before = model.rows;
        for (int question = 0; question < 40; ++question) {
            const Arcs oid = random.MakeQuestion(model);
            Compare(oid, [&](const char* view) { return model.StepByStep(view, oid); });
        }
        ExpectSameRows(*table, model);
        for (const auto& item : before)
            changed += model.rows.at(item.first).subtree != item.second.subtree;
    }
    EXPECT_GT(total.several, 1000u);
    EXPECT_GT(changed, 100u);
    EXPECT_GT(model.limited, 100u);
}

// A table and its model through all that can happen to rows. The address of some is
// held: they are changed without the table's knowing.
class Changes {
public:
    Changes(Random& random, BFilterTable& table, Model& model)
        : m_random(random), m_table(table), m_model(model)
    {
    }

    void Any()
    {
        switch (m_random.Below(12)) {
        case 0:
            return Insert(m_random.MakeArcs(6));
        case 1:
        case 2:
            return Remove();
        case 3:
        case 4:
            return Change();
        case 5:
            return Hold();
        case 6:
            return ChangeHeld();
        case 7:
            return m_random.Below(40) ? Hold() : Clear();
        default:
            return InsertCopy();
        }
    }
    // By its values, under their index.
    void InsertCopy()
    {
        const Row row = m_random.MakeRow();
        const bool isNew = m_model.rows.emplace(IndexOf(row, false), row).second;
        BFilterTable::Entry entry;
        Fill(entry, row);
        ASSERT_EQ(isNew, m_table.Insert(entry.viewName, entry.subtree, entry.mask, entry.type,
                                        eStorageOther, entry.rowStatus, false));
    }

private:
    using Place = std::map<Arcs, Row>::iterator;

    Place AnyRow()
    {
        return std::next(m_model.rows.begin(),
                         m_random.Below(static_cast<unsigned>(m_model.rows.size())));
    }
    void Insert(const Arcs& index)
    {
        const Row row = m_random.MakeRow();
        if (!m_model.rows.emplace(index, row).second)
            return;
        m_held[index] = new BFilterTable::Entry;
        Fill(*m_held[index], row);
        ASSERT_TRUE(m_table.Insert(MakeOid(index), m_held[index]));
    }
    void Remove()
    {
        if (m_model.rows.empty())
            return;
        const Place row = AnyRow();
        delete m_table.Remove(MakeOid(row->first));
        m_held.erase(row->first);
        m_model.rows.erase(row);
    }
    void Change()
    {
        if (m_model.rows.empty())
            return;
        const Place row = AnyRow();
        row->second = m_random.MakeRow();
        ASSERT_TRUE(m_table.Change(MakeOid(row->first),
                                   [&](BFilterTable::Entry& entry) { Fill(entry, row->second); }));
    }
    void Hold()
    {
        if (m_model.rows.empty())
            return;
        const Place row = AnyRow();
        const int position = static_cast<int>(std::distance(m_model.rows.begin(), row));
        m_held[row->first] =
            m_random.Below(2) ? m_table.GetRow(MakeOid(row->first)) : m_table.RowAt(position);
        ASSERT_NE(nullptr, m_held[row->first]);
        if (m_random.Below(2)) {
            row->second = m_random.MakeRow();
            Fill(*m_held[row->first], row->second);
        }
    }
    void ChangeHeld()
    {
        if (m_held.empty())
            return;
        const auto held =
            std::next(m_held.begin(), m_random.Below(static_cast<unsigned>(m_held.size())));
        Row& row = m_model.rows.at(held->first);
        row = m_random.MakeRow();
        Fill(*held->second, row);
    }
    void Clear()
    {
        m_table.Clear();
        m_model.rows.clear();
        m_held.clear();
    }

    Random& m_random;
    BFilterTable& m_table;
    Model& m_model;
    std::map<Arcs, BFilterTable::Entry*> m_held;
};

TEST_F(FilterTableOracle, LookUpsDoWhatTheStepsSayWhileRowsComeChangeAndGo)
{
    unsigned shown = 0;
    for (int round = 0; round < 25; ++round) {
        NewTable();
        Changes changes(random, *table, model);
        for (unsigned i = random.Below(120); i > 0; --i)
            changes.InsertCopy();
        for (int change = 0; change < 40; ++change) {
            changes.Any();
            // Enough for the table to take notice that its rows rest.
            for (unsigned question = random.Below(8); question > 0; --question) {
                const Arcs oid = random.MakeQuestion(model);
                Compare(oid, [&](const char* view) { return model.StepByStep(view, oid); });
                for (const char* view : kViews) {
                    const bool has =
                        std::any_of(model.rows.begin(), model.rows.end(), [view](const auto& item) {
                            return item.second.active && item.second.view == view;
                        });
                    ASSERT_EQ(has, table->HasRows(view)) << view << ", seed " << seed;
                    shown += has;
                }
            }
        }
        ExpectSameRows(*table, model);
    }
    EXPECT_GT(total.several, 1000u);
    EXPECT_GT(total.isIn, 1000u);
    EXPECT_GT(shown, 1000u);
}

} // namespace
} // namespace Test
} // namespace VLK
