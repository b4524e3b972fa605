// The rows of a table of RMON-MIB, shared by requests, samples and the store.
#pragma once

#include "modules/StoredFields.h"

#include <map>
#include <new>
#include <string>
#include <utility>
#include <vkmibh/labels.h>
#include <vkmibh/nonvolatile.h>
#include <vkmibh/sync.h>

namespace VLK::modules {

// A copy that is whole.
template <class V>
V CopyOf(const V& value)
{
    V copy = value;
    if (!(copy == value))
        throw std::bad_alloc();
    return copy;
}

// Rows by their index, 1 to 65535. TSettings is what managers set, comparable, TRun
// what the agent keeps while the row is valid. A row that is invalid is not there.
//
// Ownership: not of the store, which outlives it; null, and nothing is kept.
// Threads:   any. Its lock is the last one taken, after that of the store, and no other
//            code is called with it but what Look() and Change() are given.
// Errors:    throws std::bad_alloc and changes nothing.
// Contract:  the store keeps the settings of the rows that are valid.
template <class TSettings, class TRun>
class TEntryRows : protected INVCallback {
public:
    struct SEntry {
        TSettings settings;
        EEntryStatus status = eEntryUnderCreation;
        TRun run;
    };
    using Entries = std::map<unsigned, SEntry>;

    explicit TEntryRows(INonVolatile* store) : m_store(store) {}

    // The status; 0: there is no row.
    int StatusOf(unsigned index) const
    {
        int status = 0;
        Look(index, [&](const SEntry& entry) { status = entry.status; });
        return status;
    }
    // The first row behind that index; 0: none.
    unsigned After(unsigned index) const
    {
        TMutexLock lock(m_lock);
        const auto found = m_entries.upper_bound(index);
        return found == m_entries.end() ? 0 : found->first;
    }
    // False: there is no row.
    template <class TLook>
    bool Look(unsigned index, TLook look) const
    {
        TMutexLock lock(m_lock);
        const auto found = m_entries.find(index);
        if (found == m_entries.end())
            return false;
        look(found->second);
        return true;
    }
    // Makes the row when there is none.
    template <class TChange>
    void Change(unsigned index, TChange change)
    {
        TMutexLock lock(m_lock);
        change(m_entries[index]);
    }

    // The row as it is, or none.
    Entries Keep(unsigned index) const
    {
        Entries kept;
        Look(index, [&](const SEntry& entry) {
            kept.emplace(index, SEntry{CopyOf(entry.settings), entry.status, {}});
        });
        return kept;
    }
    // Takes the row away, with what the agent keeps of it.
    void Extract(unsigned index, Entries& taken)
    {
        TMutexLock lock(m_lock);
        taken.clear();
        const auto found = m_entries.find(index);
        if (found != m_entries.end())
            taken.insert(m_entries.extract(found));
    }
    // Makes the row what Keep() or Extract() found, without taking memory. One that went
    // by itself since Keep() stays away.
    void Restore(unsigned index, Entries& before, bool wasExtracted)
    {
        TMutexLock lock(m_lock);
        const auto old = before.find(index);
        const auto now = m_entries.find(index);
        if (old == before.end()) {
            if (now != m_entries.end())
                m_entries.erase(now);
        } else if (now != m_entries.end()) {
            std::swap(now->second.settings, old->second.settings);
            now->second.status = old->second.status;
        } else if (wasExtracted) {
            m_entries.insert(before.extract(old));
        }
    }
    // Whether there was one.
    template <class TWhich>
    bool EraseIf(unsigned index, TWhich which)
    {
        TMutexLock lock(m_lock);
        const auto found = m_entries.find(index);
        if (found == m_entries.end() || !which(found->second))
            return false;
        m_entries.erase(found);
        return true;
    }

    // To be called without a lock of these rows.
    void RequestSave()
    {
        if (m_store)
            m_store->RequestUpdate(this);
    }

protected:
    virtual const char* Section() const = 0;
    virtual int SaveEntry(const char* key, unsigned index, const TSettings& settings) = 0;

    INonVolatile* Store() const { return m_store; }
    int Update() override
    {
        std::map<unsigned, TSettings> valid;
        {
            TMutexLock lock(m_lock);
            for (const auto& [index, entry] : m_entries) {
                if (entry.status == eEntryValid)
                    valid.emplace(index, CopyOf(entry.settings));
            }
        }
        m_store->OpenSection(Section());
        int status = 0;
        int number = 0;
        for (const auto& [index, settings] : valid)
            status |= SaveEntry(std::to_string(++number).c_str(), index, settings);
        return status;
    }

    mutable TMutex m_lock{true};
    Entries m_entries VKMIBH_TSA(guarded_by(m_lock));

private:
    INonVolatile* const m_store;
};

} // namespace VLK::modules
