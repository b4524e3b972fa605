#include <vkmibh/impl.h>

#include "tests/registry/InfoOwners.h"

#include <gtest/gtest.h>
#include <string>

using namespace VLK;
using Test::MakeOid;

namespace {

constexpr int kNotFound = static_cast<int>(0x80010002u);

std::string Oid(const BMibImpl& impl, const char* name)
{
    BObjectIdentifier oid = MakeOid("9.9");
    const int result = const_cast<BMibImpl&>(impl).GetIMibInfo()->Name2Oid(BString(name), oid);
    if (result != 0) {
        EXPECT_EQ(kNotFound, result);
        EXPECT_EQ(MakeOid("9.9"), oid) << "unchanged";
        return "none";
    }
    return oid.ToString().c_str();
}

std::string Params(BMibImpl& impl, const BString& syntaxName, const char* dotted)
{
    BMibObject object;
    object.syntaxName = syntaxName;
    const int result = impl.GetIMibInfo()->GetObjParams(MakeOid(dotted), object);
    if (result != 0) {
        EXPECT_EQ(kNotFound, result);
        EXPECT_EQ(syntaxName, object.syntaxName);
        EXPECT_EQ(nullptr, object.info);
        return "none";
    }
    EXPECT_EQ(impl.GetIMibInfo(), object.info);
    return InfoText(object);
}

std::string Params(BMibImpl& impl, const char* dotted)
{
    return Params(impl, BString("left"), dotted);
}

std::string Split(const char* name)
{
    BString module("m"), object("o"), suffix("s");
    if (!BMibInfo::SplitName(BString(name), module, object, suffix))
        return "none";
    return std::string(module.c_str()) + "|" + object.c_str() + "|" + suffix.c_str();
}

} // namespace

TEST(MibInfo, NamesAreSplitIntoModuleObjectAndSuffix)
{
    EXPECT_EQ("|sysDescr|", Split("sysDescr"));
    EXPECT_EQ("SNMPv2-MIB|sysDescr|", Split("SNMPv2-MIB.sysDescr"));
    EXPECT_EQ("|sysDescr|.0", Split("sysDescr.0"));
    EXPECT_EQ("IF-MIB|ifDescr|.1.2.3", Split("IF-MIB.ifDescr.1.2.3"));
    EXPECT_EQ("|sysDescr|.", Split("sysDescr."));
    EXPECT_EQ("|a|.4294967296", Split("a.4294967296")) << "valid for an identifier";
    EXPECT_EQ("Z|z|", Split("Z.z"));
}

// CONTRACT: full stops before a part of a name make no empty parts.
TEST(MibInfo, FullStopsBeforeTheObjectMakeNoParts)
{
    EXPECT_EQ("|sysDescr|", Split(".sysDescr"));
    EXPECT_EQ("IF-MIB|ifDescr|.1", Split("IF-MIB..ifDescr.1"));
}

TEST(MibInfo, NamesThatAreNoneAreRejected)
{
    for (const char* name : {"",
                             ".",
                             "SNMPv2-MIB",
                             "SNMPv2-MIB.Sys",
                             "SNMPv2-MIB.1",
                             "1.3.6",
                             "A.B.c",
                             "-x",
                             "sysDescr.x",
                             "sysDescr.1..2",
                             "sysDescr..1",
                             "sysDescr.12345678901",
                             "M.sysDescr.0.y",
                             "1.abc",
                             "-.a",
                             "@a",
                             "[a",
                             "`a",
                             "{a",
                             "A.`",
                             "A.{",
                             "\xe4",
                             " sysDescr",
                             "sysDescr. 1",
                             "sysDescr.-1"})
        EXPECT_EQ("none", Split(name)) << name;
    BString module, object, suffix;
    EXPECT_FALSE(BMibInfo::SplitName(BString("sysDescr\0", 9), module, object, suffix));
    EXPECT_FALSE(BMibInfo::SplitName(BString("A\0.b", 4), module, object, suffix));
}

