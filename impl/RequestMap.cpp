// Look-ups in the request-handler map, and the constraints of its rows.
#include <vkmibh/implbase.h>

#include <cstring>
#include <mutex>

namespace VLK {

namespace {

// Maps are shared by all objects of a class, so one lock for all of them.
std::mutex g_constraintLock;

bool SameName(const char* a, const char* b) { return a && b && std::strcmp(a, b) == 0; }

const SConstraintMapEntry* FindConvention(const SConstraintMapEntry* row, const char* name)
{
    for (; row && row->kind != eConstraintEnd; ++row) {
        const bool heads = row->kind == eConstraintEnumeration || row->kind == eConstraintRange;
        if (heads && SameName(row->name, name))
            return row;
    }
    return nullptr;
}

// The row that says what holds for the column; null when none does.
const SConstraintMapEntry* FindDecidingRow(const SConstraintMapEntry* row, unsigned column)
{
    for (; row->kind != eConstraintEnd; ++row) {
        if (row->column != column)
            continue;
        if (row->kind == eConstraintEnumeration || row->kind == eConstraintConvention ||
            row->kind == eConstraintRange || row->kind == eConstraintRefined)
            return row;
    }
    return nullptr;
}

} // namespace

const SRqHndlrMapEntry* BMibImpl::GetFirstRqHndlrEntry() const
{
    const SRqHndlrMapEntry* map = GetRqHndlrMap();
    return map && map->kind != eKindEnd ? map : nullptr;
}

const SRqHndlrMapEntry* BMibImpl::FindRqHndlrEntry(unsigned column) const
{
    const SRqHndlrMapEntry* entry = GetRqHndlrMap();
    for (; entry && entry->kind != eKindEnd; ++entry) {
        if (entry->column == column)
            return entry;
    }
    return nullptr;
}

const SRqHndlrMapEntry* BMibImpl::FindRqHndlrEntry(const char* name) const
{
    const SRqHndlrMapEntry* entry = name ? GetRqHndlrMap() : nullptr;
    for (; entry && entry->kind != eKindEnd; ++entry) {
        if (SameName(entry->name, name))
            return entry;
    }
    return nullptr;
}

const SRqHndlrMapEntry* BMibImpl::NextRqHndlrEntry(unsigned column) const
{
    const SRqHndlrMapEntry* entry = GetRqHndlrMap();
    for (; entry && entry->kind != eKindEnd; ++entry) {
        if (entry->column > column)
            return entry;
    }
    return nullptr;
}

const SRqHndlrMapEntry* BMibImpl::NextRqHndlrEntry(const char* name) const
{
    const SRqHndlrMapEntry* entry = FindRqHndlrEntry(name);
    return entry && entry[1].kind != eKindEnd ? entry + 1 : nullptr;
}

const SConstraintMapEntry* BMibImpl::FindTCConstraintMapEntry(const char* name) const
{
    const SConstraintMapEntry* row = FindConvention(s_tcConstraints, name);
    return row ? row : FindConvention(m_externalConventions, name);
}

void BMibImpl::SetExtrenalTCConstraints(const SConstraintMapEntry* conventions)
{
    m_externalConventions = conventions;
}

void BMibImpl::ResolveConstraints()
{
    SRqHndlrMapEntry* entry = GetRqHndlrMap();
    const SConstraintMapEntry* constraints = GetConstraintMap();
    if (!entry || !constraints)
        return;
    const std::lock_guard<std::mutex> lock(g_constraintLock);
    for (; entry->kind != eKindEnd; ++entry) {
        const SConstraintMapEntry* row = FindDecidingRow(constraints, entry->column);
        if (!row)
            continue;
        const bool named = row->kind == eConstraintConvention ||
                           (row->kind == eConstraintRefined && row->low == 0 && row->high == 0);
        const SConstraintMapEntry* resolved = named ? FindTCConstraintMapEntry(row->name) : row;
        if (entry->Constraint() != resolved)
            __atomic_store_n(&entry->constraint, resolved, __ATOMIC_RELEASE);
    }
}

} // namespace VLK
