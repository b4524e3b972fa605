// MIB information under random names and identifiers, without memory, and on
// several threads.
#include "tests/registry/InfoOwners.h"
#include "tests/support/AllocationSweep.h"
#include "tests/support/Threads.h"

#include <vkmibh/system.h>

#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace VLK {
namespace {

using Test::MakeOid;
using VLKTest::SweepAllocations;

// Names and identifiers near those of an implementation.
class CGuesses {
public:
    CGuesses(const BMibImpl& impl, unsigned seed)
        : m_oid(impl.Oid()),
          m_random(seed), m_words{"",           "INFO-MIB",    "OTHER-MIB", "0",        "1.2.3",
                                  "4294967295", "99999999999", "A",         "z",        "-",
                                  " ",          "\xc3\xa4",    "..",        "borrowed", "joined"}
    {
        m_words.push_back(std::string(1, '\0'));
        m_words.push_back(impl.Name().c_str());
        m_words.push_back(m_words.back().substr(m_words.back().find('.') + 1));
        const SRqHndlrMapEntry* entry = impl.GetFirstRqHndlrEntry();
        for (; entry && entry->kind != eKindEnd; ++entry)
            m_words.push_back(entry->name);
    }

    unsigned Below(unsigned bound) { return static_cast<unsigned>(m_random() % bound); }

    BString Name()
    {
        std::string name = m_words[Below(static_cast<unsigned>(m_words.size()))];
        for (unsigned more = Below(4); more > 0; --more) {
            name += Below(8) ? "." : "";
            name += m_words[Below(static_cast<unsigned>(m_words.size()))];
        }
        if (!name.empty() && Below(8) == 0)
            name[Below(static_cast<unsigned>(name.size()))] = static_cast<char>(Below(256));
        return BString(name.data(), static_cast<unsigned>(name.size()));
    }

