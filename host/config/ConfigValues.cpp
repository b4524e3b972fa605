#include "host/config/ConfigValues.h"

#include <algorithm>
#include <cstdint>
#include <vector>
#include <vkmibh/base.h>

namespace VLK::host {

namespace {

constexpr size_t kMostName = 32;
constexpr size_t kMostCommunity = 255;
constexpr size_t kMostMask = 16;
constexpr unsigned kMostFirstArc = 2;   // itu-t, iso, joint
constexpr unsigned kMostSecondArc = 39; // but of joint

bool IsPrintable(char c) { return c >= ' ' && c <= '~'; }

// The digits up to the next dot or the end; false when they are no arc.
bool ReadArc(const std::string& text, size_t& at, unsigned& arc)
{
    uint64_t value = 0;
    size_t first = at;
    for (; at < text.size() && text[at] != '.'; ++at) {
        if (text[at] < '0' || text[at] > '9' || at - first == 10)
            return false;
        value = 10 * value + static_cast<unsigned>(text[at] - '0');
    }
    arc = static_cast<unsigned>(value);
    return at > first && value <= UINT32_MAX;
}

bool ReadArcs(const std::string& text, std::vector<unsigned>& arcs)
{
    size_t at = !text.empty() && text[0] == '.' ? 1 : 0;
    for (;; ++at) {
        unsigned arc = 0;
        if (arcs.size() == kMostArcs || !ReadArc(text, at, arc))
            return false;
        arcs.push_back(arc);
        if (at == text.size())
            return true;
    }
}

} // namespace

std::string CheckName(const std::string& text)
{
    if (text.empty())
        return "is empty";
    if (text.size() > kMostName)
        return "has more than 32 characters";
    if (!std::all_of(text.begin(), text.end(), IsPrintable))
        return "has characters that are not printable ASCII";
    return "";
}

std::string CheckCommunity(const std::string& text)
{
    if (text.empty())
        return "is empty";
    return text.size() > kMostCommunity ? "has more than 255 octets" : "";
}

std::string ReadOid(const std::string& text, BObjectIdentifier& oid)
{
    std::vector<unsigned> arcs;
    if (!ReadArcs(text, arcs))
        return "is no object identifier: write it in numbers, like 1.3.6.1.2.1.1";
    if (arcs[0] > kMostFirstArc)
        return "is no object identifier: the first number is 0, 1 or 2";
    if (arcs.size() > 1 && arcs[0] < kMostFirstArc && arcs[1] > kMostSecondArc)
        return "is no object identifier: after 0 or 1 the second number is 39 at most";
    oid = BObjectIdentifier(static_cast<unsigned>(arcs.size()), arcs.data());
    return "";
}

std::string ReadMask(const std::string& text, BOctetString& mask)
{
    std::vector<unsigned char> octets;
    size_t at = 0;
    while (octets.size() < kMostMask) {
        unsigned high = at < text.size() ? VKHexDigit2Int(text[at]) : ~0u;
        unsigned low = at + 1 < text.size() ? VKHexDigit2Int(text[at + 1]) : ~0u;
        if (high == ~0u || low == ~0u)
            break;
        octets.push_back(static_cast<unsigned char>(16 * high + low));
        at += 2;
        if (at == text.size()) {
            mask = BOctetString(static_cast<unsigned>(octets.size()), octets.data());
            return "";
        }
        if (text[at] == ':')
            ++at;
    }
    return "is no mask: write 1 to 16 octets in hexadecimal, like ff:a0";
}

} // namespace VLK::host
