// What is told of the objects of the examples, which consoles go by.
#include "Modules.h"

#include <gtest/gtest.h>
#include <map>

namespace VLK::Test {
namespace {

struct SObject {
    unsigned column;
    const char* name;
    int syntax;
    const char* syntaxName;
    int access;
    std::vector<const char*> labels; // of the values from 1 on
};

struct SImpl {
    BMibImpl* impl;
    const char* name; // behind "EXAMPLE-MIB."
    const char* oid;  // behind the root of the examples
    int kind;
    std::vector<SObject> objects;
};

const std::vector<const char*> kRowStatus{"active",      "notInService",  "notReady",
                                          "createAndGo", "createAndWait", "destroy"};
const std::vector<const char*> kStorage{"other", "volatile", "nonVolatile", "permanent",
                                        "readOnly"};
const std::vector<const char*> kEntryStatus{"valid", "createRequest", "underCreation", "invalid"};

const std::vector<SObject> kThermostat{
    {1, "thermostatTarget", eAsnInteger, "INTEGER", eRqReadWrite, {}},
    {2, "thermostatMode", eMibSyntaxEnumerated, "Enum", eRqReadWrite, {"off", "heat", "cool"}},
};
const std::vector<SObject> kSensors{
    {1, "sensorIndex", eAsnInteger, "INTEGER", eRqNotAccessible, {}},
    {2, "sensorName", eMibSyntaxDisplayString, "DisplayString", eRqReadOnly, {}},
    {3, "sensorReading", eAsnInteger, "INTEGER", eRqReadOnly, {}},
};
const std::vector<SObject> kDoors{
    {1, "doorIndex", eAsnInteger, "INTEGER", eRqNotAccessible, {}},
    {2, "doorName", eMibSyntaxDisplayString, "DisplayString", eRqReadCreate, {}},
    {3, "doorOpenSeconds", eAsnInteger, "INTEGER", eRqReadCreate, {}},
    {4, "doorStorage", eMibSyntaxEnumerated, "StorageType", eRqReadCreate, kStorage},
    {5, "doorStatus", eMibSyntaxEnumerated, "RowStatus", eRqReadCreate, kRowStatus},
};
const std::vector<SObject> kMeters{
    {1, "meterIndex", eAsnInteger, "INTEGER", eRqNotAccessible, {}},
    {2, "meterInterval", eAsnInteger, "INTEGER", eRqReadWrite, {}},
    {3, "meterOwner", eMibSyntaxDisplayString, "OwnerString", eRqReadWrite, {}},
    {4, "meterStatus", eMibSyntaxEnumerated, "EntryStatus", eRqReadWrite, kEntryStatus},
};
const std::vector<SObject> kFan{
    {2, "fanName", eMibSyntaxDisplayString, "DisplayString", eRqReadOnly, {}},
    {3, "fanSpeed", eAsnGauge32, "Gauge32", eRqReadWrite, {}},
};

BString Text(const std::string& text) { return BString(text.c_str()); }

class ModuleInfo : public testing::Test {
protected:
    static BObjectIdentifier Oid(const std::string& name)
    {
        return MakeOid((kExamplesRoot + name).c_str());
    }
    static BObjectIdentifier ObjectOid(const SImpl& impl, const SObject& object)
    {
        return Oid(impl.oid + ("." + std::to_string(object.column)));
    }
    static bool IsTable(const SImpl& impl)
    {
        return impl.kind == eMibObjectTable || impl.kind == eMibObjectRow;
    }
    static std::string Describe(const BMibObject& object)
    {
        return std::to_string(object.kind) + " " + TextOf(object.oid) + " " + object.name.c_str() +
               " " + object.module.c_str() + " " + std::to_string(object.syntax) + " " +
               object.syntaxName.c_str() + " " + std::to_string(object.access);
    }
    static std::string Expected(const SImpl& impl, const SObject& object)
    {
        const int kind = IsTable(impl) ? eMibObjectColumn : eMibObjectLeaf;
        return std::to_string(kind) + " " + TextOf(ObjectOid(impl, object)) + " " + object.name +
               " EXAMPLE-MIB " + std::to_string(object.syntax) + " " + object.syntaxName + " " +
               std::to_string(object.access);
    }
    // The indexes that the information walks in a column.
    static std::string Rows(const SImpl& impl, unsigned column)
    {
        std::string rows;
        BObjectIdentifier at, next;
        while (impl.impl->GetIMibInfo()->NextInstanceInColumn(0, BString(impl.name), column, at,
                                                              next)) {
            rows += TextOf(next) + " ";
            at = next;
        }
        return rows;
    }