    BObjectIdentifier Oid()
    {
        static constexpr unsigned kArcs[] = {0, 1, 2, 3, 4, 7, 9, 15, 30, 31, 77, ~0u};
        BObjectIdentifier oid = m_oid;
        if (Below(4) == 0)
            oid.Truncate(Below(oid.Length() + 1));
        for (unsigned more = Below(4); more > 0; --more)
            oid.Append(kArcs[Below(sizeof kArcs / sizeof *kArcs)]);
        return oid;
    }

private:
    BObjectIdentifier m_oid;
    std::mt19937 m_random;
    std::vector<std::string> m_words;
};

bool IsScalar(const BMibImpl& impl) { return impl.ImplKind() == eImplScalar; }

// What is told of an identifier; "none" when nothing is and nothing was written.
std::string TextAt(const IMIBInfo& info, const BObjectIdentifier& oid)
{
    BMibObject object;
    object.syntaxName = BString("left");
    const int result = info.GetObjParams(oid, object);
    if (result == 0)
        return InfoText(object);
    EXPECT_EQ(kMibInfoNotFound, result);
    EXPECT_EQ("0    0 'left' 0", InfoText(object));
    return "none";
}

// Whether the name was found.
bool CheckName(const BMibImpl& impl, const IMIBInfo& info, const BString& name)
{
    BObjectIdentifier oid = MakeOid("9.9");
    BMibObject byName;
    byName.syntaxName = BString("left");
    const int result = info.Name2Oid(name, oid);
    EXPECT_EQ(result, info.GetObjParams(name, byName));
    BString module, object, suffix;
    const bool isName = BMibInfo::SplitName(name, module, object, suffix);
    if (result != 0) {
        EXPECT_EQ(kMibInfoNotFound, result);
        EXPECT_EQ(MakeOid("9.9"), oid) << "unchanged";
        EXPECT_EQ(nullptr, byName.info);
        EXPECT_FALSE(info.IsLeaf(name));
        return false;
    }
    EXPECT_TRUE(isName);
    EXPECT_EQ(InfoText(byName), TextAt(info, oid));
    EXPECT_EQ(oid, byName.oid);
    // The suffix changes nothing.
    BObjectIdentifier plain;
    EXPECT_EQ(0, info.Name2Oid(BString(name.c_str(), name.length() - suffix.length()), plain));
    EXPECT_EQ(oid, plain);
    if (!IsScalar(impl)) {
        BObjectIdentifier again;
        EXPECT_EQ(0, info.Name2Oid(byName.name, again));
        EXPECT_TRUE(again == oid || byName.name.c_str()[0] < 'a') << "a joined name's module";
        EXPECT_EQ(byName.syntax != eMibSyntaxNotLeaf, info.IsLeaf(oid));
    }
    return true;
}

// Whether something is served there.
bool CheckOid(const BMibImpl& impl, const IMIBInfo& info, const BObjectIdentifier& oid)
{
    const std::string text = TextAt(info, oid);
    if (text == "none") {
        EXPECT_FALSE(info.IsLeaf(oid));
        return false;
    }
    BMibObject object;
    object.syntaxName = BString("left");
    EXPECT_EQ(0, info.GetObjParams(oid, object));
    EXPECT_EQ(&info, object.info);
    if (IsScalar(impl))
        return true;
    EXPECT_TRUE(object.oid.IsStartingSubOidOf(oid));
    EXPECT_EQ(text, TextAt(info, object.oid)) << "the object's own identifier";
    BObjectIdentifier byName;
    EXPECT_EQ(0, info.Name2Oid(object.name, byName));
    EXPECT_EQ(object.oid, byName);
    BOidArray leaves;
    EXPECT_EQ(0, info.GetLeafList(leaves));
    EXPECT_EQ(info.IsLeaf(object.oid), leaves.Find(object.oid) >= 0);
    EXPECT_EQ(object.syntax != eMibSyntaxNotLeaf, info.IsLeaf(object.oid));
    return true;
}

// One implementation of every kind.
std::vector<std::unique_ptr<BMibImpl>> EveryKind(BMib2System& record)
{
    std::vector<std::unique_ptr<BMibImpl>> impls;
    impls.emplace_back(new CInfoGroup);
    impls.emplace_back(new CInfoTable);
    impls.emplace_back(new CInfoRow);
    impls.emplace_back(new CInfoPlain);
    for (SRqHndlrMapEntry* map : {CInfoScalar::s_noColumn, CInfoScalar::s_column,
                                  CInfoScalar::s_allOnes, CInfoScalar::s_empty})
        impls.emplace_back(new CInfoScalar("INFO-MIB.theScalar", MakeOid("1.3.9"), map));
    impls.emplace_back(new CSystemV2(record));
    impls.emplace_back(new CSysORTableV2(record));
    return impls;
}

TEST(MibInfoProperties, RandomNamesAndIdentifiersGiveConsistentAnswers)
{
    BMib2System record;
    unsigned seed = 1;
    for (const auto& impl : EveryKind(record)) {
        SCOPED_TRACE(impl->Name().c_str());
        CGuesses guesses(*impl, seed++);
        const IMIBInfo& info = *impl->GetIMibInfo();
        unsigned names = 0, oids = 0;
        for (int i = 0; i < 2000 && !testing::Test::HasFailure(); ++i) {
            const BString name = guesses.Name();
            names += CheckName(*impl, info, name);
            ASSERT_FALSE(testing::Test::HasFailure()) << "name " << name.c_str();
            const BObjectIdentifier oid = guesses.Oid();
            oids += CheckOid(*impl, info, oid);
            ASSERT_FALSE(testing::Test::HasFailure()) << "identifier " << oid.ToString().c_str();
            int value;
            BString label;
            if (info.GetEnumValue(name, guesses.Name(), value)) {
                EXPECT_EQ(1, info.GetEnumLabel(name, value, label));
            }
            EXPECT_FALSE(info.IsTable(name) && !info.IsTable(impl->Oid()));
        }
        EXPECT_GT(names, 20u) << "too few names were found to have checked anything";
        EXPECT_LT(names, 1900u);
        EXPECT_GT(oids, 100u);
        EXPECT_LT(oids, 1990u);
    }
}

// Without memory an answer is whole or none.

TEST(MibInfoMemory, NameIsNotFoundWithoutMemory)
{
    CInfoGroup group;
    const IMIBInfo& info = *group.GetIMibInfo();
    const struct {
        const char* name;
        const char* oid; // null: never found
    } kRows[] = {
        {"INFO-MIB.grpInt.0", "1.3.6.1.4.1.5.1"},
        {"INFO-MIB.grp", "1.3.6.1.4.1.5"},
        {"INFO-MIB.joined", "1.3.6.1.4.1.5.31"},
        {"OTHER-MIB.borrowed", "1.3.6.1.4.1.5.30"},
        {"OTHER-MIB.grpInt", nullptr},
        {"OTHER-MIB.grp", nullptr},
        {"grpInt.x", nullptr},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.name);
        const BString name(row.name);
        const BObjectIdentifier before = MakeOid("9.9");
        const BObjectIdentifier expected = row.oid ? MakeOid(row.oid) : before;
        EXPECT_LT(0u,
                  SweepAllocations([] { return MakeOid("9.9"); },
                                   [&](BObjectIdentifier& oid) { return info.Name2Oid(name, oid); },
                                   [&](const BObjectIdentifier& oid, int result) {
                                       EXPECT_TRUE(result == kMibInfoNotFound || row.oid);
                                       EXPECT_EQ(result ? before : expected, oid);
                                   }));
    }
}

TEST(MibInfoMemory, ParametersAreWholeOrUntouched)
{
    CInfoGroup group;
    const IMIBInfo& info = *group.GetIMibInfo();
    for (const char* dotted : {"1.3.6.1.4.1.5", "1.3.6.1.4.1.5.14.0", "1.3.6.1.4.1.5.16"}) {
        SCOPED_TRACE(dotted);
        const BObjectIdentifier oid = MakeOid(dotted);
        const auto make = [] {
            BMibObject object;
            object.syntaxName = BString("left");
            return object;
        };
        const std::string before = InfoText(make()), after = TextAt(info, oid);
        EXPECT_LT(0u, SweepAllocations(
                          make, [&](BMibObject& object) { return info.GetObjParams(oid, object); },
                          [&](const BMibObject& object, int result) {
                              EXPECT_TRUE(result == 0 || result == kMibInfoNotFound);
                              EXPECT_EQ(result ? before : after, InfoText(object));
                          }));
    }
}

