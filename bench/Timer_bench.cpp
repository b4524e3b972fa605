// The timer: a tick over many subscriptions of which none is due, and coming and going
// among them. The floor of a tick counts the remaining time of as many records.
#include "bench/AllocScope.h"

#include <vkmibh/timer.h>

#include <vector>

namespace VLK {
namespace {

constexpr int kLong = 1 << 30; // milliseconds

class Subscriber : public ITimeSubscriber {
public:
    ~Subscriber() override { BTimer::GetInstance()->Unsubscribe(this); }
    void OnTimeout(BTimeInterval&) override { ++calls; }
    bool Subscribe(int count)
    {
        for (int i = 0; i < count; ++i) {
            if (!BTimer::GetInstance()->Subscribe(this, kLong, -1))
                return false;
        }
        return true;
    }

    unsigned calls = 0;
};

void TimerTick(benchmark::State& state)
{
    Subscriber subscriber;
    if (!subscriber.Subscribe(static_cast<int>(state.range(0))))
        state.SkipWithError("refused");
    BTimer& timer = *BTimer::GetInstance();
    const AllocScope allocs(state);
    for (auto _ : state)
        timer.Timeout(1);
    if (subscriber.calls)
        state.SkipWithError("called too early");
}
BENCHMARK(TimerTick)->Arg(100)->Arg(100000)->Unit(benchmark::kMicrosecond);

void TimerTickFloor(benchmark::State& state)
{
    std::vector<BTimeInterval> records(static_cast<size_t>(state.range(0)));
    for (BTimeInterval& record : records)
        record.remaining = kLong;
    const AllocScope allocs(state);
    for (auto _ : state) {
        for (BTimeInterval& record : records) {
            if ((record.remaining -= 1) <= 0)
                state.SkipWithError("due too early");
        }
        benchmark::ClobberMemory();
    }
}
BENCHMARK(TimerTickFloor)->Arg(100)->Arg(100000)->Unit(benchmark::kMicrosecond);

// One subscription more, and its end, among so many.
void SubscribeAndUnsubscribe(benchmark::State& state)
{
    Subscriber subscriber;
    if (!subscriber.Subscribe(static_cast<int>(state.range(0))))
        state.SkipWithError("refused");
    BTimer& timer = *BTimer::GetInstance();
    const AllocScope allocs(state);
    for (auto _ : state) {
        if (!timer.Unsubscribe(timer.Subscribe(&subscriber, kLong, 1)))
            state.SkipWithError("refused");
    }
}
BENCHMARK(SubscribeAndUnsubscribe)->Arg(100)->Arg(100000);

} // namespace
} // namespace VLK