TEST(MibInfo, NameGivesTheOidOfTheObject)
{
    CInfoGroup group;
    EXPECT_EQ("1.3.6.1.4.1.5.1", Oid(group, "grpInt"));
    EXPECT_EQ("1.3.6.1.4.1.5.1", Oid(group, "INFO-MIB.grpInt"));
    EXPECT_EQ("1.3.6.1.4.1.5", Oid(group, "grp")) << "the owner's own object name";
    EXPECT_EQ("1.3.6.1.4.1.5", Oid(group, "INFO-MIB.grp"));
}

TEST(MibInfo, NameThatIsUnknownOrNoneIsNotFound)
{
    CInfoGroup group;
    for (const char* name :
         {"", "INFO-MIB", "GrpInt", "grpNone", "INFO-MIB.grpNone", "grpint", "grpInt.x"})
        EXPECT_EQ("none", Oid(group, name)) << name;
    BObjectIdentifier oid;
    EXPECT_EQ(kNotFound, BMibInfo().Name2Oid(BString("grpInt"), oid)) << "no owner";
    EXPECT_EQ(kNotFound, kMibInfoNotFound);
}

TEST(MibInfo, SuffixIsAcceptedAndDoesNotChangeTheObject)
{
    CInfoGroup group;
    EXPECT_EQ("1.3.6.1.4.1.5.1", Oid(group, "grpInt.0"));
    EXPECT_EQ("1.3.6.1.4.1.5.1", Oid(group, "INFO-MIB.grpInt.7.8"));
    EXPECT_EQ("1.3.6.1.4.1.5", Oid(group, "grp.1"));
}

TEST(MibInfo, AnotherModuleIsLookedUpOnlyInTheJoinedForm)
{
    CInfoGroup group;
    EXPECT_EQ("none", Oid(group, "OTHER-MIB.grpInt"));
    EXPECT_EQ("none", Oid(group, "OTHER-MIB.grp"));
    EXPECT_EQ("1.3.6.1.4.1.5.30", Oid(group, "OTHER-MIB.borrowed"));
    EXPECT_EQ("none", Oid(group, "borrowed"));
    EXPECT_EQ("1.3.6.1.4.1.5.31", Oid(group, "INFO-MIB.joined")) << "the second form";
}

TEST(MibInfo, OwnerWithoutModuleResolvesPlainNames)
{
    CInfoScalar scalar("lonely", MakeOid("1.3.9"), CInfoScalar::s_noColumn);
    EXPECT_EQ("1.3.9", Oid(scalar, "lonely"));
    EXPECT_EQ("none", Oid(scalar, "ANY-MIB.lonely"));
}

TEST(MibInfo, OwnersNameIsSplitAtItsFirstFullStop)
{
    const struct {
        const char* name;
        const char* module;
        const char* object;
    } kRows[] = {
        {"lonely", "", "lonely"},
        {"A-MIB.one", "A-MIB", "one"},
        {"A-MIB.one.two", "A-MIB", "one"},
        {"", "", ""},
    };
    for (const auto& row : kRows) {
        CInfoScalar scalar(row.name, MakeOid("1.3.9"), CInfoScalar::s_noColumn);
        BMibObject object;
        EXPECT_EQ(0, scalar.GetIMibInfo()->GetObjParams(MakeOid("1.3.9"), object));
        EXPECT_STREQ(row.module, object.module.c_str());
        EXPECT_STREQ(row.object, object.name.c_str());
    }
}

TEST(MibInfo, AnotherOwnerOrNoneReplacesTheFirst)
{
    CInfoGroup group;
    CInfoScalar lonely("lonely", MakeOid("1.3.9"), CInfoScalar::s_noColumn);
    BMibInfo info;
    BMibObject object;
    info.SetOwner(&group);
    EXPECT_EQ(0, info.GetObjParams(BString("INFO-MIB.grp"), object));
    info.SetOwner(&lonely);
    EXPECT_EQ(kNotFound, info.GetObjParams(BString("INFO-MIB.grp"), object));
    EXPECT_EQ(0, info.GetObjParams(BString("lonely"), object));
    EXPECT_EQ(BString(), object.module);
    EXPECT_EQ(&info, object.info);
    info.SetOwner(nullptr);
    EXPECT_EQ(kNotFound, info.GetObjParams(BString("lonely"), object));
}