TEST(MibInfoMemory, ListsHoldNoEmptyNames)
{
    CInfoTable table;
    const IMIBInfo& info = *table.GetIMibInfo();
    const auto check = [](const auto& list, int result) {
        EXPECT_EQ(result == 0, list.Count() == 4);
        EXPECT_TRUE(result == 0 || result == kMibInfoNotFound);
    };
    EXPECT_LT(0u, SweepAllocations([] { return BOidArray(); },
                                   [&](BOidArray& list) { return info.GetLeafList(list); }, check));
    EXPECT_LT(0u, SweepAllocations([] { return BStringArray(); },
                                   [&](BStringArray& list) { return info.GetLeafList(list); },
                                   [&](const BStringArray& list, int result) {
                                       check(list, result);
                                       for (unsigned i = 0; i < list.Count(); ++i)
                                           EXPECT_FALSE(list[i].empty());
                                   }));
}

TEST(MibInfoMemory, LabelThatFindsNoMemoryIsNone)
{
    CInfoTable table;
    const IMIBInfo& info = *table.GetIMibInfo();
    const BString column("tabStatus");
    EXPECT_LT(0u,
              SweepAllocations([] { return BString("012345"); },
                               [&](BString& label) { return info.GetEnumLabel(column, 1, label); },
                               [](const BString& label, int result) {
                                   EXPECT_STREQ(result ? "active" : "012345", label.c_str());
                               }));
}

// A table that minds being asked by two at once.
class CCountingTable : public CInfoTable {
public:
    int NextIndex(unsigned, unsigned, const BObjectIdentifier&,
                  BObjectIdentifier& nextIndex) override
    {
        const unsigned count = m_count;
        std::this_thread::yield();
        m_count = count + 1;
        return nextIndex.Set(m_count);
    }
    unsigned m_count = 0;
};

TEST(MibInfoThreads, RowsAreAskedForOneAtATime)
{
    CCountingTable table;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&table] {
            const BObjectIdentifier first;
            BObjectIdentifier next;
            for (int k = 0; k < 250; ++k)
                EXPECT_EQ(1, table.GetIMibInfo()->NextInstanceInColumn(1, BString("tab"), 2, first,
                                                                       next));
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(1000u, table.m_count);
}

TEST(MibInfoThreads, RowIsAskedForWhenARequestIsDoneWithTheTable)
{
    CCountingTable table;
    std::atomic<bool> done{false};
    std::thread asks;
    {
        TMutexLock request(table.Mutex());
        asks = std::thread([&] {
            BObjectIdentifier next;
            table.GetIMibInfo()->NextInstanceInColumn(1, BString("tab"), 2, BObjectIdentifier(),
                                                      next);
            done = true;
        });
        GiveOthersTime();
        EXPECT_FALSE(done);
        EXPECT_EQ(0u, table.m_count);
        // A handler that holds the mutex itself may ask.
        BObjectIdentifier next;
        EXPECT_EQ(1, table.GetIMibInfo()->NextInstanceInColumn(1, BString("tab"), 2,
                                                               BObjectIdentifier(), next));
    }
    asks.join();
    EXPECT_EQ(2u, table.m_count);
}

// Says now one thing of its object, now another.
class CTurncoat : public CInfoPlain {
public:
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return m_map; }
    const SConstraintMapEntry* GetConstraintMap() const override
    {
        static const SConstraintMapEntry s_truth[] = {{2, 1, cszTruthValue, 0, 0}, kConstraintEnd};
        static const SConstraintMapEntry s_range[] = {{2, 1, cszTimeInterval, 0, 0},
                                                      kConstraintEnd};
        return m_turned ? s_truth : s_range;
    }
    bool m_turned = false;

private:
    mutable SRqHndlrMapEntry m_map[2] = {InfoRow(1, "ptTruth", 2, 4, 1), kRqEnd};
};

TEST(MibInfoThreads, SyntaxAndItsNameAreOfOneConstraintWhileAModuleIsRegistered)
{
    CTurncoat impl;
    impl.ResolveConstraints();
    std::atomic<bool> stop{false};
    std::thread registers([&] {
        while (!stop) {
            impl.m_turned = !impl.m_turned;
            impl.ResolveConstraints();
        }
    });
    for (int i = 0; i < 20000 && !testing::Test::HasFailure(); ++i) {
        BMibObject object;
        EXPECT_EQ(0, impl.GetIMibInfo()->GetObjParams(MakeOid("1.3.8.1"), object));
        const bool truth = object.syntax == eMibSyntaxEnumerated;
        EXPECT_STREQ(truth ? "TruthValue" : "TimeInterval", object.syntaxName.c_str());
    }
    stop = true;
    registers.join();
}

} // namespace
} // namespace VLK
