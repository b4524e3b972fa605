// Octet texts, addresses and Counter64 against native arithmetic.
#include "fuzz/Fuzz.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace VLK::Fuzz {
namespace {

using Octets = std::vector<unsigned char>;

Octets OctetsOf(const BOctetString& value)
{
    return value.Length() ? Octets(value.Data(), value.Data() + value.Length()) : Octets();
}

int DigitOf(char c)
{
    const std::string digits = "0123456789abcdef";
    const size_t at = digits.find(c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c);
    return at == std::string::npos ? -1 : static_cast<int>(at);
}

// Pairs of digits, a colon between them.
std::optional<Octets> PairsOf(const std::string& text)
{
    Octets octets;
    if (!text.empty() && text.size() % 3 != 2)
        return std::nullopt;
    for (size_t i = 0; i < text.size(); i += 3) {
        const int high = DigitOf(text[i]);
        const int low = DigitOf(text[i + 1]);
        const bool isParted = i + 2 == text.size() || text[i + 2] == ':';
        if (high < 0 || low < 0 || !isParted)
            return std::nullopt;
        octets.push_back(static_cast<unsigned char>(high * 16 + low));
    }
    return octets;
}

std::string TakeText(CBytes& bytes, const std::string& likely)
{
    std::string text = bytes.ConsumeRandomLengthString(60);
    text.erase(std::min(text.find('\0'), text.size()));
    if (bytes.ConsumeIntegralInRange<int>(0, 3) == 0)
        return text;
    for (char& c : text)
        c = likely[static_cast<unsigned char>(c) % likely.size()];
    return text;
}

void CheckOctets(CBytes& bytes)
{
    const std::string raw = bytes.ConsumeRandomLengthString(40);
    const Octets octets(raw.begin(), raw.end());
    BOctetString value(static_cast<unsigned>(raw.size()), octets.data());
    const std::string text = PlainOf(value.ToString());
    Require(PairsOf(text) == octets, "the text of octets");
    BOctetString back(2, reinterpret_cast<const unsigned char*>("xy"));
    Require(back.AssignFromHexString(text.c_str()) && OctetsOf(back) == octets, "and back");
    const bool isText = std::all_of(octets.begin(), octets.end(), [](unsigned char c) {
        return (c >= 32 && c <= 127) || (c >= 7 && c <= 13) || c == 0;
    });
    Require(value.IsDispStr() == isText, "displayable text");

    const std::string wild = TakeText(bytes, "0123456789abcdefABCDEF::::::");
    const std::optional<Octets> expected = PairsOf(wild);
    const Octets before = OctetsOf(back);
    Require(back.AssignFromHexString(wild.c_str()) == expected.has_value(), "pairs of digits");
    Require(OctetsOf(back) == expected.value_or(before), "their octets");
}

std::optional<int> AddressPart(const std::string& text)
{
    int value = 0;
    for (char c : text) {
        if (c < '0' || c > '9')
            return std::nullopt;
        value = std::min(value * 10 + (c - '0'), 256);
    }
    return value <= 255 ? std::optional(value) : std::nullopt;
}

std::optional<Octets> AddressOf(const std::string& text)
{
    Octets octets;
    size_t begin = 0;
    for (int part = 0; part < 4; ++part) {
        const size_t end = part < 3 ? text.find('.', begin) : text.size();
        if (end == std::string::npos)
            return std::nullopt;
        const std::optional<int> value = AddressPart(text.substr(begin, end - begin));
        if (!value)
            return std::nullopt;
        octets.push_back(static_cast<unsigned char>(*value));
        begin = end + 1;
    }
    return text.size() <= 15 ? std::optional(octets) : std::nullopt;
}

// Four parts, of which most fit.
std::string TakeParts(CBytes& bytes)
{
    static constexpr const char* kParts[] = {"0",   "1",   "99",  "100", "249", "250",
                                             "255", "256", "260", "300", "007", ""};
    std::string text;
    for (int part = 0; part < 4; ++part)
        text += (part ? "." : "") + std::string(bytes.PickValueInArray(kParts));
    return text;
}

void CheckAddress(CBytes& bytes)
{
    const std::string text =
        bytes.ConsumeBool() ? TakeParts(bytes) : TakeText(bytes, "0123456789....12");
    const std::optional<Octets> expected = AddressOf(text);
    BIpAddress address(9, 8, 7, 6);
    Require(address.AssignFromDottedDecimalStr(TextOf(text)) == expected.has_value(), "an address");
    const Octets octets = expected.value_or(Octets{9, 8, 7, 6});
    std::string dotted;
    for (unsigned i = 0; i < 4; ++i) {
        Require(address[i] == octets[i], "its octets");
        dotted += (i ? "." : "") + std::to_string(octets[i]);
    }
    Require(PlainOf(address.ToString()) == dotted, "its text");
}

uint64_t NumberOf(const BCounter64& counter)
{
    return static_cast<uint64_t>(counter.High()) << 32 | counter.Low();
}

BCounter64 CounterOf(uint64_t number)
{
    return BCounter64(static_cast<unsigned>(number >> 32), static_cast<unsigned>(number));
}

uint64_t TakeNumber(CBytes& bytes)
{
    static constexpr uint64_t kEnds[] = {0,          1,          9,           10,         99,
                                         4294967295, 4294967296, 42949672959, ~0ull - 10, ~0ull};
    return bytes.ConsumeBool() ? bytes.ConsumeIntegral<uint64_t>() : bytes.PickValueInArray(kEnds);
}

uint64_t Shifted(uint64_t number, int left)
{
    if (left >= 64 || left <= -64)
        return 0;
    return left >= 0 ? number << left : number >> -left;
}

void CheckArithmetic(CBytes& bytes)
{
    const uint64_t a = TakeNumber(bytes);
    const uint64_t b = TakeNumber(bytes);
    const auto small = static_cast<unsigned>(TakeNumber(bytes));
    const int shift = bytes.ConsumeIntegralInRange<int>(0, 70);
    const BCounter64 first = CounterOf(a);
    const BCounter64 second = CounterOf(b);
    BCounter64 value = first;
    Require(NumberOf(value + second) == a + b && NumberOf(value) == a + b, "a sum");
    value = first;
    Require(NumberOf(value - second) == a - b && NumberOf(value) == a - b, "a difference");
    value = first;
    Require(NumberOf(value += small) == a && NumberOf(value) == a + small, "an addition");
    value = first;
    Require(NumberOf(value -= small) == a && NumberOf(value) == a - small, "a subtraction");
    value = first;
    Require(NumberOf(++value) == a + 1 && NumberOf(value) == a + 1, "one more");
    value = first;
    Require(NumberOf(--value) == a - 1 && NumberOf(value) == a - 1, "one less");
    value = first;
    Require(NumberOf(value.Mul10()) == a * 10, "ten times");
    Require(NumberOf(first << shift) == Shifted(a, shift), "left");
    Require(NumberOf(first >> shift) == Shifted(a, -shift), "right");
    Require(NumberOf(first & second) == (a & b) && NumberOf(first | second) == (a | b) &&
                NumberOf(first ^ second) == (a ^ b) && NumberOf(~first) == ~a,
            "bits");
    Require((first == second) == (a == b), "equality");
    unsigned remainder = 0;
    BCounter64 quotient;
    first.Div10(quotient, remainder);
    Require(NumberOf(quotient) == a / 10 && remainder == a % 10, "a tenth");
    for (int i = 0; i < 8; ++i)
        Require(first[i] == static_cast<unsigned char>(a >> (8 * i)), "a byte");
}

void CheckDecimal(CBytes& bytes)
{
    const uint64_t number = TakeNumber(bytes);
    Require(PlainOf(CounterOf(number).ToString()) == std::to_string(number), "decimal text");
    const std::string text = TakeText(bytes, "0123456789");
    uint64_t expected = 0;
    for (char c : text) // not checked, modulo 2^64; a character counts as its code, in 32 bits
        expected = expected * 10 + (static_cast<unsigned char>(c) - 48u);
    BCounter64 value(7);
    Require(value.AssignFromDecString(text.c_str()) && NumberOf(value) == expected, "and back");
}

void CheckPairs(CBytes& bytes)
{
    // Where pair k goes; none for those that get lost.
    static constexpr int kBits[] = {0, 24, 48, -1, 32, 56, -1, 40};
    const std::string text = TakeText(bytes, "0123456789abcdefABCDEF::::::");
    const std::optional<Octets> pairs = PairsOf(text);
    if (pairs && pairs->size() > 8)
        return;
    uint64_t expected = 0;
    for (size_t k = 0; pairs && k < pairs->size(); ++k) {
        if (kBits[k] < 0)
            continue;
        const uint64_t octet = (*pairs)[k];
        // Nothing goes from the low word to the high one.
        expected |= k < 2 ? static_cast<uint32_t>(octet << kBits[k]) : octet << kBits[k];
    }
    BCounter64 value(7);
    Require(value.AssignFromHexString(text.c_str()) == pairs.has_value(), "pairs of a counter");
    Require(NumberOf(value) == expected, "where they go");
}

} // namespace
} // namespace VLK::Fuzz

int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size)
{
    using namespace VLK::Fuzz;
    CBytes bytes(data, size);
    switch (bytes.ConsumeIntegralInRange<int>(0, 4)) {
    case 0:
        CheckOctets(bytes);
        break;
    case 1:
        CheckAddress(bytes);
        break;
    case 2:
        CheckArithmetic(bytes);
        break;
    case 3:
        CheckDecimal(bytes);
        break;
    default:
        CheckPairs(bytes);
    }
    return 0;
}