TEST(MibInfo, ParametersOfTheOwnerByItsKind)
{
    CInfoGroup group;
    CInfoTable table;
    CInfoRow row;
    CInfoScalar scalar("INFO-MIB.one", MakeOid("1.3.9"), CInfoScalar::s_noColumn);
    CInfoPlain plain;
    EXPECT_EQ("5 1.3.6.1.4.1.5 grp INFO-MIB 231 'scalarGroup' 0", Params(group, "1.3.6.1.4.1.5"));
    EXPECT_EQ("3 1.3.6.1.4.1.6.1 tab INFO-MIB 231 'table' 0", Params(table, "1.3.6.1.4.1.6.1"));
    EXPECT_EQ("4 1.3.6.1.4.1.7.2.9 line INFO-MIB 231 'row' 0", Params(row, "1.3.6.1.4.1.7.2.9"));
    EXPECT_EQ("1 1.3.9 one INFO-MIB 231 'regPt' 0", Params(scalar, "1.3.9"));
    EXPECT_EQ("0 1.3.8 pt INFO-MIB 231 'regPt' 0", Params(plain, "1.3.8"));
}

TEST(MibInfo, ParametersByKindAndSyntaxOfTheEntry)
{
    CInfoGroup group;
    const struct {
        unsigned column;
        const char* params;
    } kRows[] = {
        {1, "grpInt INFO-MIB 2 'INTEGER' 3"},
        {2, "grpOctets INFO-MIB 4 'OCTET STRING' 4"},
        {3, "grpOid INFO-MIB 6 'OBJECT IDENTIFIER' 3"},
        {4, "grpAddress INFO-MIB 64 'IpAddress' 3"},
        {5, "grpCounter INFO-MIB 65 'Counter32' 3"},
        {6, "grpGauge INFO-MIB 66 'Gauge32' 1"},
        {7, "grpTicks INFO-MIB 67 'TimeTicks' 2"},
        {8, "grpOpaque INFO-MIB 68 'Opaque' 3"},
        {9, "grpCounter64 INFO-MIB 70 'Counter64' 3"},
        {10, "grpText INFO-MIB 229 'DispStr' 3"},
        {11, "grpEnumKind INFO-MIB 230 'Enum' 3"},
        {12, "grpEnumInt INFO-MIB 230 'Enum' 4"},
        {13, "grpRange INFO-MIB 2 'INTEGER' 4"},
        {14, "grpConvention INFO-MIB 229 'DisplayString' 4"},
        {15, "grpTruth INFO-MIB 230 'TruthValue' 4"},
        {16, "grpStrange INFO-MIB 99 'left' 3"},
        {17, "grpRefined INFO-MIB 229 'DisplayString' 4"},
        {18, "grpNamedRange INFO-MIB 66 'Percent' 3"},
    };
    for (const auto& row : kRows) {
        const std::string oid = "1.3.6.1.4.1.5." + std::to_string(row.column);
        EXPECT_EQ("1 " + oid + " " + row.params, Params(group, oid.c_str()));
        EXPECT_EQ("1 " + oid + " " + row.params, Params(group, (oid + ".0").c_str()));
    }
}

TEST(MibInfo, ColumnsOfTablesAndRowsAreColumns)
{
    CInfoTable table;
    CInfoRow row;
    EXPECT_EQ("2 1.3.6.1.4.1.6.1.2 tabName INFO-MIB 229 'DispStr' 5",
              Params(table, "1.3.6.1.4.1.6.1.2.77.1"));
    EXPECT_EQ("2 1.3.6.1.4.1.6.1.3 tabStatus INFO-MIB 230 'RowStatus' 5",
              Params(table, "1.3.6.1.4.1.6.1.3"));
    EXPECT_EQ("2 1.3.6.1.4.1.6.1.4 tabEntry INFO-MIB 230 'EntryStatus' 5",
              Params(table, "1.3.6.1.4.1.6.1.4"));
    EXPECT_EQ("2 1.3.6.1.4.1.7.2.9.2 lineB INFO-MIB 2 'INTEGER' 3",
              Params(row, "1.3.6.1.4.1.7.2.9.2"));
}

