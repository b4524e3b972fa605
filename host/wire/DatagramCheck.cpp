#include "host/wire/DatagramCheck.h"

#include <algorithm>
#include <cstdint>

namespace VLK::host {

namespace {

const int kDeepest = 5;       // message, scoped PDU, PDU, list, binding
const int kLongTag = 0x1f;    // of several octets; SNMP has none
const size_t kMostDigits = 4; // of a length
enum ETag {
    eAny = 0,
    eInteger = 0x02,
    eOctets = 0x04,
    eObjectId = 0x06,
    eSequence = 0x30,
    eIpAddress = 0x40,
    eCounter = 0x41,
    eTicks = 0x43,
    eUnsigned = 0x47,
    eFirstPdu = 0xa0,
    eTrapOfV1 = 0xa4,
    eLastPdu = 0xa8
};
const int kMostArcs = 128;
const int kVersion3 = 3;
const int kUsm = 3;
const int kPrivFlag = 2;

struct SElement {
    int tag = 0;
    const unsigned char* content = nullptr;
    size_t length = 0;
};

// Takes the element at the front; false when there is no whole one.
bool TakeElement(const unsigned char*& at, const unsigned char* end, SElement& element)
{
    if (end - at < 2)
        return false;
    element.tag = *at++;
    uint64_t length = *at++;
    if ((element.tag & kLongTag) == kLongTag)
        return false;
    if (length & 0x80) {
        size_t digits = length & 0x7f;
        if (digits == 0 || digits > kMostDigits || static_cast<size_t>(end - at) < digits)
            return false;
        length = 0;
        for (; digits; --digits)
            length = length << 8 | *at++;
    }
    if (length > static_cast<size_t>(end - at))
        return false;
    element.content = at;
    element.length = static_cast<size_t>(length);
    at += element.length;
    return true;
}

// Signed or unsigned: some managers send request ids above 2^31.
bool FitsIn32Bits(const SElement& number)
{
    if (number.length <= 4)
        return number.length > 0;
    const unsigned char* low = number.content + number.length - 4;
    unsigned char sign = number.content[0];
    if (sign != 0 && (sign != 0xff || !(*low & 0x80)))
        return false;
    return std::all_of(number.content, low, [=](unsigned char byte) { return byte == sign; });
}

// Its arcs have up to 32 bits each.
bool IsName(const SElement& name)
{
    uint64_t arc = 0;
    int arcs = 1; // the first octet is two
    for (size_t i = 0; i < name.length; ++i) {
        arc = arc << 7 | (name.content[i] & 0x7f);
        if (arc > UINT32_MAX)
            return false;
        if (name.content[i] & 0x80)
            continue;
        arc = 0;
        ++arcs;
    }
    return arcs <= kMostArcs && (name.length == 0 || !(name.content[name.length - 1] & 0x80));
}

// Whether there are elements and nothing else, and all numbers keep their value.
bool AreSound(const unsigned char* at, const unsigned char* end, int depth)
{
    const int constructed = 0x20;
    while (at != end) {
        SElement element;
        if (!TakeElement(at, end, element))
            return false;
        bool fits = true;
        if (element.tag & constructed)
            fits = depth > kDeepest ||
                   AreSound(element.content, element.content + element.length, depth + 1);
        else if (element.tag == eObjectId)
            fits = IsName(element);
        else if (element.tag == eInteger || element.tag == eUnsigned ||
                 (element.tag >= eCounter && element.tag <= eTicks))
            fits = FitsIn32Bits(element);
        if (!fits)
            return false;
    }
    return true;
}

// Of up to 32 bits.
int ValueOf(const SElement& number)
{
    unsigned value = number.content[0] & 0x80 ? ~0u : 0;
    for (size_t i = 0; i < number.length; ++i)
        value = value << 8 | number.content[i];
    return static_cast<int>(value);
}

// Whether the element holds those and nothing else; `parts` takes them.
template <size_t count>
bool Holds(const SElement& whole, const int (&tags)[count], SElement (&parts)[count])
{
    const unsigned char* at = whole.content;
    const unsigned char* const end = at + whole.length;
    for (size_t i = 0; i < count; ++i) {
        if (!TakeElement(at, end, parts[i]) || (tags[i] != eAny && parts[i].tag != tags[i]))
            return false;
    }
    return at == end;
}

template <size_t count>
bool Holds(const SElement& whole, const int (&tags)[count])
{
    SElement parts[count];
    return Holds(whole, tags, parts);
}

bool IsListOfBindings(const SElement& list)
{
    const unsigned char* at = list.content;
    const unsigned char* const end = at + list.length;
    while (at != end) {
        SElement binding;
        if (!TakeElement(at, end, binding) || binding.tag != eSequence ||
            !Holds(binding, {eObjectId, eAny}))
            return false;
    }
    return true;
}

// RFC 3416 section 3, RFC 1157 section 4.1.6.
bool IsPdu(const SElement& pdu)
{
    if (pdu.tag == eTrapOfV1)
        return Holds(pdu, {eObjectId, eIpAddress, eInteger, eInteger, eTicks, eSequence});
    SElement parts[4];
    return pdu.tag >= eFirstPdu && pdu.tag <= eLastPdu &&
           Holds(pdu, {eInteger, eInteger, eInteger, eSequence}, parts) &&
           IsListOfBindings(parts[3]);
}

// RFC 3414 section 2.4.
bool AreUsmParameters(const SElement& octets)
{
    SElement parts[1];
    return AreSound(octets.content, octets.content + octets.length, 1) &&
           Holds(octets, {eSequence}, parts) &&
           Holds(parts[0], {eOctets, eInteger, eInteger, eOctets, eOctets, eOctets});
}

bool IsScopedPdu(const SElement& scoped, bool isEncrypted)
{
    SElement parts[3];
    if (isEncrypted)
        return scoped.tag == eOctets;
    return scoped.tag == eSequence && Holds(scoped, {eOctets, eOctets, eAny}, parts) &&
           IsPdu(parts[2]);
}

// RFC 3412 section 6.
bool IsMessageOfV3(const SElement& message)
{
    SElement parts[4];
    SElement header[4];
    return Holds(message, {eInteger, eSequence, eOctets, eAny}, parts) &&
           Holds(parts[1], {eInteger, eInteger, eOctets, eInteger}, header) &&
           header[2].length == 1 && (ValueOf(header[3]) != kUsm || AreUsmParameters(parts[2])) &&
           IsScopedPdu(parts[3], header[2].content[0] & kPrivFlag);
}

bool IsMessageOfCommunity(const SElement& message)
{
    SElement parts[3];
    return Holds(message, {eInteger, eOctets, eAny}, parts) && IsPdu(parts[2]);
}

} // namespace

std::optional<int> MessageVersion(const unsigned char* message, size_t length)
{
    SElement whole;
    SElement version;
    if (!TakeElement(message, message + length, whole) || whole.tag != eSequence)
        return std::nullopt;
    const unsigned char* at = whole.content;
    if (!TakeElement(at, whole.content + whole.length, version) || version.tag != eInteger ||
        version.length == 0 || !FitsIn32Bits(version))
        return std::nullopt;
    return ValueOf(version);
}

bool IsSound(const unsigned char* message, size_t length)
{
    const unsigned char* at = message;
    SElement whole;
    if (!TakeElement(at, message + length, whole) || at != message + length ||
        !AreSound(message, at, 1))
        return false;
    return MessageVersion(message, length) == kVersion3 ? IsMessageOfV3(whole)
                                                        : IsMessageOfCommunity(whole);
}

} // namespace VLK::host
