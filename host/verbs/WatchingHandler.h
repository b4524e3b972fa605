// The MIB handler that the operator can look into.
#pragma once

#include "host/access/ReportingHandler.h"
#include "host/verbs/LastSet.h"
#include "host/verbs/Regions.h"

namespace VLK::host {

// Keeps the last SET, and times what the operator and the agent itself ask; requests of
// the wire bring a clock of their own.
//
// Ownership: the regions outlive it, too.
// Threads:   as BReportingHandler.
// Errors:    as BReportingHandler.
class BWatchingHandler : public BReportingHandler {
public:
    BWatchingHandler(BAccess& access, ISetSaves& saves, BRegions& regions);

    int Query(int pduType, int transactionId, const BSecurityParams& security,
              const BString& context, BVarBindList& list, int& errorIndex) override;
    const BLastSet& LastSet() const { return m_lastSet; }

private:
    int Set(int transactionId, const BSecurityParams& security, const BString& context,
            BVarBindList& list, int& errorIndex);
    EVacmAnswer RefusalOf(const BSecurityParams& security, const BString& context,
                          const BVarBindList& list, int status, int errorIndex) const;

    BAccess& m_access;
    BLastSet m_lastSet;
};

} // namespace VLK::host