TEST(MibInfo, ParametersOfWhatIsNotServedAreNotFound)
{
    CInfoGroup group;
    for (const char* dotted :
         {"1.3.6.1.4.1", "1.3.6.1.4.1.5.19", "1.3.6.1.4.1.6", "2", "9.9.9.9.9.9.9.9.9"})
        EXPECT_EQ("none", Params(group, dotted)) << dotted;
    BMibObject object;
    EXPECT_EQ(kNotFound, group.GetIMibInfo()->GetObjParams(BObjectIdentifier(), object));
    EXPECT_EQ(kNotFound, BMibInfo().GetObjParams(MakeOid("1.3"), object));
}

TEST(MibInfo, ParametersByNameAreThoseOfItsOid)
{
    CInfoGroup group;
    BMibObject object;
    EXPECT_EQ(0, group.GetIMibInfo()->GetObjParams(BString("INFO-MIB.grpText.0"), object));
    EXPECT_EQ(MakeOid("1.3.6.1.4.1.5.10"), object.oid);
    EXPECT_EQ(BString("grpText"), object.name);
    EXPECT_EQ(BString("DispStr"), object.syntaxName);
    // What was filled may be asked with again.
    EXPECT_EQ(0, group.GetIMibInfo()->GetObjParams(object.oid, object));
    EXPECT_EQ(0, group.GetIMibInfo()->GetObjParams(object.name, object));
    EXPECT_EQ(MakeOid("1.3.6.1.4.1.5.10"), object.oid);
    EXPECT_EQ(0, group.GetIMibInfo()->GetObjParams(BString("grp"), object));
    EXPECT_EQ(eMibObjectScalarGroup, object.kind);
    EXPECT_EQ(kNotFound, group.GetIMibInfo()->GetObjParams(BString("grpNone"), object));
    EXPECT_EQ(kNotFound, group.GetIMibInfo()->GetObjParams(BString("INFO-MIB"), object));
}

TEST(MibInfo, ScalarIsItsFirstEntryWhateverTheColumn)
{
    for (SRqHndlrMapEntry* map : {CInfoScalar::s_noColumn, CInfoScalar::s_allOnes}) {
        CInfoScalar scalar("INFO-MIB.one", MakeOid("1.3.9"), map);
        for (const char* below : {"1.3.9.0", "1.3.9.5", "1.3.9.4294967295", "1.3.9.7.8"})
            EXPECT_EQ("1 1.3.9 one INFO-MIB 2 'INTEGER' 4", Params(scalar, below)) << below;
        EXPECT_EQ("1.3.9", Oid(scalar, "theScalar"));
        EXPECT_EQ("none", Oid(scalar, "second"));
        EXPECT_TRUE(scalar.GetIMibInfo()->IsLeaf(MakeOid("1.3.9")));
        EXPECT_FALSE(scalar.GetIMibInfo()->IsLeaf(MakeOid("1.3.9.0")));
        EXPECT_FALSE(scalar.GetIMibInfo()->IsLeaf(MakeOid("1.3.9.4294967295")));
        EXPECT_FALSE(scalar.GetIMibInfo()->IsLeaf(MakeOid("1.3.8")));
        EXPECT_TRUE(scalar.GetIMibInfo()->IsLeaf(BString("theScalar")));
        BOidArray oids;
        EXPECT_EQ(0, scalar.GetIMibInfo()->GetLeafList(oids));
        ASSERT_EQ(1u, oids.Count());
        EXPECT_EQ(MakeOid("1.3.9"), oids[0]);
    }
    CInfoScalar scalar("INFO-MIB.one", MakeOid("1.3.9"), CInfoScalar::s_column);
    EXPECT_EQ("1 1.3.9.4 one INFO-MIB 2 'INTEGER' 4", Params(scalar, "1.3.9.0"));
    EXPECT_EQ("1.3.9.4", Oid(scalar, "theScalar"));
    EXPECT_TRUE(scalar.GetIMibInfo()->IsLeaf(MakeOid("1.3.9.4")));
    EXPECT_FALSE(scalar.GetIMibInfo()->IsLeaf(MakeOid("1.3.9")));
    EXPECT_FALSE(scalar.GetIMibInfo()->IsLeaf(MakeOid("1.3.9.5")));
    EXPECT_FALSE(scalar.GetIMibInfo()->IsLeaf(MakeOid("1.3.9.4.0")));
    BOidArray oids;
    EXPECT_EQ(0, scalar.GetIMibInfo()->GetLeafList(oids));
    ASSERT_EQ(1u, oids.Count());
    EXPECT_EQ(MakeOid("1.3.9.4"), oids[0]);
}

