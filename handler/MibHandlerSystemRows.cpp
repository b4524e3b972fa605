// The sysOR rows that every agent starts with.
#include <vkmibh/handler.h>
#include <vkmibh/system.h>

namespace VLK {

namespace {

constexpr char kRemoteConfiguration[] =
    "This MIB module defines MIB objects which provide mechanisms to remotely configure the "
    "parameters used by an SNMP entity for the generation of SNMP messages";

struct SStandardRow {
    const char* id;
    const char* descr;
    bool onlyWithoutAccessControl;
};

const SStandardRow kStandardRows[] = {
    {"1.3.6.1.2.1.1", "a collection of objects common to all systems", true},
    {"1.3.6.1.2.1.11",
     "a collection of objects providing basic instrumentations and control of an SNMP entity",
     true},
    {"1.3.6.1.6.3.1.2.1.3", "The MIB module for SNMP entities", false},
    {"1.3.6.1.6.3.10.3.1", "The SNMP Architecture MIB", false},
    {"1.3.6.1.6.3.11.3.1.1", "The MIB for Message Processing and Dispatching", false},
    {"1.3.6.1.6.3.12.3.1.1", kRemoteConfiguration, false},
    // CONTRACT: the notification module shares the target module's text.
    {"1.3.6.1.6.3.13.3.1.1", kRemoteConfiguration, false},
    {"1.3.6.1.6.3.14.3.1.1",
     "This MIB module defines MIB objects which provide mechanisms to remotely configure the "
     "parameters used by a proxy forwarding application",
     false},
    {"1.3.6.1.6.3.15.2.1.1",
     "The management information definitions for the SNMP User-based Security Model", false},
    {"1.3.6.1.6.3.16.2.1.1",
     "The management information definitions for the View-based Access Control Model for SNMP",
     false},
};

} // namespace

void BMibHandler::vInitSysORTable()
{
    if (!m_system)
        return;
    for (const SStandardRow& row : kStandardRows)
        if (!row.onlyWithoutAccessControl || !m_accessControl)
            m_system->InsertORRow(BObjectIdentifier(BString(row.id)), BString(row.descr));
}

} // namespace VLK
