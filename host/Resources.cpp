#include "host/Resources.h"

namespace VLK::host {

namespace {

constexpr modules::SResource kAlways[] = {
    {"1.3.6.1.6.3.1.2.1.3", "SNMPv2-MIB: the system and snmp groups (RFC 3418)"},
    {"1.3.6.1.6.3.16.2.1.1", "SNMP-VIEW-BASED-ACM-MIB: the MIB views (RFC 3415)"},
    {"1.3.6.1.6.3.12.3.1.1", "SNMP-TARGET-MIB: where notifications go (RFC 3413)"},
    {"1.3.6.1.6.3.13.3.1.1", "SNMP-NOTIFICATION-MIB: who is sent notifications (RFC 3413)"},
    {"1.3.6.1.2.1.31.2.2.3", "IF-MIB: network interfaces (RFC 2863)"},
    {"1.3.6.1.2.1.25.7.2.1", "HOST-RESOURCES-MIB: system, storage and processors (RFC 2790)"},
    {"1.3.6.1.2.1.16.20.9.1", "RMON-MIB: the alarm and event groups (RFC 2819)"},
};

constexpr modules::SResource kWithV3[] = {
    {"1.3.6.1.6.3.10.3.1.1", "SNMP-FRAMEWORK-MIB: the SNMP engine (RFC 3411)"},
    {"1.3.6.1.6.3.11.3.1.1", "SNMP-MPD-MIB: message processing and dispatching (RFC 3412)"},
    {"1.3.6.1.6.3.15.2.1.1",
     "SNMP-USER-BASED-SM-MIB: statistics of the user-based security model (RFC 3414)"},
};

} // namespace

std::vector<modules::SResource> Resources(bool speaksV3)
{
    std::vector<modules::SResource> all(std::begin(kAlways), std::end(kAlways));
    if (speaksV3)
        all.insert(all.end(), std::begin(kWithV3), std::end(kWithV3));
    return all;
}

} // namespace VLK::host
