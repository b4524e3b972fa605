// What it costs a request that its thread may lose the role to serve.
#include "bench/AllocScope.h"
#include "host/Relay.h"

namespace VLK::host {
namespace {

// The floor: the work alone, which is none.
void WithoutRelay(benchmark::State& state)
{
    int done = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(++done);
}
BENCHMARK(WithoutRelay);

void WithRelay(benchmark::State& state)
{
    BRelay relay(8, std::chrono::seconds(1));
    relay.Run([&] {
        const AllocScope allocs(state);
        int done = 0;
        for (auto _ : state) {
            const int64_t ticket = relay.Begin();
            benchmark::DoNotOptimize(++done);
            if (!relay.End(ticket)) {
                state.SkipWithError("the role was lost");
                break;
            }
        }
    });
}
BENCHMARK(WithRelay);

} // namespace
} // namespace VLK::host
