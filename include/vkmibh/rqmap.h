// Request-handler maps and constraint maps: the static tables by which an
// implementation declares its objects. The classes that work on them are in
// implbase.h, the helpers that write their rows in maprows.h.
#pragma once

#include <vkmibh/mibinfo.h>
#include <vkmibh/subtree.h>

// Asks the compiler to refuse a static table that would need code to run before
// main(), so that maps are whole whatever is initialised first.
#if defined(__clang__)
#define VKMIBH_CONSTINIT [[clang::require_constant_initialization]]
#elif defined(__GNUC__)
#define VKMIBH_CONSTINIT __constinit
#else
#define VKMIBH_CONSTINIT
#endif

namespace VLK {

class BMibImpl;

// Selects the typed form of a row's handlers. Kinds above the last one are
// accepted and ignored.
enum ERqHandlerKind {
    eKindEnd = 0,
    eKindInteger = 1,       // int
    eKindOctetString = 2,   // BOctetString; OCTET STRING or Opaque
    eKindObjectId = 3,      // BObjectIdentifier
    eKindUnsigned = 4,      // unsigned; Counter32, Gauge32 or TimeTicks
    eKindDisplayString = 5, // BString
    eKindIpAddress = 6,     // BIpAddress
    eKindCounter64 = 7,     // BCounter64
    eKindRowStatus = 8,     // ERowStatus
    eKindEntryStatus = 9,   // EEntryStatus
    eKindEnumerated = 10    // int, or an enumeration of ints
};
constexpr unsigned kRqLastKind = eKindEnumerated;
constexpr bool RqIsStatusKind(unsigned kind)
{
    return kind == eKindRowStatus || kind == eKindEntryStatus;
}

// The access an object's row declares.
enum ERqAccess {
    eRqWriteOnly = 1,
    eRqNotAccessible = 2,
    eRqReadOnly = 3,
    eRqReadWrite = 4,
    eRqReadCreate = 5
};
constexpr bool RqIsReadable(int access) { return access > 2; }
constexpr bool RqIsWritable(int access) { return access == 1 || access == 4 || access == 5; }

// What a constraint row says. Enumeration: the items that follow it.
// Convention: whatever the named convention says. Refined: this row's range,
// or the named convention when low and high are both 0.
enum EConstraintKind {
    eConstraintEnd = 0,
    eConstraintEnumeration = 1,
    eConstraintConvention = 2,
    eConstraintItem = 3,
    eConstraintRange = 4,
    eConstraintRefined = 5
};

// A row of a constraint map; a row of kind 0 ends the map.
struct SConstraintMapEntry {
    int kind;
    unsigned column;  // 0 in tables of conventions
    const char* name; // of the convention, or the label of an item
    int low;          // an item's value
    int high;
};
inline constexpr SConstraintMapEntry kConstraintEnd{};

// The stored form of every get and set handler; ScalarRow and ColumnRow make it
// from typed ones. `instance` is null for scalars, `value` points to the type
// named beside the row's kind, `flag` is kRqStatusFlag.
using FRqGetHandler = int (BMibImpl::*)(const BObjectIdentifier* instance, unsigned id, void* value,
                                        int flag);
using FRqSetHandler = int (BMibImpl::*)(const BObjectIdentifier* instance, ESnmpSetOpCode op,
                                        unsigned id, const void* value, void** slot);

// What the get handler of a status column is told with every call.
constexpr int kRqStatusFlag = 1;

// A row of a request-handler map: one scalar or one column. Rows stand in rising
// order of `column`; a row of kind 0 ends the map. All but `constraint` is fixed
// by the module's source; that one is filled when the module is registered.
struct SRqHndlrMapEntry {
    unsigned column;
    const char* name;
    int syntax;
    int access;
    unsigned kind;
    const SConstraintMapEntry* constraint;
    FRqGetHandler getHandler; // null: not readable
    FRqSetHandler setHandler; // null: not writable

    // Requests may run while a registration resolves constraints.
    const SConstraintMapEntry* Constraint() const
    {
        return __atomic_load_n(&constraint, __ATOMIC_ACQUIRE);
    }
};

} // namespace VLK
