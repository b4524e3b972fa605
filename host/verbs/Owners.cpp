// owners: the registered regions.
#include "host/verbs/VerbTexts.h"

#include <algorithm>

namespace VLK::host {

namespace {

// A region within another stands behind it, by two blanks for each around it.
std::string OidText(const SRegion& region)
{
    return std::string(size_t{2} * region.depth, ' ') + TextOf(region.oid.ToString());
}

} // namespace

CLines OwnersLines(const BRegions& regions, const BObjectIdentifier& above)
{
    CLines lines;
    std::vector<SRegion> below = regions.Below(above);
    below.erase(std::remove_if(below.begin(), below.end(),
                               [](const SRegion& region) { return region.isSave; }),
                below.end());
    size_t width = 0;
    for (const SRegion& region : below)
        width = std::max(width, OidText(region).size());
    for (const SRegion& region : below) {
        const std::string oid = OidText(region);
        lines.push_back(oid + std::string(width - oid.size() + 2, ' ') + region.module);
    }
    if (!lines.empty())
        return lines;
    if (above.Length() == 0)
        return {"no region is registered"};
    const std::optional<SRegion> around = regions.Holding(above);
    const std::string none = "no region at or below " + TextOf(above.ToString());
    if (!around)
        return {none};
    return {none + "; it lies in " + TextOf(around->oid.ToString()) + " of " + around->module};
}

} // namespace VLK::host
