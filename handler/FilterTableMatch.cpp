// Whether an identifier lies in a view.
#include "handler/FilterFinder.h"

#include <new>

namespace VLK {

namespace {

// Fewer rows are as quickly walked.
constexpr int kManyRows = 8;
constexpr unsigned kMostMatches = 32;

// Keeps those with the longest subtree, in their order.
unsigned KeepLongest(BFilterTable::Entry** rows, unsigned count)
{
    unsigned longest = 0;
    for (unsigned i = 0; i < count; ++i) {
        if (rows[i]->subtree.Length() > longest)
            longest = rows[i]->subtree.Length();
    }
    unsigned kept = 0;
    for (unsigned i = 0; i < count; ++i) {
        if (rows[i]->subtree.Length() == longest)
            rows[kept++] = rows[i];
    }
    return kept;
}

// CONTRACT: the greatest subtree so far is held in the first row's own subtree:
// a look-up writes to the table, and readers of rows see it. The subtrees are
// equally long, so that the copy finds its room there.
const BFilterTable::Entry* GreatestOf(BFilterTable::Entry** rows, unsigned count)
{
    const BFilterTable::Entry* greatest = rows[0];
    for (unsigned i = 1; i < count; ++i) {
        if (rows[i]->subtree.Compare(rows[0]->subtree) > 0) {
            rows[0]->subtree = rows[i]->subtree;
            greatest = rows[i];
        }
    }
    return greatest;
}

} // namespace

bool BFilterTable::HasRows(const BString& viewName)
{
    TMutexLock lock(m_lock);
    return (IsFinderReady() && m_finder->HasRows(viewName)) || FindActive(viewName, End()) >= 0;
}

bool BFilterTable::Filter(const BString& viewName, const BObjectIdentifier& oid)
{
    return Filter(viewName, oid, nullptr);
}

bool BFilterTable::Covers(int position, const BString& viewName, const BObjectIdentifier& oid) const
{
    const Entry& row = *RowOf(position);
    return row.rowStatus == eRowActive && row.viewName == viewName &&
           oid.IsUnderSubtree(row.subtree, row.mask.Data(), row.mask.Length());
}

bool BFilterTable::IsFinderReady()
{
    if (!m_finder && End() >= kManyRows)
        m_finder = new (std::nothrow) Finder;
    return m_finder && m_finder->IsReady(*this);
}

// The last rows that cover the identifier, in the order of the walk from the end.
unsigned BFilterTable::FindCovering(const BString& viewName, const BObjectIdentifier& oid,
                                    Entry** rows)
{
    if (IsFinderReady()) {
        Finder::SFound found;
        m_finder->Find(*this, viewName, oid, found);
        for (unsigned i = 0; i < found.count; ++i)
            rows[i] = RowOf(found.positions[i]);
        return found.count;
    }
    unsigned count = 0;
    for (int position = End(); --position >= 0 && count < kMostMatches;) {
        if (Covers(position, viewName, oid))
            rows[count++] = RowOf(position);
    }
    return count;
}

bool BFilterTable::Filter(const BString& viewName, const BObjectIdentifier& oid, unsigned* matches)
{
    TMutexLock lock(m_lock);
    Entry* rows[kMostMatches];
    unsigned count = FindCovering(viewName, oid, rows);
    if (count > 1)
        count = KeepLongest(rows, count);
    if (matches)
        *matches = count;
    if (count == 0)
        return false;
    const Entry* const greatest = GreatestOf(rows, count);
    if (greatest != rows[0])
        Forget(); // the first one was written to
    return greatest->type == eFilterIncluded;
}

} // namespace VLK