TEST(MibInfo, ScalarWithoutAnEntryHasNoObjectButItself)
{
    for (SRqHndlrMapEntry* map : {static_cast<SRqHndlrMapEntry*>(nullptr), CInfoScalar::s_empty}) {
        CInfoScalar scalar("INFO-MIB.one", MakeOid("1.3.9"), map);
        EXPECT_EQ("none", Params(scalar, "1.3.9.0"));
        EXPECT_EQ("1 1.3.9 one INFO-MIB 231 'regPt' 0", Params(scalar, "1.3.9"));
        EXPECT_FALSE(scalar.GetIMibInfo()->IsLeaf(MakeOid("1.3.9")));
        EXPECT_FALSE(scalar.GetIMibInfo()->IsLeaf(MakeOid("1.3.9.0")));
        BOidArray oids;
        EXPECT_EQ(0, scalar.GetIMibInfo()->GetLeafList(oids));
        EXPECT_EQ(0u, oids.Count());
    }
}

TEST(MibInfo, LeafListsHoldEveryEntryInColumnOrder)
{
    CInfoTable table;
    BOidArray oids;
    BStringArray names;
    oids.PushBack(MakeOid("7"));
    names.PushBack(BString("old"));
    EXPECT_EQ(0, table.GetIMibInfo()->GetLeafList(oids));
    EXPECT_EQ(0, table.GetIMibInfo()->GetLeafList(names));
    const char* kNames[] = {"tabIndex", "tabName", "tabStatus", "tabEntry"};
    ASSERT_EQ(4u, oids.Count());
    ASSERT_EQ(4u, names.Count());
    for (int i = 0; i < 4; ++i) {
        BObjectIdentifier oid = MakeOid("1.3.6.1.4.1.6.1");
        oid.Append(static_cast<unsigned>(i) + 1);
        EXPECT_EQ(oid, oids[i]);
        EXPECT_EQ(BString(kNames[i]), names[i]);
    }
    CInfoPlain plain;
    EXPECT_EQ(0, plain.GetIMibInfo()->GetLeafList(oids)) << "no map, no leaves";
    EXPECT_EQ(0u, oids.Count());
    EXPECT_EQ(0, plain.GetIMibInfo()->GetLeafList(names));
    EXPECT_EQ(0u, names.Count());
}

