// What is told of the objects of whole modules, registered as an agent has them:
// the system group, the sysORTable and row-status tables.
#include "tests/registry/InfoOwners.h"

#include <vkmibh/handler.h>
#include <vkmibh/system.h>

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace VLK {
namespace {

using Test::MakeOid;
using Test::TextOf;

struct SObject {
    unsigned column;
    const char* name;
    int syntax;
    const char* syntaxName;
    int access;
    EMaxAccess maxAccess;
};

// An implementation, and what is to be told of it.
struct SModule {
    BMibImpl* impl;
    const char* name; // "MODULE.object"
    const char* oid;
    int kind; // of its objects
    std::vector<SObject> objects;
};

const std::vector<SObject> kSystemObjects = {
    {1, "sysDescr", eMibSyntaxDisplayString, "DisplayString", 3, eMaxAccessReadOnly},
    {2, "sysObjectID", eAsnObjectId, "OBJECT IDENTIFIER", 3, eMaxAccessReadOnly},
    {3, "sysUpTime", eAsnTimeTicks, "TimeTicks", 3, eMaxAccessReadOnly},
    {4, "sysContact", eMibSyntaxDisplayString, "DisplayString", 4, eMaxAccessReadWrite},
    {5, "sysName", eMibSyntaxDisplayString, "DisplayString", 4, eMaxAccessReadWrite},
    {6, "sysLocation", eMibSyntaxDisplayString, "DisplayString", 4, eMaxAccessReadWrite},
    {7, "sysServices", eAsnInteger, "INTEGER", 3, eMaxAccessReadOnly},
    {8, "sysORLastChange", eAsnTimeTicks, "TimeTicks", 3, eMaxAccessReadOnly},
};

const std::vector<SObject> kSysORObjects = {
    {1, "sysORIndex", eAsnInteger, "INTEGER", 0, eMaxAccessNone},
    {2, "sysORID", eAsnObjectId, "OBJECT IDENTIFIER", 3, eMaxAccessReadOnly},
    {3, "sysORDescr", eMibSyntaxDisplayString, "DisplayString", 3, eMaxAccessReadOnly},
    {4, "sysORUpTime", eAsnTimeTicks, "TimeTicks", 3, eMaxAccessReadOnly},
};

const std::vector<SObject> kDoorObjects = {
    {1, "doorIndex", eAsnGauge32, "Gauge32", 2, eMaxAccessNone},
    {2, "doorName", eMibSyntaxDisplayString, "DisplayString", 5, eMaxAccessReadCreate},
    {3, "doorStatus", eMibSyntaxEnumerated, "RowStatus", 5, eMaxAccessReadCreate},
    {4, "doorEntryStatus", eMibSyntaxEnumerated, "EntryStatus", 5, eMaxAccessReadCreate},
    {5, "doorStorage", eMibSyntaxEnumerated, "StorageType", 5, eMaxAccessReadCreate},
    {6, "doorState", eMibSyntaxEnumerated, "DoorState", 3, eMaxAccessReadOnly},
    {7, "doorBareStatus", eMibSyntaxEnumerated, "Enum", 5, eMaxAccessReadCreate},
    {8, "doorCode", eAsnOctetString, "OCTET STRING", 1, eMaxAccessNone},
};

// Rows 3 and 7. Registration resolves the constraints.
template <class Base>
class CDoors : public Base {
public:
    CDoors(const char* name, const char* oid) : Base(BString(name), MakeOid(oid)) {}
    SRqHndlrMapEntry* GetRqHndlrMap() const override
    {
        static SRqHndlrMapEntry s_map[] = {
            InfoRow(1, "doorIndex", eAsnGauge32, eRqNotAccessible, eKindUnsigned),
            InfoRow(2, "doorName", eAsnOctetString, eRqReadCreate, eKindDisplayString),
            InfoRow(3, "doorStatus", eAsnInteger, eRqReadCreate, eKindRowStatus),
            InfoRow(4, "doorEntryStatus", eAsnInteger, eRqReadCreate, eKindEntryStatus),
            InfoRow(5, "doorStorage", eAsnInteger, eRqReadCreate, eKindInteger),
            InfoRow(6, "doorState", eAsnInteger, eRqReadOnly, eKindEnumerated),
            InfoRow(7, "doorBareStatus", eAsnInteger, eRqReadCreate, eKindRowStatus),
            InfoRow(8, "doorCode", eAsnOctetString, eRqWriteOnly, eKindOctetString),
            kRqEnd,
        };
        return s_map;
    }
    const SConstraintMapEntry* GetConstraintMap() const override
    {
        static const SConstraintMapEntry s_constraints[] = {
            {eConstraintRefined, 2, cszDisplayString, 1, 32},
            {eConstraintConvention, 3, cszRowStatus, 0, 0},
            {eConstraintRefined, 4, cszEntryStatus, 0, 0},
            {eConstraintConvention, 5, cszStorageType, 0, 0},
            {eConstraintEnumeration, 6, "DoorState", 0, 0},
            {eConstraintItem, 6, "open", 1, 0},
            {eConstraintItem, 6, "shut", 2, 0},
            kConstraintEnd,
        };
        return s_constraints;
    }
    int NextIndex(unsigned, unsigned, const BObjectIdentifier& index,
                  BObjectIdentifier& nextIndex) override
    {
        const unsigned row = index.Length() ? index[0] : 0;
        return row < 7 && nextIndex.Set(row < 3 ? 3u : 7u);
    }
};

class MibInfoModules : public testing::Test {
protected:
    MibInfoModules()
    {
        for (const SModule& module : m_modules)
            EXPECT_TRUE(m_handler.RegisterSubtreeHandler(module.impl)) << module.name;
        for (const char* id : {"1.3.6.1.6.3.1", "1.3.6.1.6.3.16.2.2.1", "1.3.6.1.6.3.10.3.1.1"})
            EXPECT_TRUE(m_record.InsertORRow(MakeOid(id), BString(id)));
    }

    static BObjectIdentifier ObjectOid(const SModule& module, const SObject& object)
    {
        BObjectIdentifier oid = MakeOid(module.oid);
        oid.Append(object.column);
        return oid;
    }

    // The indexes of a column's rows, as the information walks them.
    static std::string Rows(BMibImpl& impl, const char* table, unsigned column)
    {
        std::string rows;
        BObjectIdentifier at, next;
        while (impl.GetIMibInfo()->NextInstanceInColumn(1, BString(table), column, at, next)) {
            rows += TextOf(next) + " ";
            at = next;
        }
        return rows;
    }

    BMib2System m_record;
    CSystemV2 m_system{m_record};
    CSysORTableV2 m_sysOR{m_record};
    CDoors<BMibTableImpl> m_doors{"DOOR-MIB.doorTable", "1.3.6.1.4.1.32473.1.1"};
    CDoors<BMibTableImplEx> m_doorsEx{"DOOR-MIB.doorTable", "1.3.6.1.4.1.32473.2.1"};
    CDoors<BMibTableImplEx2> m_doorsEx2{"DOOR-MIB.doorTable", "1.3.6.1.4.1.32473.3.1"};
    BMibHandler m_handler{nullptr};
    const std::vector<SModule> m_modules = {
        {&m_system, "SNMPv2-MIB.system", "1.3.6.1.2.1.1", eMibObjectLeaf, kSystemObjects},
        {&m_sysOR, "SNMPv2-MIB.sysORTable", "1.3.6.1.2.1.1.9", eMibObjectColumn, kSysORObjects},
        {&m_doors, "DOOR-MIB.doorTable", "1.3.6.1.4.1.32473.1.1", eMibObjectColumn, kDoorObjects},
        {&m_doorsEx, "DOOR-MIB.doorTable", "1.3.6.1.4.1.32473.2.1", eMibObjectColumn, kDoorObjects},
        {&m_doorsEx2, "DOOR-MIB.doorTable", "1.3.6.1.4.1.32473.3.1", eMibObjectColumn,
         kDoorObjects},
    };
};

TEST_F(MibInfoModules, EveryObjectIsFoundByNameByOidAndByInstance)
{
    for (const SModule& module : m_modules) {
        const IMIBInfo& info = *module.impl->GetIMibInfo();
        const std::string moduleName(module.name, std::string(module.name).find('.'));
        for (const SObject& object : module.objects) {
            SCOPED_TRACE(std::string(module.oid) + " " + object.name);
            const BObjectIdentifier oid = ObjectOid(module, object);
            const std::string expected = std::to_string(module.kind) + " " + TextOf(oid) + " " +
                                         object.name + " " + moduleName + " " +
                                         std::to_string(object.syntax) + " '" + object.syntaxName +
                                         "' " + std::to_string(object.access);
            const std::string plain(object.name), joined = moduleName + "." + object.name;
            for (const std::string& name : {plain, joined, plain + ".0", joined + ".7.1"}) {
                BObjectIdentifier found;
                EXPECT_EQ(0, info.Name2Oid(BString(name.c_str()), found)) << name;
                EXPECT_EQ(oid, found) << name;
                BMibObject params;
                EXPECT_EQ(0, info.GetObjParams(BString(name.c_str()), params)) << name;
                EXPECT_EQ(expected, InfoText(params)) << name;
            }
            for (const char* instance : {"", ".0", ".7", ".7.1.4294967295"}) {
                BMibObject params;
                const std::string dotted = TextOf(oid) + instance;
                EXPECT_EQ(0, info.GetObjParams(MakeOid(dotted.c_str()), params)) << dotted;
                EXPECT_EQ(expected, InfoText(params)) << dotted;
                EXPECT_EQ(&info, params.info);
                EXPECT_EQ(object.maxAccess, MaxAccessOf(params.access));
            }
            BObjectIdentifier found;
            EXPECT_EQ(kMibInfoNotFound,
                      info.Name2Oid(BString(("OTHER-MIB." + plain).c_str()), found));
        }
    }
}

TEST_F(MibInfoModules, ImplementationsAreToldOfThemselves)
{
    const char* kExpected[] = {
        "5 1.3.6.1.2.1.1 system SNMPv2-MIB 231 'scalarGroup' 0",
        "3 1.3.6.1.2.1.1.9 sysORTable SNMPv2-MIB 231 'table' 0",
        "3 1.3.6.1.4.1.32473.1.1 doorTable DOOR-MIB 231 'table' 0",
        "3 1.3.6.1.4.1.32473.2.1 doorTable DOOR-MIB 231 'table' 0",
        "3 1.3.6.1.4.1.32473.3.1 doorTable DOOR-MIB 231 'table' 0",
    };
    for (std::size_t i = 0; i < m_modules.size(); ++i) {
        const IMIBInfo& info = *m_modules[i].impl->GetIMibInfo();
        const std::string full = m_modules[i].name, object = full.substr(full.find('.') + 1);
        for (const std::string& name : {full, object, object + ".1"}) {
            BMibObject params;
            EXPECT_EQ(0, info.GetObjParams(BString(name.c_str()), params)) << name;
            EXPECT_EQ(kExpected[i], InfoText(params)) << name;
        }
    }
    BMibObject params;
    EXPECT_EQ(kMibInfoNotFound,
              m_system.GetIMibInfo()->GetObjParams(MakeOid("1.3.6.1.2.1.1.9"), params))
        << "the table's, which stands beside the group";
}

TEST_F(MibInfoModules, LeavesAreTheObjectsAndNothingElse)
{
    for (const SModule& module : m_modules) {
        const IMIBInfo& info = *module.impl->GetIMibInfo();
        BOidArray oids;
        BStringArray names;
        EXPECT_EQ(0, info.GetLeafList(oids));
        EXPECT_EQ(0, info.GetLeafList(names));
        ASSERT_EQ(module.objects.size(), oids.Count());
        ASSERT_EQ(module.objects.size(), names.Count());
        for (unsigned i = 0; i < oids.Count(); ++i) {
            const SObject& object = module.objects[i];
            SCOPED_TRACE(object.name);
            EXPECT_EQ(ObjectOid(module, object), oids[i]);
            EXPECT_STREQ(object.name, names[i].c_str());
            EXPECT_TRUE(info.IsLeaf(oids[i]));
            EXPECT_TRUE(info.IsLeaf(names[i]));
            EXPECT_FALSE(info.IsTable(oids[i]));
            EXPECT_FALSE(info.IsTable(names[i]));
            BObjectIdentifier instance = oids[static_cast<int>(i)];
            instance.Append(0u);
            EXPECT_FALSE(info.IsLeaf(instance));
            EXPECT_TRUE(info.IsLeaf(BString((std::string(object.name) + ".0").c_str())));
        }
        EXPECT_FALSE(info.IsLeaf(MakeOid(module.oid)));
        EXPECT_FALSE(info.IsLeaf(BString(module.name)));
    }
}

TEST_F(MibInfoModules, TablesAreTablesAndTheGroupIsNone)
{
    for (const SModule& module : m_modules) {
        const IMIBInfo& info = *module.impl->GetIMibInfo();
        const bool isTable = module.kind == eMibObjectColumn;
        const std::string full = module.name, object = full.substr(full.find('.') + 1);
        EXPECT_EQ(isTable, info.IsTable(MakeOid(module.oid))) << full;
        for (const std::string& name : {full, object, "OTHER-MIB." + object, object + ".1"})
            EXPECT_EQ(isTable, info.IsTable(BString(name.c_str()))) << name;
    }
    EXPECT_FALSE(m_sysOR.GetIMibInfo()->IsTable(MakeOid("1.3.6.1.2.1.1")))
        << "registered without an entry arc";
    EXPECT_FALSE(m_sysOR.GetIMibInfo()->IsTable(MakeOid("1.3.6.1.2.1.1.9.1")));
    for (IMIBInfo* info :
         {m_doors.GetIMibInfo(), m_doorsEx.GetIMibInfo(), m_doorsEx2.GetIMibInfo()}) {
        BObjectIdentifier entry;
        EXPECT_EQ(0, info->Name2Oid(BString("doorTable"), entry));
        entry.Truncate(entry.Length() - 1);
        EXPECT_TRUE(info->IsTable(entry)) << "above the entry";
        entry.Truncate(entry.Length() - 1);
        EXPECT_FALSE(info->IsTable(entry));
    }
}

TEST_F(MibInfoModules, RowsAreWalkedInEveryColumn)
{
    for (const SObject& object : kSysORObjects)
        EXPECT_EQ("1 2 3 ", Rows(m_sysOR, "sysORTable", object.column)) << object.name;
    EXPECT_EQ("1 2 3 ", Rows(m_sysOR, "SNMPv2-MIB.sysORTable", 2));
    EXPECT_TRUE(m_record.RemoveORRow(2));
    EXPECT_EQ("1 3 ", Rows(m_sysOR, "sysORTable", 2));
    EXPECT_EQ("", Rows(m_sysOR, "sysORID", 2)) << "a column's name";
    EXPECT_EQ("", Rows(m_system, "system", 1)) << "no table";
    EXPECT_EQ("3 7 ", Rows(m_doors, "doorTable", 2));
    EXPECT_EQ("3 7 ", Rows(m_doorsEx, "doorTable", 3));
    EXPECT_EQ("3 7 ", Rows(m_doorsEx2, "DOOR-MIB.doorTable", 3));
}

TEST_F(MibInfoModules, EnumerationsOfRowStatusTablesHaveLabelsAndValues)
{
    const struct {
        const char* column;
        std::vector<const char*> labels; // of the values from 1 on
    } kRows[] = {
        {"doorStatus",
         {"active", "notInService", "notReady", "createAndGo", "createAndWait", "destroy"}},
        {"doorEntryStatus", {"valid", "createRequest", "underCreation", "invalid"}},
        {"doorStorage", {"other", "volatile", "nonVolatile", "permanent", "readOnly"}},
        {"doorState", {"open", "shut"}},
        {"doorBareStatus", {}}, // of the kind, but without a convention
        {"doorName", {}},
        {"doorIndex", {}},
    };
    for (IMIBInfo* info : {m_doorsEx.GetIMibInfo(), m_doorsEx2.GetIMibInfo()}) {
        for (const auto& row : kRows) {
            SCOPED_TRACE(row.column);
            const BString column(row.column);
            const int count = static_cast<int>(row.labels.size());
            for (int i = 0; i < count; ++i) {
                int value = -1;
                BString label;
                EXPECT_EQ(1, info->GetEnumValue(column, BString(row.labels[i]), value));
                EXPECT_EQ(i + 1, value);
                EXPECT_EQ(1, info->GetEnumLabel(column, value, label));
                EXPECT_STREQ(row.labels[i], label.c_str());
            }
            BString label("kept");
            for (int value : {-1, 0, count + 1})
                EXPECT_EQ(0, info->GetEnumLabel(column, value, label));
            EXPECT_EQ(BString("kept"), label);
        }
        int value = -1;
        EXPECT_EQ(1, info->GetEnumValue(BString("doorStatus"), BString("createAndGo"), value));
        EXPECT_EQ(4, value);
        EXPECT_EQ(0, info->GetEnumValue(BString("doorStatus"), BString("CreateAndGo"), value));
        EXPECT_EQ(4, value);
    }
}

// The labels that a map tells of are those that the free functions print.
TEST_F(MibInfoModules, LabelsOfConventionsAreThoseOfTheEnumerations)
{
    const IMIBInfo& info = *m_doorsEx.GetIMibInfo();
    BString label;
    for (int value = 1; info.GetEnumLabel(BString("doorStatus"), value, label); ++value)
        EXPECT_STREQ(LabelRowStatus(static_cast<ERowStatus>(value)), label.c_str());
    EXPECT_EQ(BString("destroy"), label);
    for (int value = 1; info.GetEnumLabel(BString("doorStorage"), value, label); ++value)
        EXPECT_STREQ(LabelStorageType(static_cast<EStorageType>(value)), label.c_str());
    EXPECT_EQ(BString("readOnly"), label);
}

// Before a module is registered its maps say what they say without constraints.
TEST(MibInfoUnregistered, ConventionsAreKnownFromRegistrationOn)
{
    class COwnMap : public CDoors<BMibTableImplEx> {
    public:
        using CDoors::CDoors;
        SRqHndlrMapEntry* GetRqHndlrMap() const override { return m_map; }

    private:
        mutable SRqHndlrMapEntry m_map[2] = {
            InfoRow(5, "doorStorage", eAsnInteger, eRqReadCreate, eKindInteger), kRqEnd};
    };
    COwnMap doors("DOOR-MIB.doorTable", "1.3.6.1.4.1.32473.2.1");
    BMibObject object;
    int value = -1;
    EXPECT_EQ(0, doors.GetIMibInfo()->GetObjParams(BString("doorStorage"), object));
    EXPECT_EQ(BString("INTEGER"), object.syntaxName);
    EXPECT_EQ(
        0, doors.GetIMibInfo()->GetEnumValue(BString("doorStorage"), BString("permanent"), value));
    BMibHandler handler(nullptr);
    ASSERT_TRUE(handler.RegisterSubtreeHandler(&doors));
    EXPECT_EQ(0, doors.GetIMibInfo()->GetObjParams(BString("doorStorage"), object));
    EXPECT_EQ(BString("StorageType"), object.syntaxName);
    EXPECT_EQ(eMibSyntaxEnumerated, object.syntax);
    EXPECT_EQ(
        1, doors.GetIMibInfo()->GetEnumValue(BString("doorStorage"), BString("permanent"), value));
    EXPECT_EQ(4, value);
    handler.UnregisterSubtreeHandler(&doors);
}

} // namespace
} // namespace VLK
