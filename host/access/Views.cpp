#include "host/access/Views.h"

#include "host/HostError.h"

#include <algorithm>
#include <memory>
#include <new>

namespace VLK::host {

namespace {

BString NameOf(const SView& view)
{
    BString name(view.name.data(), static_cast<unsigned>(view.name.size()));
    if (name.length() != view.name.size())
        throw std::bad_alloc();
    return name;
}

void AddAll(BFilterTable& table, const std::vector<SView>& views, EStorageType storage)
{
    for (const SView& view : views) {
        for (const SFamily& family : view.families) {
            if (!table.Insert(NameOf(view), family.subtree, family.mask, family.type, storage,
                              eRowActive, false))
                throw std::bad_alloc();
        }
    }
}

BObjectIdentifier IndexOf(const BFilterTable::Entry& row)
{
    BObjectIdentifier index;
    if (!BFilterTable::MakeIndex(row.viewName, row.subtree, false, index))
        throw std::bad_alloc();
    return index;
}

bool IsBuiltIn(const BString& name)
{
    const std::vector<SView>& views = BuiltInViews();
    return std::any_of(views.begin(), views.end(),
                       [&](const SView& view) { return NameOf(view) == name; });
}

// A table calls the store with its lock held, and the store calls the table with
// its own: the one that is saved to never reads.
void ReadStored(BFilterTable& table, BStore& store)
{
    BFilterTable stored(&store, kViewSection);
    int records = store.GetRecordCount(kViewSection);
    if (!stored.InitFromNV(false) || stored.Count() != static_cast<unsigned>(records))
        throw BHostError(eExitStore, "the store holds views that cannot be read: --reset-store "
                                     "takes those of the configuration");
    while (const BFilterTable::Entry* next = stored.PeekAt(0)) {
        BObjectIdentifier index = IndexOf(*next);
        std::unique_ptr<BFilterTable::Entry> row(stored.Remove(index));
        if (IsBuiltIn(row->viewName))
            continue; // they are not for the store to change
        if (!table.Insert(row->viewName, row->subtree, row->mask, row->type, row->storageType,
                          row->rowStatus, false))
            throw std::bad_alloc();
    }
}

bool IsThere(BFilterTable& table, const SView& view, const SFamily& family)
{
    BObjectIdentifier index;
    if (!BFilterTable::MakeIndex(NameOf(view), family.subtree, false, index))
        throw std::bad_alloc();
    const BFilterTable::Entry* row = table.Peek(index);
    return row && row->mask == family.mask && row->type == family.type;
}

} // namespace

bool AreManaged(BStore* store) { return store && store->WasSaved(kViewSection); }

// The same rows, no more and no fewer.
bool AreThere(BFilterTable& table, const std::vector<SView>& views)
{
    unsigned count = 0;
    for (const SView& view : views) {
        for (const SFamily& family : view.families) {
            if (!IsThere(table, view, family))
                return false;
            ++count;
        }
    }
    for (const SView& view : BuiltInViews())
        count += static_cast<unsigned>(view.families.size());
    return table.Count() == count;
}

bool LoadViews(BFilterTable& table, BStore* store, const std::vector<SView>& configured)
{
    if (AreManaged(store))
        ReadStored(table, *store);
    else
        AddAll(table, configured, eStorageNonVolatile);
    AddAll(table, BuiltInViews(), eStorageReadOnly);
    return AreThere(table, configured);
}

void ReplaceViews(BFilterTable& table, const std::vector<SView>& configured)
{
    // One step for those who walk the table.
    TMutexLock lock(table.Mutex());
    table.Clear();
    AddAll(table, BuiltInViews(), eStorageReadOnly);
    AddAll(table, configured, eStorageNonVolatile);
}

std::unique_ptr<BFilterTable> CopyOf(BFilterTable& table)
{
    auto copy = std::make_unique<BFilterTable>(nullptr);
    TMutexLock lock(table.Mutex());
    for (int i = 0; const BFilterTable::Entry* row = table.PeekAt(i); ++i) {
        if (row->rowStatus == eRowActive &&
            !copy->Insert(row->viewName, row->subtree, row->mask, row->type, row->storageType,
                          eRowActive, false))
            throw std::bad_alloc();
    }
    return copy;
}

} // namespace VLK::host