    Modules m_agent;
    const std::vector<SImpl> m_impls{
        {m_agent.thermostat.GetImplAt(0), "thermostat", "1", eMibObjectScalarGroup, kThermostat},
        {m_agent.sensors.GetImplAt(0), "sensorTable", "2.1", eMibObjectTable, kSensors},
        {m_agent.doors.GetImplAt(0), "doorTable", "3.1", eMibObjectTable, kDoors},
        {m_agent.meters.GetImplAt(0), "meterTable", "4.1", eMibObjectTable, kMeters},
        {m_agent.fans.GetImplAt(0), "fanTable", "5.1", eMibObjectTable, {}},
        // A row tells of its columns behind its own identifier, index included.
        {m_agent.fans.GetImplAt(1), "fan", "5.1.2.1", eMibObjectRow, kFan},
        {m_agent.fans.GetImplAt(2), "fan", "5.1.2.2", eMibObjectRow, kFan},
    };
};

} // namespace

TEST_F(ModuleInfo, IsThereForEveryImplementationOfEveryModule)
{
    size_t count = 0;
    for (BMibImplGroup* group : m_agent.Groups()) {
        for (int i = 0; i < group->GetNumImpls(); ++i, ++count)
            EXPECT_EQ(group->GetImplAt(i), m_impls.at(count).impl);
    }
    EXPECT_EQ(count, m_impls.size());
    EXPECT_EQ(m_agent.parameters.GetIMibInfo(), nullptr) << "a subtree served by hand has none";
}

TEST_F(ModuleInfo, FindsEveryObjectByNameAndIdentifier)
{
    for (const SImpl& impl : m_impls) {
        const IMIBInfo& info = *impl.impl->GetIMibInfo();
        for (const SObject& object : impl.objects) {
            SCOPED_TRACE(object.name);
            const std::string name = object.name;
            for (const std::string& form :
                 {name, "EXAMPLE-MIB." + name, name + ".0", "EXAMPLE-MIB." + name + ".7"}) {
                BObjectIdentifier oid;
                EXPECT_EQ(info.Name2Oid(Text(form), oid), 0) << form;
                EXPECT_EQ(oid, ObjectOid(impl, object)) << form;
                BMibObject params;
                EXPECT_EQ(info.GetObjParams(Text(form), params), 0) << form;
                EXPECT_EQ(Describe(params), Expected(impl, object)) << form;
            }
            BObjectIdentifier oid = ObjectOid(impl, object);
            for (int length = 0; length < 2; ++length, oid.Append(7u)) {
                BMibObject params;
                EXPECT_EQ(info.GetObjParams(oid, params), 0);
                EXPECT_EQ(Describe(params), Expected(impl, object));
                EXPECT_EQ(info.IsLeaf(oid), length == 0);
            }
            BObjectIdentifier untouched;
            EXPECT_EQ(info.Name2Oid(Text("OTHER-MIB." + name), untouched), kMibInfoNotFound);
            EXPECT_TRUE(info.IsLeaf(Text(name)));
            EXPECT_FALSE(info.IsTable(Text(name)));
            EXPECT_FALSE(info.IsTable(ObjectOid(impl, object)));
        }
    }
}

TEST_F(ModuleInfo, TellsOfTheImplementationItself)
{
    const std::map<int, std::string> kindNames{
        {eMibObjectScalarGroup, "scalarGroup"}, {eMibObjectTable, "table"}, {eMibObjectRow, "row"}};
    for (const SImpl& impl : m_impls) {
        SCOPED_TRACE(impl.name);
        const IMIBInfo& info = *impl.impl->GetIMibInfo();
        BMibObject params;
        EXPECT_EQ(info.GetObjParams(Oid(impl.oid), params), 0);
        EXPECT_EQ(Describe(params), std::to_string(impl.kind) + " " + kExamplesRoot + impl.oid +
                                        " " + impl.name + " EXAMPLE-MIB 231 " +
                                        kindNames.at(impl.kind) + " 0");
        BObjectIdentifier oid;
        EXPECT_EQ(info.Name2Oid(Text(impl.name), oid), 0);
        EXPECT_EQ(oid, Oid(impl.oid));
        EXPECT_EQ(info.IsTable(Oid(impl.oid)), IsTable(impl));
        EXPECT_EQ(info.IsTable(Text(impl.name)), IsTable(impl));
        EXPECT_FALSE(info.IsLeaf(Oid(impl.oid)));
        EXPECT_FALSE(info.IsLeaf(Text(impl.name)));
    }
}

TEST_F(ModuleInfo, ListsTheObjectsInTheirOrder)
{
    for (const SImpl& impl : m_impls) {
        BOidArray oids;
        BStringArray names;
        EXPECT_EQ(impl.impl->GetIMibInfo()->GetLeafList(oids), 0);
        EXPECT_EQ(impl.impl->GetIMibInfo()->GetLeafList(names), 0);
        ASSERT_EQ(oids.Count(), impl.objects.size()) << impl.name;
        ASSERT_EQ(names.Count(), impl.objects.size()) << impl.name;
        for (unsigned i = 0; i < oids.Count(); ++i) {
            EXPECT_EQ(oids[i], ObjectOid(impl, impl.objects[i]));
            EXPECT_STREQ(names[i].c_str(), impl.objects[i].name);
        }
    }
}

TEST_F(ModuleInfo, LabelsTheValuesOfEnumerationsOnly)
{
    for (const SImpl& impl : m_impls) {
        const IMIBInfo& info = *impl.impl->GetIMibInfo();
        for (const SObject& object : impl.objects) {
            SCOPED_TRACE(object.name);
            const int count = static_cast<int>(object.labels.size());
            for (int i = 0; i < count; ++i) {
                BString label;
                EXPECT_EQ(info.GetEnumLabel(Text(object.name), i + 1, label), 1);
                EXPECT_STREQ(label.c_str(), object.labels[static_cast<size_t>(i)]);
                int value = 0;
                EXPECT_EQ(info.GetEnumValue(Text(object.name), label, value), 1);
                EXPECT_EQ(value, i + 1);
            }
            BString label;
            EXPECT_EQ(info.GetEnumLabel(Text(object.name), 0, label), 0);
            EXPECT_EQ(info.GetEnumLabel(Text(object.name), count + 1, label), 0);
        }
    }
}

TEST_F(ModuleInfo, WalksTheRowsOfTables)
{
    ASSERT_EQ(m_agent.Set({"3.1.5.7 i 5", "4.1.4.5 i 2", "4.1.4.6 i 2"}), 0);
    const std::map<std::string, std::string> rows{{"doorTable", "1 2 7 "}, {"meterTable", "5 6 "}};
    for (const SImpl& impl : m_impls) {
        const auto expected = rows.find(impl.name);
        for (const SObject& object : impl.objects)
            EXPECT_EQ(Rows(impl, object.column), expected != rows.end() ? expected->second : "")
                << object.name;
    }
}

} // namespace VLK::Test
