// Request-handler maps and constraint maps: how an implementation declares
// its objects. impl.h holds the classes that work on them.
#pragma once

#include <vkmibh/mibinfo.h>
#include <vkmibh/subtree.h>

namespace VLK {

class BMibImpl;

// Selects the typed form of a row's handlers.
enum ERqHandlerKind {
    eKindEnd = 0,
    eKindInteger = 1,
    eKindOctetString = 2,
    eKindObjectId = 3,
    eKindUnsigned = 4,
    eKindDisplayString = 5,
    eKindIpAddress = 6,
    eKindCounter64 = 7,
    eKindRowStatus = 8,
    eKindEntryStatus = 9,
    eKindEnumerated = 10
};

// Access codes: readable above 2; 1, 4 and 5 are writable.
enum ERqAccess {
    eRqWriteOnly = 1,
    eRqNotAccessible = 2,
    eRqReadOnly = 3,
    eRqReadWrite = 4,
    eRqReadCreate = 5
};
constexpr bool RqIsReadable(int access) { return access > 2; }
constexpr bool RqIsWritable(int access) { return access == 1 || access == 4 || access == 5; }

enum EConstraintKind {
    eConstraintEnd = 0,
    eConstraintEnumeration = 1,
    eConstraintConvention = 2,
    eConstraintItem = 3,
    eConstraintRange = 4,
    eConstraintRefined = 5
};

struct SConstraintMapEntry {
    int kind;
    unsigned column;
    const char* name;
    int low;
    int high;
};

// The stored form of every get and set handler. TScalarRow and TColumnRow
// below make them from typed handlers; `value` points to the type that the
// row's kind names.
using FRqGetHandler = int (BMibImpl::*)(const BObjectIdentifier* instance, unsigned id,
                                        void* value, int flag);
using FRqSetHandler = int (BMibImpl::*)(const BObjectIdentifier* instance, ESnmpSetOpCode op,
                                        unsigned id, const void* value, void** slot);

struct SRqHndlrMapEntry {
    unsigned column;
    const char* name;
    int syntax;
    int access;
    unsigned kind;
    const SConstraintMapEntry* constraint;
    FRqGetHandler getHandler;
    FRqSetHandler setHandler;

    // Requests may run while a registration resolves constraints.
    const SConstraintMapEntry* Constraint() const
    {
        return __atomic_load_n(&constraint, __ATOMIC_ACQUIRE);
    }
};

} // namespace VLK
