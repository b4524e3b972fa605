// SNMP values, all families: object identifier, octet string, IP address,
// 64-bit counter, tagged value, variable binding and binding list.
#pragma once

#include <vkmibh/counter64.h>
#include <vkmibh/objectid.h>
#include <vkmibh/octets.h>
#include <vkmibh/syntax.h>
#include <vkmibh/varbind.h>
