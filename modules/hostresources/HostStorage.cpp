#include "modules/hostresources/HostStorage.h"

#include "modules/hostresources/IndexedRows.h"

#include <climits>

namespace VLK::modules {

namespace {

constexpr uint64_t kMost = INT_MAX; // of an Integer32

// Room of `size` units, `used` of them taken, in a unit with which it can be told.
SStorageRow MakeRow(unsigned index, unsigned type, const std::string& description, uint64_t unit,
                    uint64_t size, uint64_t used)
{
    for (; unit > kMost; unit /= 2) {
        size *= 2;
        used *= 2;
    }
    while (size > kMost && unit <= kMost / 2) {
        unit *= 2;
        size /= 2;
        used /= 2;
    }
    SStorageRow row;
    row.index = index;
    row.type = type;
    row.description = description;
    row.unit = static_cast<int>(unit);
    row.size = static_cast<int>(std::min(size, kMost));
    row.used = static_cast<int>(std::min(used, kMost));
    return row;
}

uint64_t Without(uint64_t all, uint64_t free) { return all > free ? all - free : 0; }

std::vector<SStorageRow> MemoryRows(const SHostMemory& memory)
{
    enum { ePhysical = 1, eVirtual = 2, eBuffers = 3, eCached = 4, eSwap = 5 };
    constexpr uint64_t kUnit = 1024;
    const bool hasMemory = memory.total && memory.free;
    const bool hasSwap = memory.swapTotal && memory.swapFree;
    const uint64_t total = memory.total.value_or(0);
    const uint64_t used = Without(total, memory.free.value_or(0));
    const uint64_t swap = memory.swapTotal.value_or(0);
    const uint64_t swapped = Without(swap, memory.swapFree.value_or(0));
    std::vector<SStorageRow> rows;
    if (hasMemory)
        rows.push_back(MakeRow(ePhysical, eStorageKindRam, "Physical memory", kUnit, total, used));
    if (hasMemory && hasSwap)
        rows.push_back(MakeRow(eVirtual, eStorageKindVirtualMemory, "Virtual memory", kUnit,
                               total + swap, used + swapped));
    if (memory.total && memory.buffers)
        rows.push_back(
            MakeRow(eBuffers, eStorageKindOther, "Memory buffers", kUnit, total, *memory.buffers));
    if (memory.total && memory.cached)
        rows.push_back(
            MakeRow(eCached, eStorageKindOther, "Cached memory", kUnit, total, *memory.cached));
    if (hasSwap)
        rows.push_back(
            MakeRow(eSwap, eStorageKindVirtualMemory, "Swap space", kUnit, swap, swapped));
    return rows;
}

unsigned StorageKindOf(EDiskKind kind)
{
    return kind == eFloppyDisk    ? eStorageKindFloppyDisk
           : kind == eCompactDisc ? eStorageKindCompactDisc
                                  : eStorageKindFixedDisk;
}

} // namespace

CHostStorage::CHostStorage(IHostSource& source, unsigned timeToLive)
    : m_source(source), m_rows(source, timeToLive, [this] { return Read(); })
{
}

CHostStorage::Rows CHostStorage::Read()
{
    Rows rows = MemoryRows(m_source.ReadMemory());
    for (const SHostDisk& disk : m_source.ReadDisks()) {
        const unsigned next = kFirstDiskIndex + static_cast<unsigned>(m_indexes.size());
        const unsigned index = m_indexes.emplace(disk.mountPoint, next).first->second;
        rows.push_back(MakeRow(index, StorageKindOf(disk.kind), disk.mountPoint, disk.blockSize,
                               disk.blocks, Without(disk.blocks, disk.freeBlocks)));
    }
    SortByIndex(rows);
    return rows;
}

} // namespace VLK::modules