TEST(MibInfo, EnumValueIsThatOfTheExactLabel)
{
    CInfoTable table;
    IMIBInfo* info = table.GetIMibInfo();
    int value = -1;
    EXPECT_EQ(1, info->GetEnumValue(BString("tabStatus"), BString("createAndGo"), value));
    EXPECT_EQ(4, value);
    EXPECT_EQ(0, info->GetEnumValue(BString("tabStatus"), BString("CreateAndGo"), value));
    EXPECT_EQ(0, info->GetEnumValue(BString("tabStatus"), BString("createAndG"), value));
    EXPECT_EQ(0, info->GetEnumValue(BString("tabStatus"), BString("createAndGoo"), value));
    EXPECT_EQ(0, info->GetEnumValue(BString("tabStatus"), BString("active\0", 7), value));
    EXPECT_EQ(0, info->GetEnumValue(BString("tabStatus\0", 10), BString("active"), value));
    EXPECT_EQ(0, info->GetEnumValue(BString("tabstatus"), BString("active"), value));
    EXPECT_EQ(0, info->GetEnumValue(BString("INFO-MIB.tabStatus"), BString("active"), value));
    EXPECT_EQ(0, info->GetEnumValue(BString("tabStatus"), BString(""), value));
    EXPECT_EQ(0, info->GetEnumValue(BString("tabName"), BString("active"), value));
    EXPECT_EQ(0, info->GetEnumValue(BString("none"), BString("active"), value));
    EXPECT_EQ(0, info->GetEnumValue(BString(""), BString("active"), value));
    EXPECT_EQ(4, value);
    EXPECT_EQ(0, BMibInfo().GetEnumValue(BString("a"), BString("b"), value));
}

TEST(MibInfo, FirstItemOfALabelOrValueDecidesAndTheListEndsAtTheNextHeader)
{
    CInfoGroup group;
    IMIBInfo* info = group.GetIMibInfo();
    int value = -1;
    BString label("old");
    EXPECT_EQ(1, info->GetEnumValue(BString("grpEnumInt"), BString("twice"), value));
    EXPECT_EQ(-7, value);
    EXPECT_EQ(1, info->GetEnumLabel(BString("grpEnumInt"), 5, label));
    EXPECT_EQ(BString("twice"), label) << "before the item \"five\"";
    EXPECT_EQ(1, info->GetEnumLabel(BString("grpEnumInt"), -7, label));
    EXPECT_EQ(BString("twice"), label);
    EXPECT_EQ(0, info->GetEnumLabel(BString("grpEnumInt"), 44, label)) << "the item of another";
    EXPECT_EQ(0, info->GetEnumLabel(BString("grpRange"), 3, label))
        << "a range has no items, though one follows";
    EXPECT_EQ(0, info->GetEnumLabel(BString("grpHeaderOnly"), 0, label)) << "no item follows";
    EXPECT_EQ(0, info->GetEnumLabel(BString("grpNone"), 0, label));
    EXPECT_EQ(BString("twice"), label);
    EXPECT_EQ(1, info->GetEnumLabel(BString("grpTruth"), 2, label));
    EXPECT_EQ(BString("false"), label);
}

TEST(MibInfo, LeafIsAnObjectsOwnOid)
{
    CInfoGroup group;
    IMIBInfo* info = group.GetIMibInfo();
    EXPECT_TRUE(info->IsLeaf(MakeOid("1.3.6.1.4.1.5.1")));
    EXPECT_FALSE(info->IsLeaf(MakeOid("1.3.6.1.4.1.5.1.0"))) << "an instance";
    EXPECT_FALSE(info->IsLeaf(MakeOid("1.3.6.1.4.1.5.19")));
    EXPECT_FALSE(info->IsLeaf(MakeOid("1.3.6.1.4.1.5")));
    EXPECT_FALSE(info->IsLeaf(MakeOid("1.3.6.1.4.1.6.1")));
    EXPECT_FALSE(info->IsLeaf(BObjectIdentifier()));
    EXPECT_FALSE(BMibInfo().IsLeaf(MakeOid("1")));
}

TEST(MibInfo, LeafByNameLooksUpTheJoinedTextWhenItHasAModule)
{
    CInfoGroup group;
    IMIBInfo* info = group.GetIMibInfo();
    EXPECT_TRUE(info->IsLeaf(BString("grpInt")));
    EXPECT_TRUE(info->IsLeaf(BString("grpInt.0")));
    EXPECT_FALSE(info->IsLeaf(BString("INFO-MIB.grpInt")));
    EXPECT_TRUE(info->IsLeaf(BString("OTHER-MIB.borrowed")));
    EXPECT_FALSE(info->IsLeaf(BString("grp")));
    EXPECT_FALSE(info->IsLeaf(BString("INFO-MIB")));
    EXPECT_FALSE(info->IsLeaf(BString("")));
    EXPECT_FALSE(BMibInfo().IsLeaf(BString("grpInt")));
}

