// What the agent serves is held to what the testing kit asks of anybody's module.
#include "FakeHost.h"
#include "Interfaces.h"

#include "modules/SnmpEngine.h"
#include "modules/SnmpGroup.h"
#include "modules/SysORTable.h"
#include "modules/ViewTreeFamily.h"
#include "modules/rmon/AlarmModule.h"
#include "modules/targets/TargetModule.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vkmibh/testing/maps.h>

using namespace VLK;
using namespace VLK::Test;
using namespace VLK::modules;

TEST(MapsOfModules, Snmp)
{
    SSnmpCounters counters;
    CSnmpModule snmp(counters, nullptr);
    CSnmpEngineModule engine({"engine", 1, 65507}, counters);
    CTargetModule targets(nullptr, counters);
    EXPECT_EQ(CheckMaps(snmp), "");
    EXPECT_EQ(CheckMaps(engine), "");
    EXPECT_EQ(CheckMaps(targets), "");
}

TEST(MapsOfModules, Views)
{
    BFilterTable rows(nullptr);
    CViewModule views(rows, nullptr);
    EXPECT_EQ(CheckMaps(views), "");
}

TEST(MapsOfModules, Interfaces)
{
    FakeInterfaces kernel;
    FakeTraps traps;
    CInterfacesModule interfaces(kernel, traps, nullptr, {}, [] { return 0; });
    EXPECT_EQ(CheckMaps(interfaces), "");
}

TEST(MapsOfModules, HostResources)
{
    FakeHost host;
    CHostResourcesModule resources(host);
    EXPECT_EQ(CheckMaps(resources), "");
}

TEST(MapsOfModules, AlarmsAndEvents)
{
    FakeTraps traps;
    CAlarmModule alarms(traps, nullptr, {}, [] { return 0u; });
    EXPECT_EQ(CheckMaps(alarms), "");
}

TEST(MapsOfModules, SystemGroup)
{
    BMib2System record;
    EXPECT_EQ(CheckMaps(CSystem(record)), "");
    EXPECT_EQ(CheckMaps(CSystemV2(record)), "");
    CSysORModule resources(record, [] { return 0u; });
    EXPECT_EQ(CheckMaps(resources), "");
}

// Its first row is a kept oddity.
TEST(MapsOfModules, OnlyTheIndexOfTheLibrarysSysORTableHasNoAccess)
{
    BMib2System record;
    EXPECT_EQ(CheckMaps(CSysORTableV2(record)),
              "SNMPv2-MIB.sysORTable: row 1 'sysORIndex': no such access, 0: take one of "
              "ERqAccess\n");
}
