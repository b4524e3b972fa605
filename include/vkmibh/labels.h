// Enumerations of the SNMP framework's textual conventions, and their labels.
#pragma once

#include <vkmibh/platform.h>

namespace VLK {

enum ERowStatus : int {
    eRowActive = 1,
    eRowNotInService = 2,
    eRowNotReady = 3,
    eRowCreateAndGo = 4,
    eRowCreateAndWait = 5,
    eRowDestroy = 6
};
enum EEntryStatus : int {
    eEntryValid = 1,
    eEntryCreateRequest = 2,
    eEntryUnderCreation = 3,
    eEntryInvalid = 4
};
enum EStorageType : int {
    eStorageOther = 1,
    eStorageVolatile = 2,
    eStorageNonVolatile = 3,
    eStoragePermanent = 4,
    eStorageReadOnly = 5
};
// MAX-ACCESS of RFC 2578 section 7.3, with its own numbers.
enum EMaxAccess : int {
    eMaxAccessNone = 0,
    eMaxAccessNotify = 1,
    eMaxAccessReadOnly = 2,
    eMaxAccessReadWrite = 3,
    eMaxAccessReadCreate = 4
};
enum ESecurityLevel : int { eNoAuthNoPriv = 1, eAuthNoPriv = 2, eAuthPriv = 3 };
enum EFilterType : int { eFilterIncluded = 1, eFilterExcluded = 2 };

// The printable label; "unknown" for what has none ("secUserDefined" for security models). The
// texts are static.
VKMIBH_API const char* LabelRowStatus(ERowStatus value);
VKMIBH_API const char* LabelStorageType(EStorageType value);
VKMIBH_API const char* LabelMaxAccess(EMaxAccess value);
VKMIBH_API const char* LabelSecurityModel(int value);
VKMIBH_API const char* LabelSecurityLevel(ESecurityLevel value);
VKMIBH_API const char* LabelFilterType(EFilterType value);

} // namespace VLK
