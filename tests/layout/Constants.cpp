// Constants that programs have compiled in and that no function's type carries, so
// that abidiff does not see them change. Their values are binary interface.
// Everything here is decided by the compiler: the file has nothing to run.
#include <vkmibh/vkmibh.h>

namespace VLK {

// ETraceClass
static_assert(eTraceCmdParser == 0x10000);
static_assert(eTraceFilterTable == 0x10004);
static_assert(eTraceSystemGroup == 0x10009);
static_assert(eTraceMibHandler == 0x1000a);
static_assert(eTraceMibTree == 0x10014);
static_assert(eTraceObjectSyntax == 0x10016);

// EPduType
static_assert(ePduGet == 160);
static_assert(ePduGetNext == 161);
static_assert(ePduSet == 163);
static_assert(ePduGetBulk == 165);

// EAccessKind
static_assert(eAccessRead == 1);
static_assert(eAccessWrite == 2);

// EMibObjectKind
static_assert(eMibObjectRegistrationPoint == 0);
static_assert(eMibObjectLeaf == 1);
static_assert(eMibObjectColumn == 2);
static_assert(eMibObjectTable == 3);
static_assert(eMibObjectRow == 4);
static_assert(eMibObjectScalarGroup == 5);

// EMibSyntax
static_assert(eMibSyntaxDisplayString == 229);
static_assert(eMibSyntaxEnumerated == 230);
static_assert(eMibSyntaxNotLeaf == 231);

// ERqHandlerKind
static_assert(eKindEnd == 0);
static_assert(eKindInteger == 1);
static_assert(eKindOctetString == 2);
static_assert(eKindObjectId == 3);
static_assert(eKindUnsigned == 4);
static_assert(eKindDisplayString == 5);
static_assert(eKindIpAddress == 6);
static_assert(eKindCounter64 == 7);
static_assert(eKindRowStatus == 8);
static_assert(eKindEntryStatus == 9);
static_assert(eKindEnumerated == 10);

// ERqAccess
static_assert(eRqWriteOnly == 1);
static_assert(eRqNotAccessible == 2);
static_assert(eRqReadOnly == 3);
static_assert(eRqReadWrite == 4);
static_assert(eRqReadCreate == 5);

// EConstraintKind
static_assert(eConstraintEnd == 0);
static_assert(eConstraintEnumeration == 1);
static_assert(eConstraintConvention == 2);
static_assert(eConstraintItem == 3);
static_assert(eConstraintRange == 4);
static_assert(eConstraintRefined == 5);

// ESnmpErrorStatus
static_assert(eSnmpNoError == 0);
static_assert(eSnmpTooBig == 1);
static_assert(eSnmpNoSuchName == 2);
static_assert(eSnmpBadValue == 3);
static_assert(eSnmpReadOnly == 4);
static_assert(eSnmpGenErr == 5);
static_assert(eSnmpNoAccess == 6);
static_assert(eSnmpWrongType == 7);
static_assert(eSnmpWrongLength == 8);
static_assert(eSnmpWrongEncoding == 9);
static_assert(eSnmpWrongValue == 10);
static_assert(eSnmpNoCreation == 11);
static_assert(eSnmpInconsistentValue == 12);
static_assert(eSnmpResourceUnavailable == 13);
static_assert(eSnmpCommitFailed == 14);
static_assert(eSnmpUndoFailed == 15);
static_assert(eSnmpAuthorizationError == 16);
static_assert(eSnmpNotWritable == 17);
static_assert(eSnmpInconsistentName == 18);

// EWaitResult
static_assert(eWaitDone == 0);
static_assert(eWaitTimeout == 258);
static_assert(eWaitRefused == 259);

// EThreadStart
static_assert(eThreadBlockSignals == 0);
static_assert(eThreadInheritSignals == 1);

// ESNMPv1TrapType
static_assert(eTrapColdStart == 0);
static_assert(eTrapWarmStart == 1);
static_assert(eTrapLinkDown == 2);
static_assert(eTrapLinkUp == 3);
static_assert(eTrapAuthenticationFailure == 4);
static_assert(eTrapEgpNeighborLoss == 5);
static_assert(eTrapEnterpriseSpecific == 6);

// Access codes and kinds are tested with these, inline.
static_assert(kRqLastKind == 10 && kRqStatusFlag == 1);

} // namespace VLK
