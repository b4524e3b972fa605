// Variable binding and binding list.
#include <vkmibh/values.h>

#include <utility>

#include "foundation/Bytewise.h"

namespace VLK {

BVarBind::BVarBind(const BObjectIdentifier& name) : m_name(name) {}

BVarBind::BVarBind(const BObjectIdentifier& name, const BObjectSyntax& value)
    : m_name(name), m_value(value)
{
}

BVarBind& BVarBind::operator=(const BVarBind& other)
{
    if (this != &other)
        Assign(other);
    return *this;
}

void BVarBind::Set(const BObjectIdentifier& name) { m_name.Set(name); }

void BVarBind::Set(const BObjectIdentifier& name, const BObjectSyntax& value)
{
    // The name may be the identifier held by the value that is replaced, and
    // then it is copied before the value goes.
    m_name.Set(name);
    m_value.Assign(value);
}

void BVarBind::Assign(const BVarBind& other)
{
    if (&other == this)
        return;
    m_name.Set(other.m_name);
    m_value.Assign(other.m_value);
}

BVarBindList::BVarBindList(const BVarBindList& other) : BVarBindList() { Assign(other); }

BVarBindList& BVarBindList::operator=(const BVarBindList& other)
{
    if (this != &other)
        Assign(other);
    return *this;
}

// Puts a new last binding in its place by `fill(slot)`. The old storage goes
// only after that, since the argument may be one of its bindings.
template <class Fill>
bool BVarBindList::AppendFilled(Fill fill)
{
    if (m_count < m_capacity) {
        fill(m_bindings[m_count++]);
        return true;
    }
    const std::uint64_t capacity = std::uint64_t(m_capacity) + s_growBy;
    BVarBind* bindings = NewItems<BVarBind>(capacity);
    if (!bindings)
        return false;
    fill(bindings[m_count]);
    MoveItems(bindings, m_bindings, m_count);
    ZeroItems(m_bindings, m_capacity);
    delete[] m_bindings;
    m_bindings = bindings;
    m_capacity = static_cast<unsigned>(capacity);
    ++m_count;
    return true;
}

bool BVarBindList::Append(const BVarBind& binding)
{
    return AppendFilled([&](BVarBind& slot) { slot.Assign(binding); });
}

bool BVarBindList::Append(const BObjectIdentifier& name)
{
    return AppendFilled([&](BVarBind& slot) {
        slot.Set(name);
        slot.Value().SetNull();
    });
}

bool BVarBindList::Append(const BObjectIdentifier& name, const BObjectSyntax& value)
{
    return AppendFilled([&](BVarBind& slot) { slot.Set(name, value); });
}

bool BVarBindList::Append(const BVarBindList& other)
{
    const unsigned count = other.m_count;
    for (unsigned i = 0; i < count; ++i) {
        if (!Append(other.m_bindings[i]))
            return false;
    }
    return true;
}

bool BVarBindList::Reserve(unsigned capacity)
{
    return capacity <= m_capacity || Enlarge(m_bindings, m_count, m_capacity, capacity);
}

bool BVarBindList::Assign(const BVarBindList& other)
{
    if (&other == this)
        return true;
    Clear();
    if (other.m_count == 0)
        return true;
    m_bindings = NewItems<BVarBind>(other.m_count);
    if (!m_bindings)
        return false;
    m_count = m_capacity = other.m_count;
    for (unsigned i = 0; i < m_count; ++i)
        m_bindings[i].Assign(other.m_bindings[i]);
    return true;
}

bool BVarBindList::Remove(int index)
{
    if (index < 0 || static_cast<unsigned>(index) >= m_count)
        return false;
    m_bindings[index].~BVarBind();
    // CONTRACT: the slot that becomes free is all zero: no name, and a tag that is
    // 0 and not NULL until the slot is used again.
    CloseGap(m_bindings, m_count, static_cast<unsigned>(index));
    --m_count;
    return true;
}

void BVarBindList::Clear()
{
    delete[] m_bindings;
    m_bindings = nullptr;
    m_count = 0;
    m_capacity = 0;
}

} // namespace VLK
