// From a typed get handler to a value on the wire.
#include <vkmibh/maprows.h>

#include "impl/KindSyntax.h"

namespace VLK {

namespace {

// One call of a row's get handler.
struct SGetCall {
    BMibImpl& impl;
    const SRqHndlrMapEntry& entry;
    const BObjectIdentifier* instance;
    unsigned id;

    template <class V>
    int operator()(V& value) const
    {
        return (impl.*entry.getHandler)(instance, id, &value, kRqStatusFlag);
    }
};

int GetInteger(const SGetCall& call, BObjectSyntax& result)
{
    int value = 0;
    const int status = call(value);
    if (status == eSnmpNoError)
        result.SetInt(value);
    return status;
}

template <class Status>
int GetStatus(const SGetCall& call, BObjectSyntax& result)
{
    Status value = static_cast<Status>(0);
    const int status = call(value);
    if (status == eSnmpNoError)
        result.SetInt(static_cast<int>(value));
    return status;
}

int GetUnsigned(const SGetCall& call, BObjectSyntax& result)
{
    unsigned value = 0;
    const int status = call(value);
    if (status != eSnmpNoError)
        return status;
    if (call.entry.syntax == eAsnCounter32)
        result.SetCounter(value);
    else if (call.entry.syntax == eAsnGauge32)
        result.SetGauge(value);
    else
        result.SetTimeTicks(value);
    return eSnmpNoError;
}

// A copy that found no memory must not pass for an empty value.
int Copied(unsigned wanted, unsigned got) { return wanted == got ? eSnmpNoError : eSnmpGenErr; }

int GetOctets(const SGetCall& call, BObjectSyntax& result)
{
    BOctetString value;
    const int status = call(value);
    if (status != eSnmpNoError)
        return status;
    if (call.entry.syntax == eAsnOpaque)
        result.SetOpaque(value);
    else
        result.SetOctets(value);
    return Copied(value.Length(), result.Octets().Length());
}

int GetText(const SGetCall& call, BObjectSyntax& result)
{
    BString value;
    const int status = call(value);
    if (status != eSnmpNoError)
        return status;
    result.SetOctets(value);
    return Copied(value.length(), result.Octets().Length());
}

int GetObjectId(const SGetCall& call, BObjectSyntax& result)
{
    BObjectIdentifier value;
    const int status = call(value);
    if (status != eSnmpNoError)
        return status;
    result.SetObjectId(value);
    return Copied(value.Length(), result.ObjectId().Length());
}

int GetIpAddress(const SGetCall& call, BObjectSyntax& result)
{
    BIpAddress value;
    const int status = call(value);
    if (status == eSnmpNoError)
        result.SetIpAddress(value);
    return status;
}

int GetCounter64(const SGetCall& call, BObjectSyntax& result)
{
    BCounter64 value;
    const int status = call(value);
    if (status == eSnmpNoError)
        result.SetCtr64(value);
    return status;
}

} // namespace

int BMibImpl::Get(const SRqHndlrMapEntry* entry, unsigned id, BObjectSyntax& value,
                  const BObjectIdentifier* instance)
{
    if (!entry || !entry->getHandler)
        return eSnmpGenErr;
    if (entry->kind > kRqLastKind)
        return eSnmpNoError;
    if (!KindHasSyntax(entry->kind, entry->syntax))
        return eSnmpGenErr;

    const SGetCall call{*this, *entry, instance, id};
    switch (entry->kind) {
    case eKindInteger:
    case eKindEnumerated:
        return GetInteger(call, value);
    case eKindOctetString:
        return GetOctets(call, value);
    case eKindObjectId:
        return GetObjectId(call, value);
    case eKindUnsigned:
        return GetUnsigned(call, value);
    case eKindDisplayString:
        return GetText(call, value);
    case eKindIpAddress:
        return GetIpAddress(call, value);
    case eKindCounter64:
        return GetCounter64(call, value);
    case eKindRowStatus:
        return GetStatus<ERowStatus>(call, value);
    default:
        return GetStatus<EEntryStatus>(call, value);
    }
}

} // namespace VLK
