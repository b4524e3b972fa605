#include <vkmibh/tables.h>

#include "impl/Answers.h"
#include "impl/InstanceView.h"

namespace VLK {

namespace {

BObjectIdentifier FirstColumn(const BObjectIdentifier& prefix, unsigned low,
                              const BObjectIdentifier& suffix)
{
    BObjectIdentifier oid(prefix);
    // Without memory for the whole it is none, and the row is not registered.
    if (oid.Length() != prefix.Length() || !oid.Append(low) || !oid.Append(suffix, true))
        oid.Clear();
    return oid;
}

} // namespace

BMibRowImpl::BMibRowImpl(const BString& name, const BObjectIdentifier& prefix, unsigned low,
                         unsigned high, const BObjectIdentifier& suffix)
    : BMibImpl(name, FirstColumn(prefix, low, suffix), eImplRow, prefix.Length() + 1, high),
      m_rangePrefix(prefix), m_low(low), m_high(high), m_indexSuffix(suffix)
{
}

// The map's row for the column of a name that this conceptual row serves, or null.
const SRqHndlrMapEntry* BMibRowImpl::FindServed(const BObjectIdentifier& name) const
{
    const unsigned position = RangePosition();
    if (name.Length() != Oid().Length() || position == 0 || position > name.Length())
        return nullptr;
    const unsigned column = name[position - 1];
    if (column < m_low || column > m_high)
        return nullptr;
    const InstanceView index(name, position);
    if (index.Oid().Compare(m_indexSuffix) != 0)
        return nullptr;
    return FindRqHndlrEntry(column);
}

int BMibRowImpl::Get(unsigned id, BVarBind& binding)
{
    const SRqHndlrMapEntry* entry = FindServed(binding.Name());
    if (!entry)
        return AnswerException(binding, eNoSuchInstance);
    return Get(entry, id, binding.Value(), nullptr);
}

int BMibRowImpl::Set(unsigned id, ESnmpSetOpCode op, void** slot, const BVarBind& binding)
{
    const SRqHndlrMapEntry* entry = FindServed(binding.Name());
    if (!entry)
        return eSnmpNoSuchName;
    return Set(entry, id, op, slot, binding.Value(), nullptr);
}

// The column of the first instance after `name`, which lies after the prefix.
bool BMibRowImpl::NextColumn(const BObjectIdentifier& name, unsigned& column) const
{
    const unsigned position = RangePosition();
    if (!m_rangePrefix.IsStartingSubOidOf(name) || position == 0 || position > name.Length())
        return false;
    column = name[position - 1];
    if (column < m_low) {
        column = m_low;
        return true;
    }
    if (column > m_high)
        return false;
    // A name that ends at its column stands before the instance there. CONTRACT:
    // of a row without index suffix it is the instance, so the walk goes on to the
    // next column; answering it again would end every walk at the first one.
    const InstanceView index(name, position);
    if (index.Oid().Compare(m_indexSuffix) < 0)
        return true;
    if (column == m_high)
        return false;
    ++column;
    return true;
}

int BMibRowImpl::NextInstance(unsigned, BVarBind& binding)
{
    BObjectIdentifier& name = binding.Name();
    const unsigned position = RangePosition();
    if (name.Compare(m_rangePrefix) <= 0)
        return name.Set(Oid()) ? AnswerMoved(binding) : AnswerEnd(binding);
    unsigned column = 0;
    if (!NextColumn(name, column) || position > Oid().Length() || !name.Set(Oid()))
        return AnswerEnd(binding);
    name[position - 1] = column;
    return AnswerMoved(binding);
}

} // namespace VLK
