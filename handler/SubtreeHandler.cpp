// The defaults of a subtree handler.
#include <vkmibh/subtree.h>

namespace VLK {

BMibSubtreeHandler::BMibSubtreeHandler(const BString& name, const BObjectIdentifier& oid,
                                       unsigned rangePosition, unsigned rangeUpperBound)
    : m_name(name), m_oid(oid), m_rangePosition(rangePosition), m_rangeUpperBound(rangeUpperBound),
      m_implKind(eImplPlainHandler), m_mutex(true)
{
}

BMibSubtreeHandler::~BMibSubtreeHandler() = default;

void BMibSubtreeHandler::OnTimeout(BTimeInterval&) {}

int BMibSubtreeHandler::GetNext(unsigned, BVarBindList&, int&, int) { return eSnmpGenErr; }

bool BMibSubtreeHandler::HandlesInstance(const BObjectIdentifier&) { return false; }

IMIBInfo* BMibSubtreeHandler::GetIMibInfo() { return nullptr; }

BString BMibSubtreeHandler::ToString() { return BString("BMibSubtreeHandler"); }

} // namespace VLK
