// Implementations of scalars.
#pragma once

#include <vkmibh/implbase.h>

namespace VLK {

// One scalar, registered at its own OID; its instance is that OID followed by 0.
// The first row of the map describes it, whatever column the row gives.
//
// Ownership, Threads, Errors: as BMibImpl. A get handler's noSuchName is returned
//            as that error.
// Contract:  no fields of its own.
class VKMIBH_API BMibScalarImpl : public BMibImpl {
public:
    BMibScalarImpl(const BString& name, const BObjectIdentifier& oid);

    using BMibImpl::Get;
    using BMibImpl::Set;
    int Get(unsigned id, BVarBind& binding) override;
    int Set(unsigned id, ESnmpSetOpCode op, void** slot, const BVarBind& binding) override;
    int NextInstance(unsigned id, BVarBind& binding) override;
};

// Scalars registered together at the OID above them, one map row each; `column`
// is the scalar's arc under that OID.
//
// Ownership, Threads, Errors: as BMibImpl. A get handler's noSuchName becomes
//            the value noSuchInstance.
// Contract:  no fields of its own.
class VKMIBH_API BMibScalarGroupImpl : public BMibImpl {
public:
    BMibScalarGroupImpl(const BString& name, const BObjectIdentifier& oid);

    using BMibImpl::Get;
    using BMibImpl::Set;
    int Get(unsigned id, BVarBind& binding) override;
    int Set(unsigned id, ESnmpSetOpCode op, void** slot, const BVarBind& binding) override;
    int NextInstance(unsigned id, BVarBind& binding) override;
};

} // namespace VLK
