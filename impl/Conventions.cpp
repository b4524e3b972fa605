// The standard textual conventions: RFC 2579, RFC 3411, RFC 3413, and those of
// RMON (RFC 2819).
#include <vkmibh/implbase.h>

namespace VLK {

namespace {

constexpr int kMaxInt32 = 2147483647;

constexpr SConstraintMapEntry Range(const char* name, int low, int high)
{
    return {eConstraintRange, 0, name, low, high};
}
constexpr SConstraintMapEntry Enumeration(const char* name)
{
    return {eConstraintEnumeration, 0, name, 0, 0};
}
constexpr SConstraintMapEntry Item(const char* label, int value)
{
    return {eConstraintItem, 0, label, value, 0};
}

} // namespace

VKMIBH_CONSTINIT const SConstraintMapEntry BMibImpl::s_tcConstraints[] = {
    Range(cszDateAndTime, 8, 11),
    Range(cszDisplayString, 0, 255),
    Range(cszMacAddress, 6, 6),
    Range(cszTAddress, 1, 255),
    Range(cszTestAndIncr, 0, kMaxInt32),
    Range(cszTimeInterval, 0, kMaxInt32),
    Enumeration(cszRowStatus),
    Item("active", 1),
    Item("notInService", 2),
    Item("notReady", 3),
    Item("createAndGo", 4),
    Item("createAndWait", 5),
    Item("destroy", 6),
    Enumeration(cszStorageType),
    Item("other", 1),
    Item("volatile", 2),
    Item("nonVolatile", 3),
    Item("permanent", 4),
    Item("readOnly", 5),
    Enumeration(cszTruthValue),
    Item("true", 1),
    Item("false", 2),
    Range(cszOwnerString, 0, 255),
    Enumeration(cszEntryStatus),
    Item("valid", 1),
    Item("createRequest", 2),
    Item("underCreation", 3),
    Item("invalid", 4),
    Range(cszSnmpAdminString, 0, 255),
    Range(cszSnmpEngineID, 5, 32),
    Range(cszSnmpSecurityModel, 0, kMaxInt32),
    Range(cszSnmpMessageProcessingModel, 0, kMaxInt32),
    Enumeration(cszSnmpSecurityLevel),
    Item("noAuthNoPriv", 1),
    Item("authNoPriv", 2),
    Item("authPriv", 3),
    Range(cszSnmpTagValue, 0, 255),
    Range(cszSnmpTagList, 0, 255),
    kConstraintEnd};

} // namespace VLK
