// MIB modules for the tools that want names, with no more in them than the tables that
// the agent serves.
#pragma once

#include "tests/support/TempDir.h"

#include <map>
#include <vector>

namespace mibs {

struct SColumn {
    int number;
    std::string name;
    std::string type;
    bool isSteady = true; // from one request to the next
};

struct STable {
    std::string module;
    std::string name; // of the table, and with "Entry" for "Table" that of the entry
    std::string oid;  // in numbers, of the table
    std::string index;
    std::vector<SColumn> columns;

    std::string Entry() const { return name.substr(0, name.size() - 5) + "Entry"; }
};

constexpr bool kMoving = false;

inline std::ostream& operator<<(std::ostream& out, const STable& table)
{
    return out << table.name;
}

inline const std::vector<STable>& Tables()
{
    static const std::vector<STable> tables{
        {"SNMPv2-MIB",
         "sysORTable",
         "1.3.6.1.2.1.1.9",
         "sysORIndex",
         {{2, "sysORID", "OBJECT IDENTIFIER"},
          {3, "sysORDescr", "OCTET STRING"},
          {4, "sysORUpTime", "TimeTicks"}}},
        {"IF-MIB",
         "ifTable",
         "1.3.6.1.2.1.2.2",
         "ifIndex",
         {{1, "ifIndex", "INTEGER"},
          {2, "ifDescr", "OCTET STRING"},
          {3, "ifType", "INTEGER"},
          {4, "ifMtu", "INTEGER"},
          {5, "ifSpeed", "Gauge32", kMoving},
          {6, "ifPhysAddress", "OCTET STRING"},
          {7, "ifAdminStatus", "INTEGER"},
          {8, "ifOperStatus", "INTEGER"},
          {9, "ifLastChange", "TimeTicks"},
          {10, "ifInOctets", "Counter32", kMoving},
          {11, "ifInUcastPkts", "Counter32", kMoving},
          {13, "ifInDiscards", "Counter32", kMoving},
          {14, "ifInErrors", "Counter32", kMoving},
          {16, "ifOutOctets", "Counter32", kMoving},
          {17, "ifOutUcastPkts", "Counter32", kMoving},
          {19, "ifOutDiscards", "Counter32", kMoving},
          {20, "ifOutErrors", "Counter32", kMoving}}},
        {"IF-MIB",
         "ifXTable",
         "1.3.6.1.2.1.31.1.1",
         "ifIndex",
         {{1, "ifName", "OCTET STRING"},
          {2, "ifInMulticastPkts", "Counter32", kMoving},
          {6, "ifHCInOctets", "Counter64", kMoving},
          {7, "ifHCInUcastPkts", "Counter64", kMoving},
          {8, "ifHCInMulticastPkts", "Counter64", kMoving},
          {10, "ifHCOutOctets", "Counter64", kMoving},
          {11, "ifHCOutUcastPkts", "Counter64", kMoving},
          {14, "ifLinkUpDownTrapEnable", "INTEGER"},
          {15, "ifHighSpeed", "Gauge32", kMoving},
          {16, "ifPromiscuousMode", "INTEGER"},
          {17, "ifConnectorPresent", "INTEGER"},
          {18, "ifAlias", "OCTET STRING"},
          {19, "ifCounterDiscontinuityTime", "TimeTicks"}}},
        {"HOST-RESOURCES-MIB",
         "hrStorageTable",
         "1.3.6.1.2.1.25.2.3",
         "hrStorageIndex",
         {{1, "hrStorageIndex", "INTEGER"},
          {2, "hrStorageType", "OBJECT IDENTIFIER"},
          {3, "hrStorageDescr", "OCTET STRING"},
          {4, "hrStorageAllocationUnits", "INTEGER"},
          {5, "hrStorageSize", "INTEGER"},
          {6, "hrStorageUsed", "INTEGER", kMoving}}},
        {"HOST-RESOURCES-MIB",
         "hrProcessorTable",
         "1.3.6.1.2.1.25.3.3",
         "hrDeviceIndex",
         {{1, "hrProcessorFrwID", "OBJECT IDENTIFIER"},
          {2, "hrProcessorLoad", "INTEGER", kMoving}}},
        {"SNMP-VIEW-BASED-ACM-MIB",
         "vacmViewTreeFamilyTable",
         "1.3.6.1.6.3.16.1.5.2",
         "vacmViewTreeFamilyViewName, vacmViewTreeFamilySubtree",
         {{3, "vacmViewTreeFamilyMask", "OCTET STRING"},
          {4, "vacmViewTreeFamilyType", "INTEGER"},
          {5, "vacmViewTreeFamilyStorageType", "INTEGER"},
          {6, "vacmViewTreeFamilyStatus", "INTEGER"}}},
        {"RMON-MIB",
         "alarmTable",
         "1.3.6.1.2.1.16.3.1",
         "alarmIndex",
         {{1, "alarmIndex", "INTEGER"},
          {2, "alarmInterval", "INTEGER"},
          {3, "alarmVariable", "OBJECT IDENTIFIER"},
          {4, "alarmSampleType", "INTEGER"},
          {5, "alarmValue", "INTEGER", kMoving},
          {6, "alarmStartupAlarm", "INTEGER"},
          {7, "alarmRisingThreshold", "INTEGER"},
          {8, "alarmFallingThreshold", "INTEGER"},
          {9, "alarmRisingEventIndex", "INTEGER"},
          {10, "alarmFallingEventIndex", "INTEGER"},
          {11, "alarmOwner", "OCTET STRING"},
          {12, "alarmStatus", "INTEGER"}}},
    };
    return tables;
}

inline std::string Node(const std::string& name, const std::string& oid)
{
    std::string arcs = oid;
    for (char& c : arcs)
        c = c == '.' ? ' ' : c;
    return name + " OBJECT IDENTIFIER ::= { " + arcs + " }\n";
}

inline std::string Object(const std::string& name, const std::string& syntax,
                          const std::string& more, const std::string& place)
{
    return name + " OBJECT-TYPE\n    SYNTAX " + syntax +
           "\n    MAX-ACCESS read-only\n    STATUS current\n    DESCRIPTION \"\"\n" + more +
           "    ::= { " + place + " }\n";
}

inline std::string Text(const STable& table)
{
    const std::string above = table.name + "Parent";
    const size_t last = table.oid.rfind('.');
    std::string text = Node(above, table.oid.substr(0, last));
    text += Object(table.name, "SEQUENCE OF " + table.Entry(), "",
                   above + " " + table.oid.substr(last + 1));
    text += Object(table.Entry(), table.Entry(), "    INDEX { " + table.index + " }\n",
                   table.name + " 1");
    for (const SColumn& column : table.columns)
        text += Object(column.name, column.type, "",
                       table.Entry() + " " + std::to_string(column.number));
    return text;
}

// A directory of them, for the option -M.
class Directory {
public:
    Directory()
    {
        std::map<std::string, std::string> texts;
        for (const STable& table : Tables())
            texts[table.module] += Text(table);
        for (const auto& [module, text] : texts)
            WriteFile(m_directory.File(module + ".txt"),
                      module + " DEFINITIONS ::= BEGIN\n" + text + "END\n");
    }
    const std::string& Path() const { return m_directory.Path(); }

private:
    TempDir m_directory;
};

} // namespace mibs
