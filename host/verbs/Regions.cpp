#include "host/verbs/Regions.h"

#include "host/SavingHandler.h"

#include <new>

namespace VLK::host {

namespace {

unsigned DepthOf(const BMibNode& node)
{
    unsigned depth = 0;
    for (const BMibNode* around = node.Parent(); around; around = around->Parent())
        depth += around->HasSubtreeHandler() ? 1 : 0;
    return depth;
}

SRegion RegionAt(const BMibNode& node)
{
    SRegion region;
    node.GetOid(region.oid);
    region.depth = DepthOf(node);
    region.isSave = BSavingHandler::IsSave(region.oid);
    const BMibSubtreeHandler& handler = *node.SubtreeHandler();
    region.module.assign(handler.Name().c_str(), handler.Name().length());
    // A tree may be given nodes by hand.
    if (const auto* watched = dynamic_cast<const BWatchedHandler*>(&handler))
        region.slowness = watched->Slowness();
    return region;
}

} // namespace

BRegions::BRegions() = default;

BRegions::~BRegions() = default;

std::vector<SRegion> BRegions::Below(const BObjectIdentifier& oid) const
{
    const BLock lock(m_lock);
    std::vector<SRegion> regions;
    const bool isAll = oid.Length() == 0;
    for (const BMibNode* node = isAll ? GetFirstRoot() : FindNode(oid); node; node = node->Next()) {
        if (!node->HasSubtreeHandler())
            continue;
        SRegion region = RegionAt(*node);
        if (!isAll && !oid.IsStartingSubOidOf(region.oid))
            break;
        regions.push_back(std::move(region));
    }
    return regions;
}

std::optional<SRegion> BRegions::Holding(const BObjectIdentifier& oid) const
{
    const BLock lock(m_lock);
    const BMibNode* node = FindSubtreeHandlerNode(oid);
    if (!node)
        return std::nullopt;
    SRegion region = RegionAt(*node);
    if (region.isSave)
        return std::nullopt;
    return region;
}

// The one that it had, as a range may be in the tree in part.
BWatchedHandler* BRegions::WatchedFor(BMibSubtreeHandler& handler)
{
    const auto known = m_watched.find(&handler);
    if (known != m_watched.end() && known->second->StandsFor(handler))
        return known->second.get();
    auto watched = std::make_unique<BWatchedHandler>(handler);
    if (!watched->StandsFor(handler))
        throw std::bad_alloc();
    Retire(handler); // of one that was there before, and has gone without a word
    return (m_watched[&handler] = std::move(watched)).get();
}

// No request is inside, but a range goes on being served.
void BRegions::Retire(BMibSubtreeHandler& handler)
{
    const auto known = m_watched.find(&handler);
    if (known == m_watched.end())
        return;
    if (known->second->RangePosition() != 0)
        m_retired.push_back(std::move(known->second));
    m_watched.erase(known);
}

int BRegions::Register(BMibSubtreeHandler* handler)
{
    if (!handler)
        return 0;
    const BLock lock(m_lock);
    try {
        const bool isKnown = m_watched.count(handler) != 0;
        const int isDone = BMibTree::Register(WatchedFor(*handler));
        if (!isDone && !isKnown)
            Retire(*handler);
        return isDone;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

int BRegions::Unregister(BMibSubtreeHandler* handler)
{
    const BLock lock(m_lock);
    const auto known = m_watched.find(handler);
    if (known == m_watched.end())
        return 0;
    const int isDone = BMibTree::Unregister(known->second.get());
    Retire(*handler);
    return isDone;
}

int BRegions::Unregister(BObjectIdentifier& oid)
{
    const BLock lock(m_lock);
    return BMibTree::Unregister(oid);
}

} // namespace VLK::host
