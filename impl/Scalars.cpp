#include <vkmibh/scalars.h>

#include "impl/Answers.h"

namespace VLK {

namespace {

bool IsScalarInstance(const BObjectIdentifier& name, unsigned oidLength)
{
    return name.Length() == oidLength + 1 && name[oidLength] == 0;
}

} // namespace

BMibScalarImpl::BMibScalarImpl(const BString& name, const BObjectIdentifier& oid)
    : BMibImpl(name, oid, eImplScalar)
{
}

int BMibScalarImpl::Get(unsigned id, BVarBind& binding)
{
    if (!IsScalarInstance(binding.Name(), Oid().Length()))
        return AnswerException(binding, eNoSuchObject);
    const SRqHndlrMapEntry* entry = GetFirstRqHndlrEntry();
    if (!entry)
        return AnswerException(binding, eNoSuchObject);
    if (!RqIsReadable(entry->access))
        return AnswerException(binding, eNoSuchInstance);
    return Get(entry, id, binding.Value(), nullptr);
}

int BMibScalarImpl::Set(unsigned id, ESnmpSetOpCode op, void** slot, const BVarBind& binding)
{
    if (!IsScalarInstance(binding.Name(), Oid().Length()))
        return eSnmpNoSuchName;
    const SRqHndlrMapEntry* entry = GetFirstRqHndlrEntry();
    if (!entry || !RqIsWritable(entry->access))
        return eSnmpNotWritable;
    return Set(entry, id, op, slot, binding.Value(), nullptr);
}

int BMibScalarImpl::NextInstance(unsigned, BVarBind& binding)
{
    BObjectIdentifier& name = binding.Name();
    if (name.Compare(Oid()) > 0 || !GetFirstRqHndlrEntry())
        return AnswerEnd(binding);
    if (!name.Set(Oid()) || !name.Append(0u))
        return AnswerEnd(binding);
    return AnswerMoved(binding);
}

BMibScalarGroupImpl::BMibScalarGroupImpl(const BString& name, const BObjectIdentifier& oid)
    : BMibImpl(name, oid, eImplScalarGroup)
{
}

int BMibScalarGroupImpl::Get(unsigned id, BVarBind& binding)
{
    const BObjectIdentifier& name = binding.Name();
    const unsigned length = Oid().Length();
    if (name.Length() != length + 1 && name.Length() != length + 2)
        return AnswerException(binding, eNoSuchObject);
    const SRqHndlrMapEntry* entry = FindRqHndlrEntry(name[length]);
    if (!entry)
        return AnswerException(binding, eNoSuchObject);
    if (name.Length() == length + 1)
        return AnswerException(binding, eNoSuchInstance);
    if (name[length + 1] != 0)
        return AnswerException(binding, eNoSuchObject);
    if (!RqIsReadable(entry->access))
        return AnswerException(binding, eNoSuchInstance);
    const int status = Get(entry, id, binding.Value(), nullptr);
    return status == eSnmpNoSuchName ? AnswerException(binding, eNoSuchInstance) : status;
}

int BMibScalarGroupImpl::Set(unsigned id, ESnmpSetOpCode op, void** slot, const BVarBind& binding)
{
    const BObjectIdentifier& name = binding.Name();
    const unsigned length = Oid().Length();
    if (name.Length() != length + 2 || name[length + 1] != 0)
        return eSnmpNoSuchName;
    const SRqHndlrMapEntry* entry = FindRqHndlrEntry(name[length]);
    if (!entry || !RqIsWritable(entry->access))
        return eSnmpNotWritable;
    return Set(entry, id, op, slot, binding.Value(), nullptr);
}

int BMibScalarGroupImpl::NextInstance(unsigned, BVarBind& binding)
{
    BObjectIdentifier& name = binding.Name();
    const unsigned length = Oid().Length();
    const SRqHndlrMapEntry* entry = nullptr;
    if (name.Compare(Oid()) <= 0) {
        entry = GetFirstRqHndlrEntry();
    } else if (Oid().IsStartingSubOidOf(name)) {
        const unsigned column = name[length];
        if (name.Length() == length + 1)
            entry = FindRqHndlrEntry(column);
        if (!entry)
            entry = NextRqHndlrEntry(column);
    }
    if (!entry || !name.Set(Oid()) || !name.Append(entry->column) || !name.Append(0u))
        return AnswerEnd(binding);
    return AnswerMoved(binding);
}

} // namespace VLK
