// The storage of a host, as rows of hrStorageTable.
#pragma once

#include "modules/hostresources/Snapshot.h"

namespace VLK::modules {

// The last arcs of the types below hrStorageTypes.
enum EStorageKind : unsigned {
    eStorageKindOther = 1,
    eStorageKindRam = 2,
    eStorageKindVirtualMemory = 3,
    eStorageKindFixedDisk = 4,
    eStorageKindFloppyDisk = 6,
    eStorageKindCompactDisc = 7
};

struct SStorageRow {
    unsigned index = 0;
    unsigned type = 0;
    std::string description;
    int unit = 0; // bytes
    int size = 0; // units
    int used = 0;
};

// The storage of a host. Memory has fixed indexes; a mount point keeps the one it
// was given when it was first seen, gone or not.
//
// Ownership: not of the source, which outlives it.
// Threads:   as TSnapshot.
// Errors:    as TSnapshot.
// Contract:  rows are sorted by their indexes. Units are doubled until sizes fit.
class CHostStorage {
public:
    static constexpr unsigned kFirstDiskIndex = 101;

    using Rows = std::vector<SStorageRow>;

    CHostStorage(IHostSource& source, unsigned timeToLive);
    void SetTimeToLive(unsigned timeToLive) { m_rows.SetTimeToLive(timeToLive); }
    std::shared_ptr<const Rows> At(unsigned request) { return m_rows.At(request); }

private:
    Rows Read();

    IHostSource& m_source;
    std::map<std::string, unsigned> m_indexes; // of mount points; under the lock of m_rows
    TSnapshot<Rows> m_rows;
};

} // namespace VLK::modules
