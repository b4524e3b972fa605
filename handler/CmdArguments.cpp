// From the words of an operator to bindings.
#include "handler/CmdArguments.h"

#include <vkmibh/cmdline.h>

namespace VLK {

namespace {

constexpr char kAddressSwitch = 'a';
constexpr char kOctetSeparator = ':';

// The value without memory is shorter than its text.
ECmdError CheckLength(unsigned stored, unsigned wanted)
{
    return stored == wanted ? eCmdNoError : eCmdNoMemory;
}

// CONTRACT: pairs of hexadecimal digits joined by ':' are the octets they
// spell, a single pair too, so "10" is one octet and "deadbeef" is eight
// letters. A text that looks like pairs cannot be entered as it is.
ECmdError SetOctets(BObjectSyntax& value, const BString& text)
{
    if (!VKIsHexString(text.c_str(), static_cast<int>(text.length()), kOctetSeparator)) {
        value.SetOctets(text);
        return CheckLength(value.Octets().Length(), text.length());
    }
    BOctetString octets;
    if (!octets.AssignFromHexString(text.c_str()))
        return eCmdNoMemory;
    value.SetOctets(octets);
    return CheckLength(value.Octets().Length(), octets.Length());
}

ECmdError SetOpaque(BObjectSyntax& value, const BString& text)
{
    value.SetOpaque(BOctetString(text));
    return CheckLength(value.Octets().Length(), text.length());
}

ECmdError SetObjectId(BObjectSyntax& value, const BString& text)
{
    BObjectIdentifier oid;
    if (!oid.AssignFromDottedDecimalStr(text))
        return eCmdInvalidOid;
    value.SetObjectId(oid);
    return CheckLength(value.ObjectId().Length(), oid.Length());
}

ECmdError SetIpAddress(BObjectSyntax& value, const BString& text)
{
    BIpAddress address;
    if (!address.AssignFromDottedDecimalStr(text))
        return eCmdInvalidIpAddress;
    value.SetIpAddress(address);
    return eCmdNoError;
}

// CONTRACT: numbers of every kind are read by VKStrToInt32: digits up to the
// first other character, modulo 2^32, and none are 0. A Counter64 therefore has
// 32 bits.
ECmdError SetValue(BObjectSyntax& value, int tag, const BString& text)
{
    const int number = VKStrToInt32(text.c_str());
    const unsigned positive = static_cast<unsigned>(number);
    switch (tag) {
    case eAsnInteger:
        value.SetInt(number);
        return eCmdNoError;
    case eAsnOctetString:
        return SetOctets(value, text);
    case eAsnObjectId:
        return SetObjectId(value, text);
    case eAsnIpAddress:
        return SetIpAddress(value, text);
    case eAsnCounter32:
        value.SetCounter(positive);
        return eCmdNoError;
    case eAsnGauge32:
        value.SetGauge(positive);
        return eCmdNoError;
    case eAsnTimeTicks:
        value.SetTimeTicks(positive);
        return eCmdNoError;
    case eAsnOpaque:
        return SetOpaque(value, text);
    case eAsnCounter64:
        value.SetCtr64(BCounter64(0, positive));
        return eCmdNoError;
    default:
        return eCmdInvalidTag;
    }
}

// Puts a new last binding with a NULL value into the list. Without memory for
// its arcs a good name counts as a bad one.
ECmdError AppendName(BVarBindList& list, const BString& text)
{
    if (!list.Append(BObjectIdentifier()))
        return eCmdNoMemory;
    return list.Last().Name().AssignFromDottedDecimalStr(text) ? eCmdNoError : eCmdInvalidOid;
}

ECmdError AppendTriple(BVarBindList& list, const BString& name, PlainArguments& plain)
{
    const ECmdError error = AppendName(list, name);
    if (error != eCmdNoError)
        return error;
    const BString& tag = *plain.Next();
    return SetValue(list.Last().Value(), VKStrToInt32(tag.c_str()), *plain.Next());
}

} // namespace

int PlainArguments::Count() const
{
    PlainArguments all(m_args);
    while (all.Next())
        continue;
    return all.m_position + 1;
}

const BString* PlainArguments::Next()
{
    while (m_next < static_cast<int>(m_args.Count())) {
        const BString& arg = m_args[m_next++];
        if (BCmdLineParser::IsSwitch(arg))
            continue;
        ++m_position;
        return &arg;
    }
    return nullptr;
}

const BString* PlainArgumentAt(const BStringArray& args, int position)
{
    PlainArguments plain(args);
    while (const BString* const arg = plain.Next()) {
        if (plain.Position() == position)
            return arg;
    }
    return nullptr;
}

ECmdError LocalAddressOf(const BStringArray& args, BIpAddress& address)
{
    for (int i = 0; i < static_cast<int>(args.Count()); ++i) {
        if (!BCmdLineParser::IsSwitch(args[i]))
            continue;
        char letter = 0;
        BString value;
        if (!BCmdLineParser::SplitSwitch(args[i], letter, value))
            return eCmdNoMemory;
        if (letter != kAddressSwitch)
            continue;
        // CONTRACT: the first one counts, and one that is no address is not
        // reported: the request then has no local address.
        address.AssignFromDottedDecimalStr(value);
        break;
    }
    return eCmdNoError;
}

ECmdError NamesToList(const BStringArray& args, BVarBindList& list, int& position)
{
    PlainArguments plain(args);
    while (const BString* const name = plain.Next()) {
        const ECmdError error = AppendName(list, *name);
        position = plain.Position();
        if (error != eCmdNoError)
            return error;
    }
    return plain.Position() < 0 ? eCmdArgumentsRequired : eCmdNoError;
}

ECmdError TriplesToList(const BStringArray& args, BVarBindList& list, int& position)
{
    PlainArguments plain(args);
    const int count = plain.Count();
    if (count == 0)
        return eCmdArgumentsRequired;
    if (count % 3 != 0)
        return eCmdInvalidArguments;
    while (const BString* const name = plain.Next()) {
        const ECmdError error = AppendTriple(list, *name, plain);
        // A tag is judged when the value behind it was taken.
        position = error == eCmdInvalidTag ? plain.Position() - 1 : plain.Position();
        if (error != eCmdNoError)
            return error;
    }
    return eCmdNoError;
}

} // namespace VLK
