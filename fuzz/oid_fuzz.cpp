// Object identifiers against std::vector: text, order, index components, subtrees.
#include "fuzz/Fuzz.h"
#include "tests/support/Oids.h"

#include <algorithm>
#include <optional>

namespace VLK::Fuzz {
namespace {

using Arcs = std::vector<unsigned>;

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

std::optional<unsigned> ComponentOf(const std::string& text)
{
    unsigned value = 0;
    for (char digit : text) {
        if (digit < '0' || digit > '9')
            return std::nullopt;
        value = value * 10 + static_cast<unsigned>(digit - '0');
    }
    return text.empty() || text.size() > 10 ? std::nullopt : std::optional(value);
}

// What a dotted text means; nothing when it is none.
std::optional<Arcs> ArcsOfText(std::string text)
{
    text.erase(0, std::min(text.find_first_not_of(" \t"), text.size()));
    if (text.empty())
        return std::nullopt;
    if (text[0] == '.')
        text.erase(0, 1);
    Arcs arcs;
    while (!text.empty()) {
        const size_t dot = text.find('.');
        std::string part = text.substr(0, dot);
        text.erase(0, dot == std::string::npos ? dot : dot + 1);
        while (dot == std::string::npos && !part.empty() && IsBlank(part.back()))
            part.pop_back();
        const std::optional<unsigned> arc = ComponentOf(part);
        if (!arc)
            return std::nullopt;
        arcs.push_back(*arc);
    }
    return arcs;
}

std::string DottedOf(const Arcs& arcs)
{
    std::string text;
    for (unsigned arc : arcs)
        text += (text.empty() ? "" : ".") + std::to_string(arc);
    return text;
}

void CheckText(CBytes& bytes)
{
    static const char kLikely[] = "0123456789.. \t";
    std::string text = bytes.ConsumeRandomLengthString(200);
    if (bytes.ConsumeBool()) {
        for (char& c : text)
            c = kLikely[static_cast<unsigned char>(c) % (sizeof kLikely - 1)];
    }
    const std::optional<Arcs> expected = ArcsOfText(text);
    BObjectIdentifier oid(7u);
    const bool isDone = oid.AssignFromDottedDecimalStr(TextOf(text));
    if (isDone != expected.has_value() || Test::ArcsOf(oid) != expected.value_or(Arcs()))
        Differ("text '" + text + "'");
    Require(isDone || (!oid.Arcs() && oid.Capacity() == 0), "storage after a refused text");
    Require(PlainOf(oid.ToString()) == DottedOf(Test::ArcsOf(oid)), "the dotted text");
}

// Where the component ends that starts at `from`; nothing when there is none.
std::optional<size_t> EndOfString(const Arcs& arcs, size_t from, bool isImplied, unsigned least,
                                  unsigned most)
{
    if (from >= arcs.size())
        return std::nullopt;
    const size_t begin = isImplied ? from : from + 1;
    const size_t count = isImplied ? arcs.size() - from : arcs[from];
    if (count > arcs.size() - begin)
        return std::nullopt;
    for (size_t i = begin; i < begin + count; ++i) {
        if (arcs[i] < least || arcs[i] > most)
            return std::nullopt;
    }
    return begin + count;
}

std::optional<size_t> EndOfAddress(const Arcs& arcs, size_t from)
{
    const bool fits = arcs.size() >= 4 && from <= arcs.size() - 4 &&
                      std::all_of(arcs.begin() + static_cast<long>(from),
                                  arcs.begin() + static_cast<long>(from) + 4,
                                  [](unsigned arc) { return arc <= 255; });
    return fits ? std::optional(from + 4) : std::nullopt;
}

void RequireEnd(bool isThere, int position, size_t from, std::optional<size_t> expected)
{
    Require(isThere == expected.has_value(), "whether an index component is there");
    Require(position == static_cast<int>(expected.value_or(from)), "where it ends");
}

void CheckIndex(CBytes& bytes)
{
    const Arcs arcs = TakeArcs(bytes, 40);
    const size_t from = bytes.ConsumeIntegralInRange<size_t>(0, 41);
    const bool isImplied = bytes.ConsumeBool();
    const BObjectIdentifier oid = Test::MakeOid(arcs);
    int position = static_cast<int>(from);
    bool isThere = oid.IsCreatedFromOctetStr(position, isImplied);
    RequireEnd(isThere, position, from, EndOfString(arcs, from, isImplied, 0, 255));
    position = static_cast<int>(from);
    isThere = oid.IsCreatedFromAsciiStr(position, isImplied);
    RequireEnd(isThere, position, from, EndOfString(arcs, from, isImplied, 32, 127));
    position = static_cast<int>(from);
    isThere = oid.IsCreatedFromIpAddr(position);
    RequireEnd(isThere, position, from, EndOfAddress(arcs, from));
}

// What Append() made of bytes is what IsCreatedFromOctetStr() reads.
void CheckAppended(CBytes& bytes)
{
    Arcs arcs = TakeArcs(bytes, 20);
    const std::string index = bytes.ConsumeRandomLengthString(60);
    const bool isImplied = bytes.ConsumeBool();
    BObjectIdentifier oid = Test::MakeOid(arcs);
    const auto* octets = reinterpret_cast<const unsigned char*>(index.data());
    oid.Append(octets, static_cast<int>(index.size()), isImplied);
    int position = static_cast<int>(arcs.size());
    if (!isImplied)
        arcs.push_back(static_cast<unsigned>(index.size()));
    for (unsigned char octet : index)
        arcs.push_back(octet);
    Require(Test::ArcsOf(oid) == arcs, "an appended string index");
    const bool hasAny = !isImplied || !index.empty();
    Require(oid.IsCreatedFromOctetStr(position, isImplied) == hasAny, "reading it back");
    Require(position == static_cast<int>(arcs.size()), "all of it");

    const Arcs more = TakeArcs(bytes, 20);
    oid.Append(Test::MakeOid(more), isImplied);
    if (!isImplied)
        arcs.push_back(static_cast<unsigned>(more.size()));
    arcs.insert(arcs.end(), more.begin(), more.end());
    Require(Test::ArcsOf(oid) == arcs, "an appended object identifier index");
}

bool IsUnder(const Arcs& arcs, const Arcs& subtree, const std::string& mask)
{
    if (subtree.size() > arcs.size())
        return false;
    for (size_t i = 0; i < subtree.size(); ++i) {
        const bool counts =
            i / 8 >= mask.size() || (static_cast<unsigned char>(mask[i / 8]) >> (7 - i % 8) & 1);
        if (counts && arcs[i] != subtree[i])
            return false;
    }
    return true;
}

void CheckOrder(CBytes& bytes)
{
    const Arcs a = TakeArcs(bytes, 20);
    Arcs b = TakeArcs(bytes, 8);
    if (bytes.ConsumeBool()) // often alike
        b.insert(b.begin(), a.begin(),
                 a.begin() + static_cast<long>(bytes.ConsumeIntegralInRange<size_t>(0, a.size())));
    const BObjectIdentifier first = Test::MakeOid(a);
    const BObjectIdentifier second = Test::MakeOid(b);
    Require(first.Compare(second) == (a < b ? -1 : a == b ? 0 : 1), "the order");
    Require(second.Compare(first) == -first.Compare(second), "the order the other way round");
    const bool isPrefix = a.size() <= b.size() && std::equal(a.begin(), a.end(), b.begin());
    Require(first.IsStartingSubOidOf(second) == isPrefix, "a prefix");
    const std::string mask = bytes.ConsumeRandomLengthString(3);
    const auto* octets = reinterpret_cast<const unsigned char*>(mask.data());
    Require(first.IsUnderSubtree(second, octets, static_cast<unsigned>(mask.size())) ==
                IsUnder(a, b, mask),
            "a family's subtree");

    const auto from = bytes.ConsumeIntegralInRange<unsigned>(0, 25);
    const auto to = bytes.ConsumeIntegralInRange<unsigned>(0, 25);
    BObjectIdentifier part(second);
    const bool fits = to >= from && to <= a.size();
    Require(part.Set(first, from, to) == fits, "whether a part is one");
    const Arcs expected =
        fits ? Arcs(a.begin() + static_cast<long>(from), a.begin() + static_cast<long>(to)) : b;
    Require(Test::ArcsOf(part) == expected, "a part");
}

} // namespace
} // namespace VLK::Fuzz

int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size)
{
    VLK::Fuzz::CBytes bytes(data, size);
    switch (bytes.ConsumeIntegralInRange<int>(0, 3)) {
    case 0:
        VLK::Fuzz::CheckText(bytes);
        break;
    case 1:
        VLK::Fuzz::CheckIndex(bytes);
        break;
    case 2:
        VLK::Fuzz::CheckAppended(bytes);
        break;
    default:
        VLK::Fuzz::CheckOrder(bytes);
    }
    return 0;
}
