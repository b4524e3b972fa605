// A subtree handler that is only there to be registered.
#pragma once

#include <vkmibh/subtree.h>

namespace VLK {

inline BObjectIdentifier OidOf(const char* dotted)
{
    BObjectIdentifier oid;
    oid.AssignFromDottedDecimalStr(BString(dotted));
    return oid;
}

// Serves nothing: every request ends with genErr.
class CPlainHandler : public BMibSubtreeHandler {
public:
    explicit CPlainHandler(const BObjectIdentifier& oid, unsigned rangePosition = 0,
                           unsigned rangeUpperBound = 0)
        : BMibSubtreeHandler(BString("plain"), oid, rangePosition, rangeUpperBound)
    {
    }
    explicit CPlainHandler(const char* dotted, unsigned rangePosition = 0,
                           unsigned rangeUpperBound = 0)
        : CPlainHandler(OidOf(dotted), rangePosition, rangeUpperBound)
    {
    }

    using BMibSubtreeHandler::GetNext;
    int Get(unsigned, BVarBindList&, int&, int) override { return eSnmpGenErr; }
    int GetNext(unsigned, BVarBind&) override { return eSnmpGenErr; }
    int Set(unsigned, const BVarBindList&, ESnmpSetOpCode, void**, int&, int) override
    {
        return eSnmpGenErr;
    }
};

} // namespace VLK
