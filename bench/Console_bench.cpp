// Lines of the console, from their text to what is written. The floor is the request
// that such a line makes.
#include "bench/AllocScope.h"
#include "bench/Modules.h"

#include <vkmibh/cli.h>

#include <cstring>

namespace VLK {
namespace {

const char kName[] = "1.3.6.1.4.1.32473.1.1.0";

// Types one line for each iteration.
class Typist : public ICmdStream {
public:
    Typist(benchmark::State& state, const char* line, const char* answer)
        : m_state(state), m_line(line), m_answer(answer)
    {
    }
    int GetLine(BString& line) override
    {
        line = m_state.KeepRunning() ? m_line : m_quit;
        return 0;
    }
    int Write(const BString& text) override
    {

        if (std::strstr(text.c_str(), m_answer))
            ++answers;
        return 0;
    }

    long long answers = 0;

private:
    benchmark::State& m_state;
    const BString m_line;
    const char* const m_answer; // what is in one of the texts that answer a line
    const BString m_quit = "q";
};

void ConsoleLine(benchmark::State& state, const char* line, const char* answer)
{
    Agent agent;
    agent.Add(new Scalars(MakeOid("1.3.6.1.4.1.32473.1")));
    Typist typist(state, line, answer);
    BCLI console(&agent.Handler(), &typist);
    {
        const AllocScope allocs(state);
        console.Start(nullptr, nullptr);
    }
    if (typist.answers != static_cast<long long>(state.iterations()))
        state.SkipWithError("no answer");
}
BENCHMARK_CAPTURE(ConsoleLine, get, "get 1.3.6.1.4.1.32473.1.1.0", " = 1");
BENCHMARK_CAPTURE(ConsoleLine, getnext, "getnext 1.3.6.1.4.1.32473.1.1", " = 1");
BENCHMARK_CAPTURE(ConsoleLine, set, "set 1.3.6.1.4.1.32473.1.1.0 2 5", " = 5");

void ConsoleLineFloor(benchmark::State& state, int pduType, unsigned arcs)
{
    Agent agent;
    agent.Add(new Scalars(MakeOid("1.3.6.1.4.1.32473.1")));
    BVarBindList list;
    list.Append(MakeOid(kName));
    const BObjectIdentifier name(arcs, list[0].Name().Arcs());
    const AllocScope allocs(state);
    for (auto _ : state) {
        list[0].Name().Set(name);
        if (pduType == ePduSet)
            list[0].Value().SetInt(5);
        else
            list[0].Value().SetNull();
        if (agent.Query(pduType, list) != eSnmpNoError)
            state.SkipWithError("the request failed");
    }
}
BENCHMARK_CAPTURE(ConsoleLineFloor, get, ePduGet, 10);
BENCHMARK_CAPTURE(ConsoleLineFloor, getnext, ePduGetNext, 9);
BENCHMARK_CAPTURE(ConsoleLineFloor, set, ePduSet, 10);

} // namespace
} // namespace VLK
