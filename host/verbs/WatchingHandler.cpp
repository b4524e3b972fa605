#include "host/verbs/WatchingHandler.h"

#include "host/RequestTransaction.h"

#include <ctime>

namespace VLK::host {

namespace {

// To some milliseconds, for which no clock has to be read.
std::chrono::system_clock::time_point Now()
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME_COARSE, &now);
    return std::chrono::system_clock::time_point(std::chrono::seconds(now.tv_sec) +
                                                 std::chrono::nanoseconds(now.tv_nsec));
}

} // namespace

BWatchingHandler::BWatchingHandler(BAccess& access, ISetSaves& saves, BRegions& regions)
    : BReportingHandler(access, saves, &regions), m_access(access)
{
}

int BWatchingHandler::Query(int pduType, int transactionId, const BSecurityParams& security,
                            const BString& context, BVarBindList& list, int& errorIndex)
{
    std::optional<BRequestClock> clock;
    if (!BRequestTransaction::OfThisThread())
        clock.emplace();
    if (pduType == ePduSet)
        return Set(transactionId, security, context, list, errorIndex);
    return BReportingHandler::Query(pduType, transactionId, security, context, list, errorIndex);
}

int BWatchingHandler::Set(int transactionId, const BSecurityParams& security,
                          const BString& context, BVarBindList& list, int& errorIndex)
{
    const std::chrono::system_clock::time_point at = Now();
    const BRightsOfRequest rights(m_access); // also for what is asked afterwards
    const BSetTrace trace(list.Count());
    const int status =
        BReportingHandler::Query(ePduSet, transactionId, security, context, list, errorIndex);
    if (!trace.IsNested())
        m_lastSet.Keep(trace, at, security, context, list, status, errorIndex,
                       RefusalOf(security, context, list, status, errorIndex));
    return status;
}

// Asked again: the answer to the request does not tell.
EVacmAnswer BWatchingHandler::RefusalOf(const BSecurityParams& security, const BString& context,
                                        const BVarBindList& list, int status, int errorIndex) const
{
    if (status != eSnmpAuthorizationError || errorIndex < 1 ||
        errorIndex > static_cast<int>(list.Count()))
        return eVacmAllowed;
    const BRightsOfRequest rights(m_access);
    return rights->vacm.Decide(security, eViewWrite, context, list[errorIndex - 1].Name()).answer;
}

} // namespace VLK::host
