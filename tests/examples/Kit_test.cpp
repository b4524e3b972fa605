// Modules under test by the testing kit alone, as their authors would do it. The guide
// quotes this file.
#include "examples/rowstatus/DoorTable.h"
#include "examples/scalar/Thermostat.h"
#include "examples/subtree/ParameterTree.h"
#include "examples/table/SensorTable.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>
#include <vkmibh/testing/maps.h>
#include <vkmibh/testing/module.h>
#include <vkmibh/testing/walks.h>

namespace VLK::Test {

TEST(ExampleModules, HaveMapsInOrder)
{
    examples::CThermostatModule thermostat;
    examples::CSensorModule sensors("/dev/null");
    examples::CDoorModule doors(60000);
    EXPECT_EQ(CheckMaps(thermostat), "");
    EXPECT_EQ(CheckMaps(sensors), "");
    EXPECT_EQ(CheckMaps(doors), "");
}

TEST(ThermostatModule, RefusesWhatIsOutOfRange)
{
    examples::CThermostatModule thermostat;
    ModuleClient client(thermostat, "1.3.6.1.4.1.32473.2.1");
    ASSERT_EQ(client.Problem(), "");
    EXPECT_EQ(client.Set({{"1.0", Number(23)}, {"2.0", Number(4)}}), eSnmpWrongValue);
    EXPECT_EQ(client.errorIndex, 2);
    EXPECT_EQ(client.Get("1.0"), "20") << "a SET is all or nothing";
}

TEST(ThermostatModule, TakesBackWhatItHasChanged)
{
    examples::CThermostatModule thermostat;
    ModuleClient client(thermostat, "1.3.6.1.4.1.32473.2.1");
    EXPECT_EQ(client.CheckUndo({{"1.0", Number(23)}, {"2.0", Number(2)}}), "");
    EXPECT_EQ(client.Walk(), (std::vector<std::string>{"1.0=23", "2.0=2"}));
}

TEST(DoorModule, TakesBackADoorThatWasMade)
{
    examples::CDoorModule doors(60000);
    ModuleClient client(doors, "1.3.6.1.4.1.32473.2.3.1");
    EXPECT_EQ(client.CheckUndo({{"2.7", Bytes("side gate")}, {"5.7", Number(eRowCreateAndGo)}}),
              "");
    EXPECT_EQ(client.CheckUndo({{"5.7", Number(eRowDestroy)}}), "");
}

TEST(ParameterTree, IsProvedLikeAModule)
{
    examples::CParameterTree tree;
    tree.Add("1.0", 5);
    ModuleClient client(tree);
    EXPECT_EQ(client.CheckUndo({{"1.0", Number(6)}}), "");
    EXPECT_EQ(
        TwoWalks(tree, "1.3.6.1.4.1.32473.2.6", {{"1.3.6.1.4.1.32473.2.6.1.0", eAsnInteger, "6"}})
            .Run(),
        "");
}

TEST(SensorModule, WalksWhatItServes)
{
    TempDir files;
    WriteFile(files.File("sensors"), "3 21 kitchen\n7 -18 cold store\n");
    examples::CSensorTable table(files.File("sensors"));
    table.Initialize();
    const std::string walk =
        TwoWalks(table, "1.3.6.1.4.1.32473.2.2.1",
                 {{"1.3.6.1.4.1.32473.2.2.1.2.3", eAsnOctetString, "kitchen"},
                  {"1.3.6.1.4.1.32473.2.2.1.2.7", eAsnOctetString, "cold store"},
                  {"1.3.6.1.4.1.32473.2.2.1.3.3", eAsnInteger, "21"},
                  {"1.3.6.1.4.1.32473.2.2.1.3.7", eAsnInteger, "-18"}})
            .Run();
    EXPECT_EQ(walk, "");
}

TEST(RecorderModule, ShowsThePhasesOfASetThatFails)
{
    SetLog log;
    RecorderHandler first('A', "1.3.6.1.4.1.32473.98", log);
    RecorderHandler second('B', "1.3.6.1.4.1.32473.99", log);
    BMibHandler handler(nullptr);
    handler.RegisterSubtreeHandler(&first);
    handler.RegisterSubtreeHandler(&second);

    second.failAt = {{eSetCommit, 1}};
    Client client(handler);
    EXPECT_EQ(client.Set({{"1.3.6.1.4.1.32473.98.1.0", Number(1)},
                          {"1.3.6.1.4.1.32473.99.1.0", Number(1)}}),
              eSnmpCommitFailed);
    EXPECT_EQ(client.errorIndex, 2);
    EXPECT_EQ(log, (SetLog{"A test 0+1", "B test 1+1", "A commit 0+1", "B commit 1+1", "A undo 0+1",
                           "B undo 1+1", "A cleanup 0+1", "B cleanup 1+1"}));
}

} // namespace VLK::Test
