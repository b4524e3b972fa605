// What the fuzzers share: the bytes they are given, taken apart, and the end of
// one that found a difference.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <fuzzer/FuzzedDataProvider.h>
#include <string>
#include <vkmibh/values.h>

// Called by the fuzzer for every input.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size);

namespace VLK::Fuzz {

using CBytes = FuzzedDataProvider;

// The fuzzer keeps the input that ended it.
[[noreturn]] inline void Differ(const std::string& what)
{
    std::fprintf(stderr, "DIFFERENCE: %s\n", what.c_str());
    std::abort();
}

inline void Require(bool holds, const char* what)
{
    if (!holds)
        Differ(what);
}

inline BString TextOf(const std::string& text)
{
    return BString(text.data(), static_cast<unsigned>(text.size()));
}

inline std::string PlainOf(const BString& text) { return std::string(text.c_str(), text.length()); }

// Arcs as agents have them: mostly small ones, ends of ranges, any.
inline unsigned TakeArc(CBytes& bytes)
{
    static constexpr unsigned kArcs[] = {0, 1, 2, 3, 31, 32, 127, 128, 255, 256, 4294967295u};
    const bool isAny = bytes.ConsumeIntegralInRange<int>(0, 7) == 7;
    return isAny ? bytes.ConsumeIntegral<unsigned>() : bytes.PickValueInArray(kArcs);
}

inline std::vector<unsigned> TakeArcs(CBytes& bytes, size_t atMost)
{
    std::vector<unsigned> arcs(bytes.ConsumeIntegralInRange<size_t>(0, atMost));
    for (unsigned& arc : arcs)
        arc = TakeArc(bytes);
    return arcs;
}

} // namespace VLK::Fuzz
