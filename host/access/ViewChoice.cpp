#include "host/access/ViewChoice.h"

namespace VLK::host {

namespace {

constexpr unsigned kMostMatches = 32; // of which Filter() takes notice

bool Matches(const BFilterTable::Entry& row, const BObjectIdentifier& name)
{
    return name.IsUnderSubtree(row.subtree, row.mask.Data(), row.mask.Length());
}

// The family with the most arcs, of equally long ones that which sorts last
// (RFC 3415 section 4, vacmViewTreeFamilyTable).
bool GoesBefore(const BObjectIdentifier& subtree, const BObjectIdentifier& other)
{
    if (subtree.Length() != other.Length())
        return subtree.Length() > other.Length();
    return subtree.Compare(other) > 0;
}

} // namespace

SViewChoice ChooseRow(BFilterTable& views, const std::string& view, const BObjectIdentifier& name)
{
    const BString viewName(view.data(), static_cast<unsigned>(view.size()));
    TMutexLock lock(views.Mutex());
    SViewChoice choice;
    const BFilterTable::Entry* best = nullptr;
    unsigned matches = 0;
    for (int i = static_cast<int>(views.Count()); --i >= 0 && matches < kMostMatches;) {
        const BFilterTable::Entry* const row = views.PeekAt(i);
        if (row->rowStatus != eRowActive || row->viewName != viewName)
            continue;
        choice.hasRows = true;
        if (!Matches(*row, name))
            continue;
        ++matches;
        if (!best || GoesBefore(row->subtree, best->subtree))
            best = row;
    }
    if (best)
        choice.row = SFamily{best->subtree, best->mask, best->type};
    return choice;
}

} // namespace VLK::host
