// Rows that managers name, shared by requests, notifications and the store.
#pragma once

#include "modules/StoredFields.h"

#include <map>
#include <string>
#include <utility>
#include <vkmibh/labels.h>
#include <vkmibh/sync.h>

namespace VLK::modules {

// SnmpAdminString (SIZE(1..32)), an IMPLIED index.
constexpr unsigned kRowNameMost = 32;
// Names that begin so are the agent's own: managers make no such rows.
constexpr const char* kOwnNames = "vkagentd.";

// What the rows of all these tables have.
struct SNamedRow {
    bool isActive = false;
    EStorageType storage = eStorageNonVolatile;
    unsigned set = 0; // a bit for each column that has been set

    static constexpr unsigned Bit(unsigned column) { return 1u << column; }
    static constexpr unsigned Bits() { return 0; }
    template <class... TMore>
    static constexpr unsigned Bits(unsigned column, TMore... more)
    {
        return Bit(column) | Bits(static_cast<unsigned>(more)...);
    }
};

// Permanent rows cannot be destroyed, readOnly ones not changed either (RFC 2579).
inline bool IsKept(EStorageType storage)
{
    return storage == eStoragePermanent || storage == eStorageReadOnly;
}

// The rows of one table, in the order of their index. TRow tells by kNeeded which of its
// columns have no default, and by Section() where it is stored; Load() and Save() are
// its fields in the store.
//
// Ownership: not of the store, which outlives it; null, and nothing is kept.
// Threads:   any. Its lock is the last one taken, after that of the store.
// Errors:    throws std::bad_alloc and changes nothing.
// Contract:  the store keeps the rows that are nonVolatile, active or not.
template <class TRow>
class TNamedRows : private INVCallback {
public:
    using Rows = std::map<std::string, TRow>;
    using Row = TRow;

    explicit TNamedRows(INonVolatile* store) : m_store(store)
    {
        const int count = store ? store->GetRecordCount(TRow::Section()) : 0;
        for (int position = 0; position < count; ++position)
            LoadAt(position);
    }

    // The first row behind that name; false: there is none.
    bool After(const std::string& name, std::string& next) const
    {
        TMutexLock lock(m_lock);
        const auto found = m_rows.upper_bound(name);
        if (found == m_rows.end())
            return false;
        next = found->first;
        return true;
    }
    // False: there is no row.
    template <class TLook>
    bool Look(const std::string& name, TLook look) const
    {
        TMutexLock lock(m_lock);
        const auto found = m_rows.find(name);
        if (found == m_rows.end())
            return false;
        look(found->second);
        return true;
    }
    // Makes the row when there is none.
    template <class TChange>
    void Change(const std::string& name, TChange change)
    {
        TMutexLock lock(m_lock);
        change(m_rows[name]);
        m_hasChanged = true;
    }
    size_t Count() const
    {
        TMutexLock lock(m_lock);
        return m_rows.size();
    }
    Rows Copy() const
    {
        TMutexLock lock(m_lock);
        return m_rows;
    }

    // The row as it is, or none.
    Rows Keep(const std::string& name) const
    {
        Rows kept;
        Look(name, [&](const TRow& row) { kept.emplace(name, row); });
        return kept;
    }
    // Takes the row away.
    void Extract(const std::string& name, Rows& taken)
    {
        TMutexLock lock(m_lock);
        taken.clear();
        const auto found = m_rows.find(name);
        if (found != m_rows.end())
            taken.insert(m_rows.extract(found));
        m_hasChanged = true;
    }
    // Makes the row what Keep() or Extract() found, without taking memory.
    void Restore(const std::string& name, Rows& before)
    {
        TMutexLock lock(m_lock);
        const auto old = before.find(name);
        const auto now = m_rows.find(name);
        if (old == before.end()) {
            if (now != m_rows.end())
                m_rows.erase(now);
        } else if (now != m_rows.end()) {
            std::swap(now->second, old->second);
        } else {
            m_rows.insert(before.extract(old));
        }
        m_hasChanged = true;
    }

    // Puts rows in the place of those that are readOnly.
    void ReplaceReadOnly(const Rows& rows)
    {
        Rows next;
        TMutexLock lock(m_lock);
        for (const auto& [name, row] : m_rows) {
            if (row.storage != eStorageReadOnly)
                next.emplace(name, row);
        }
        for (const auto& [name, row] : rows)
            next[name] = row;
        m_rows.swap(next);
    }
    // Whether a SET has changed a row since it was last asked.
    bool TakeChange()
    {
        TMutexLock lock(m_lock);
        return std::exchange(m_hasChanged, false);
    }

    // To be called without a lock of these rows.
    void RequestSave()
    {
        if (m_store)
            m_store->RequestUpdate(this);
    }

private:
    enum EField { eFieldName = 0, eFieldStorage = 100, eFieldActive = 101, eFieldSet = 102 };

    int Update() override
    {
        const Rows rows = Copy();
        m_store->OpenSection(TRow::Section());
        int status = 0;
        int number = 0;
        for (const auto& [name, row] : rows) {
            if (row.storage == eStorageNonVolatile)
                status |= SaveRow(std::to_string(++number), name, row);
        }
        return status;
    }
    int SaveRow(const std::string& key, const std::string& name, const TRow& row)
    {
        CEntryWriter writer(*m_store, TRow::Section(), key.c_str());
        writer.Octets(eFieldName, name);
        writer.Number(eFieldActive, row.isActive);
        writer.Number(eFieldSet, static_cast<int>(row.set));
        row.Save(writer);
        return writer.Status();
    }
    // A row that cannot be read is left out.
    void LoadAt(int position)
    {
        TRow row;
        std::string name;
        int isActive = 0;
        CEntryReader reader(*m_store, TRow::Section(), position);
        reader.Octets(eFieldName, name, kRowNameMost);
        reader.Number(eFieldActive, isActive, 0, 1);
        reader.Number(eFieldSet, row.set, 0, 0xffff);
        row.Load(reader);
        const bool isWhole = (row.set & TRow::kNeeded) == TRow::kNeeded || !isActive;
        if (!reader.IsGood() || name.empty() || !isWhole || name.rfind(kOwnNames, 0) == 0)
            return;
        row.isActive = isActive != 0;
        TMutexLock lock(m_lock);
        m_rows.emplace(std::move(name), std::move(row));
    }

    INonVolatile* const m_store;
    mutable TMutex m_lock{true};
    Rows m_rows VKMIBH_TSA(guarded_by(m_lock));
    bool m_hasChanged VKMIBH_TSA(guarded_by(m_lock)) = false;
};

} // namespace VLK::modules
