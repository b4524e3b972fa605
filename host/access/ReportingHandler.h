// The MIB handler whose refusals the operator can read.
#pragma once

#include "host/SavingHandler.h"
#include "host/access/Access.h"

namespace VLK::host {

// Logs why the access control refused a GET or a SET, and why a walk sees nothing
// at all. Instances that a GETNEXT steps over leave no line.
//
// Ownership: the access control outlives it.
// Threads:   as BSavingHandler.
// Errors:    as BSavingHandler; a line without memory is lost.
class BReportingHandler : public BSavingHandler {
public:
    BReportingHandler(BAccess& access, ISetSaves& saves, BMibTree* tree = nullptr);

    int Query(int pduType, int transactionId, const BSecurityParams& security,
              const BString& context, BVarBindList& list, int& errorIndex) override;

private:
    void Report(int pduType, const BSecurityParams& security, const BString& context,
                const BObjectIdentifier& name, const SVacmDecision& decision);

    BAccess& m_access;
};

} // namespace VLK::host
