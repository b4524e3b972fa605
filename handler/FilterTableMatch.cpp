// Whether an identifier lies in a view.
#include <vkmibh/filter.h>

namespace VLK {

namespace {

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

bool BFilterTable::Filter(const BString& viewName, const BObjectIdentifier& oid)
{
    return Filter(viewName, oid, nullptr);
}

bool BFilterTable::Filter(const BString& viewName, const BObjectIdentifier& oid, unsigned* matches)
{
    TMutexLock lock(m_lock);
    Entry* rows[kMostMatches];
    unsigned count = 0;
    int position = FindActive(viewName, End());
    for (; position >= 0 && count < kMostMatches; position = FindActive(viewName, position)) {
        Entry* const row = RowOf(position);
        if (oid.IsUnderSubtree(row->subtree, row->mask.Data(), row->mask.Length()))
            rows[count++] = row;
    }
    if (count > 1)
        count = KeepLongest(rows, count);
    if (matches)
        *matches = count;
    return count > 0 && GreatestOf(rows, count)->type == eFilterIncluded;
}

} // namespace VLK
