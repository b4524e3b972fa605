#include "host/wire/DatagramCheck.h"

#include <algorithm>
#include <cstdint>

namespace VLK::host {

namespace {

const int kDeepest = 5; // message, scoped PDU, PDU, list, binding
enum ETag {
    eInteger = 0x02,
    eObjectId = 0x06,
    eSequence = 0x30,
    eCounter = 0x41,
    eTicks = 0x43,
    eUnsigned = 0x47
};

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
    if (length & 0x80) {
        size_t digits = length & 0x7f;
        if (digits > sizeof length || static_cast<size_t>(end - at) < digits)
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
        return true;
    const unsigned char* low = number.content + number.length - 4;
    unsigned char sign = number.content[0];
    if (sign != 0 && (sign != 0xff || !(*low & 0x80)))
        return false;
    return std::all_of(number.content, low, [=](unsigned char byte) { return byte == sign; });
}

bool ArcsFitIn32Bits(const SElement& name)
{
    uint64_t arc = 0;
    for (size_t i = 0; i < name.length; ++i) {
        arc = arc << 7 | (name.content[i] & 0x7f);
        if (arc > UINT32_MAX)
            return false;
        if (!(name.content[i] & 0x80))
            arc = 0;
    }
    return true;
}

bool AllFit(const unsigned char* at, const unsigned char* end, int depth)
{
    const int constructed = 0x20;
    SElement element;
    while (TakeElement(at, end, element)) {
        bool fits = true;
        if (element.tag & constructed)
            fits = depth > kDeepest ||
                   AllFit(element.content, element.content + element.length, depth + 1);
        else if (element.tag == eObjectId)
            fits = ArcsFitIn32Bits(element);
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

bool KeepsItsNumbers(const unsigned char* message, size_t length)
{
    return AllFit(message, message + length, 1);
}

} // namespace VLK::host
