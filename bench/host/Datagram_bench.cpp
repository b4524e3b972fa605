// What a request costs from its datagram to that of its answer, without the system's
// calls: reading it, everything the agent does for it, and writing the answer.
#include "bench/AllocScope.h"
#include "bench/host/Serving.h"
#include "host/wire/PlainMessage.h"

#include <initializer_list>
#include <string>

namespace VLK::host {
namespace {

std::string Element(unsigned tag, const std::string& content)
{
    std::string element(1, static_cast<char>(tag));
    if (content.size() >= 0x80)
        element += "\x82" + std::string(1, static_cast<char>(content.size() >> 8));
    return element + static_cast<char>(content.size() & 0xff) + content;
}

std::string MessageOf(EPduType type, const std::string& list)
{
    const std::string zero = Element(eAsnInteger, std::string(1, '\0'));
    return Element(0x30, Element(eAsnInteger, "\1") + Element(eAsnOctetString, "public") +
                             Element(type, Element(eAsnInteger, "\x12\x34\x56\x78") + zero + zero +
                                               Element(0x30, list)));
}

bool Read(const std::string& datagram, SRequest& request, std::vector<unsigned char>& bindings)
{
    return ReadPlainRequest(reinterpret_cast<const unsigned char*>(datagram.data()),
                            datagram.size(), request, bindings);
}

// For the bindings 1.3.6.1.2.1.GROUP.OBJECT.0.
std::string RequestOf(EPduType type,
                      std::initializer_list<std::pair<unsigned char, unsigned char>> objects)
{
    std::string list;
    for (const auto& [group, object] : objects) {
        std::string name = "\x2b\6\1\2\1";
        name += {static_cast<char>(group), static_cast<char>(object), '\0'};
        list += Element(0x30, Element(eAsnObjectId, name) + Element(eAsnNull, ""));
    }
    return MessageOf(type, list);
}

void Answer(benchmark::State& state, const std::string& datagram)
{
    SServing serving;
    BPlainAnswer answer;
    const BTransportAddress remote = RequestFrom("udp:127.0.0.1:4000").remote;
    const AllocScope allocs(state);
    for (auto _ : state) {
        SRequest request;
        request.remote = remote;
        request.maxMessage = 65507;
        SResponse response;
        std::vector<unsigned char> bindings;
        if (!Read(datagram, request, bindings) || !serving.Handle(request, response) ||
            response.status != eSnmpNoError || answer.Write(request, bindings, response) != 0)
            state.SkipWithError("no answer");
    }
}

// The floor: what the dispatcher does for the request, read once for all.
void Dispatch(benchmark::State& state, const std::string& datagram)
{
    SServing serving;
    SRequest request;
    request.remote = RequestFrom("udp:127.0.0.1:4000").remote;
    request.maxMessage = 65507;
    std::vector<unsigned char> bindings;
    if (!Read(datagram, request, bindings))
        state.SkipWithError("not read");
    SResponse response;
    const AllocScope allocs(state);
    for (auto _ : state) {
        if (!serving.Handle(request, response) || response.status != eSnmpNoError)
            state.SkipWithError("no answer");
        // The answers took the places of the request's bindings: they are put back.
        for (size_t i = 0; i < response.bindings.size(); ++i) {
            BVarBind& asked = request.bindings[static_cast<int>(i)];
            asked = std::move(response.bindings[i]);
            asked.Value().SetNull();
        }
    }
}

std::string GetOfOne() { return RequestOf(ePduGet, {{1, 1}}); }

std::string GetOfTen()
{
    return RequestOf(
        ePduGet,
        {{1, 1}, {1, 2}, {1, 3}, {1, 4}, {1, 5}, {1, 6}, {1, 7}, {1, 8}, {11, 1}, {11, 3}});
}

void AnswerGet(benchmark::State& state) { Answer(state, GetOfOne()); }
BENCHMARK(AnswerGet);

void AnswerGetFloor(benchmark::State& state) { Dispatch(state, GetOfOne()); }
BENCHMARK(AnswerGetFloor);

void AnswerGetOfTen(benchmark::State& state) { Answer(state, GetOfTen()); }
BENCHMARK(AnswerGetOfTen);

void AnswerGetOfTenFloor(benchmark::State& state) { Dispatch(state, GetOfTen()); }
BENCHMARK(AnswerGetOfTenFloor);

// As many as one datagram has room for, of somebody whom nobody knows yet.
void ReadBindings(benchmark::State& state)
{
    const auto count = static_cast<size_t>(state.range(0));
    const std::string binding =
        Element(0x30, Element(eAsnObjectId, "\x2b") + Element(eAsnNull, ""));
    std::string list;
    for (size_t i = 0; i < count; ++i)
        list += binding;
    const std::string datagram = MessageOf(ePduGet, list);
    std::vector<unsigned char> bindings;
    const AllocScope allocs(state);
    for (auto _ : state) {
        SRequest request;
        if (!Read(datagram, request, bindings) || request.bindings.Count() != count)
            state.SkipWithError("not read");
    }
}
BENCHMARK(ReadBindings)->Arg(10)->Arg(1000)->Arg(9000);

} // namespace
} // namespace VLK::host