TEST(MibInfo, TableIsItsOwnOidOrTheOneAboveItsEntry)
{
    CInfoTable table;
    CInfoRow row;
    CInfoGroup group;
    IMIBInfo* info = table.GetIMibInfo();
    EXPECT_TRUE(info->IsTable(MakeOid("1.3.6.1.4.1.6.1")));
    EXPECT_TRUE(info->IsTable(MakeOid("1.3.6.1.4.1.6")));
    EXPECT_FALSE(info->IsTable(MakeOid("1.3.6.1.4.1")));
    EXPECT_FALSE(info->IsTable(MakeOid("1.3.6.1.4.1.6.1.1")));
    EXPECT_FALSE(info->IsTable(MakeOid("1.3.6.1.4.2.6")));
    EXPECT_FALSE(info->IsTable(MakeOid("1.3.6.1.4.1.7"))) << "as long as the table's";
    EXPECT_FALSE(info->IsTable(BObjectIdentifier()));
    EXPECT_TRUE(row.GetIMibInfo()->IsTable(MakeOid("1.3.6.1.4.1.7.2.9")));
    EXPECT_FALSE(row.GetIMibInfo()->IsTable(MakeOid("1.3.6.1.4.1.7.2"))) << "the entry is not 1";
    EXPECT_FALSE(group.GetIMibInfo()->IsTable(MakeOid("1.3.6.1.4.1.5")));
    EXPECT_FALSE(BMibInfo().IsTable(MakeOid("1")));
}

TEST(MibInfo, TableByNameComparesOnlyTheObjectPart)
{
    CInfoTable table;
    CInfoGroup group;
    IMIBInfo* info = table.GetIMibInfo();
    EXPECT_TRUE(info->IsTable(BString("INFO-MIB.tab")));
    EXPECT_TRUE(info->IsTable(BString("tab")));
    EXPECT_TRUE(info->IsTable(BString("OTHER-MIB.tab.1.2")));
    EXPECT_FALSE(info->IsTable(BString("tabName")));
    EXPECT_FALSE(info->IsTable(BString("INFO-MIB")));
    EXPECT_FALSE(info->IsTable(BString("tab.x")));
    EXPECT_FALSE(info->IsTable(BString("INFO-MIB.tabName")));
    EXPECT_FALSE(info->IsTable(BString("INFO-MIB.tab\0", 13)));
    EXPECT_FALSE(info->IsTable(BString("")));
    EXPECT_FALSE(group.GetIMibInfo()->IsTable(BString("INFO-MIB.grp")));
    EXPECT_FALSE(BMibInfo().IsTable(BString("tab")));
}

TEST(MibInfo, RowIsATableByItsName)
{
    CInfoRow row;
    EXPECT_TRUE(row.GetIMibInfo()->IsTable(BString("INFO-MIB.line")));
    EXPECT_TRUE(row.GetIMibInfo()->IsTable(BString("line")));
    EXPECT_FALSE(row.GetIMibInfo()->IsTable(BString("lineA")));
}

TEST(MibInfo, TableIsFoundByItsFullNameWhateverThatIs)
{
    CInfoTable capital("TAB");
    EXPECT_TRUE(capital.GetIMibInfo()->IsTable(BString("TAB")));
    EXPECT_FALSE(capital.GetIMibInfo()->IsTable(BString("TA")));
    CInfoTable nameless("");
    BObjectIdentifier next;
    EXPECT_FALSE(nameless.GetIMibInfo()->IsTable(BString()));
    EXPECT_EQ(0, nameless.GetIMibInfo()->NextInstanceInColumn(1, BString(), 2, BObjectIdentifier(),
                                                              next));
    EXPECT_EQ(kNotFound, nameless.GetIMibInfo()->Name2Oid(BString(), next));
}

TEST(MibInfo, NextInstanceAsksTheTableUnderItsMutex)
{
    CInfoTable table;
    IMIBInfo* info = table.GetIMibInfo();
    BObjectIdentifier next;
    EXPECT_EQ(1, info->NextInstanceInColumn(8, BString("tab"), 2, BObjectIdentifier(), next));
    EXPECT_EQ(MakeOid("10"), next);
    EXPECT_EQ(8u, table.m_lastId);
    EXPECT_EQ(2u, table.m_lastColumn);
    EXPECT_TRUE(table.m_wasLocked);
    EXPECT_EQ(1, info->NextInstanceInColumn(8, BString("INFO-MIB.tab"), 2, MakeOid("10"), next));
    EXPECT_EQ(MakeOid("20"), next);
    EXPECT_EQ(0, info->NextInstanceInColumn(8, BString("tab"), 2, MakeOid("20"), next));
    EXPECT_FALSE(IsLocked(table.Mutex())) << "released";
}

TEST(MibInfo, NextInstanceGivesWhatTheTableAnswers)
{
    CInfoTable table;
    table.m_answer = 7;
    BObjectIdentifier next;
    EXPECT_EQ(7, table.GetIMibInfo()->NextInstanceInColumn(1, BString("tab"), 2,
                                                           BObjectIdentifier(), next));
}

TEST(MibInfo, NextInstanceGoesByTheKindOfTheImplementation)
{
    struct COfNoKind : CInfoTable {
        COfNoKind() { SetImplKind(eImplBase); }
    } table;
    BObjectIdentifier next;
    EXPECT_EQ(0, table.GetIMibInfo()->NextInstanceInColumn(1, BString("tab"), 2,
                                                           BObjectIdentifier(), next));
}

TEST(MibInfo, NextInstanceOfWhatOnlyClaimsToBeATableIsNone)
{
    struct CClaimsToBe : CInfoPlain {
        explicit CClaimsToBe(unsigned kind) { SetImplKind(kind); }
    };
    BObjectIdentifier next;
    for (unsigned kind : {4u, 5u, 6u, 7u}) {
        CClaimsToBe plain(kind);
        EXPECT_EQ(0, plain.GetIMibInfo()->NextInstanceInColumn(1, BString("pt"), 1,
                                                               BObjectIdentifier(), next));
    }
}

TEST(MibInfo, NextInstanceOfAnotherTableOrNoTableIsNone)
{
    CInfoTable table;
    CInfoRow row;
    CInfoGroup group;
    BObjectIdentifier next;
    const BObjectIdentifier first;
    for (const char* name : {"", "other", "OTHER-MIB.tab", "tab.1", "INFO-MIB"})
        EXPECT_EQ(0, table.GetIMibInfo()->NextInstanceInColumn(1, BString(name), 2, first, next))
            << name;
    EXPECT_EQ(0u, table.m_lastColumn) << "not asked";
    EXPECT_EQ(0, row.GetIMibInfo()->NextInstanceInColumn(1, BString("line"), 1, first, next));
    EXPECT_EQ(0, group.GetIMibInfo()->NextInstanceInColumn(1, BString("grp"), 1, first, next));
    EXPECT_EQ(0, BMibInfo().NextInstanceInColumn(1, BString("tab"), 1, first, next));
}

TEST(MibInfo, NextInstanceSurvivesATableThatThrows)
{
    CInfoTable table;
    table.m_throws = true;
    BObjectIdentifier next;
    EXPECT_EQ(0, table.GetIMibInfo()->NextInstanceInColumn(1, BString("tab"), 2,
                                                           BObjectIdentifier(), next));
    EXPECT_FALSE(IsLocked(table.Mutex()));
    table.m_throws = false;
    EXPECT_EQ(1, table.GetIMibInfo()->NextInstanceInColumn(1, BString("tab"), 2,
                                                           BObjectIdentifier(), next));
}
