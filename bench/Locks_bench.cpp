// The locks a request takes, uncontended.
#include <benchmark/benchmark.h>
#include <vkmibh/base.h>

namespace VLK {
namespace {

void LockReadAndDone(benchmark::State& state)
{
    TSWMRSynch lock;
    for (auto _ : state) {
        TReadLock read(lock);
        benchmark::DoNotOptimize(read.Granted());
    }
}
BENCHMARK(LockReadAndDone);

void LockReadAgainAndDone(benchmark::State& state)
{
    TSWMRSynch lock;
    TReadLock outer(lock);
    for (auto _ : state) {
        TReadLock read(lock);
        benchmark::DoNotOptimize(read.Granted());
    }
}
BENCHMARK(LockReadAgainAndDone);

void LockWriteAndDone(benchmark::State& state)
{
    TSWMRSynch lock;
    for (auto _ : state) {
        TWriteLock write(lock);
        benchmark::DoNotOptimize(write.Granted());
    }
}
BENCHMARK(LockWriteAndDone);

void LockMutexAndDone(benchmark::State& state)
{
    TMutex mutex(true);
    for (auto _ : state) {
        TMutexLock lock(mutex);
        benchmark::DoNotOptimize(&lock);
    }
}
BENCHMARK(LockMutexAndDone);

// The floor of all of them: a system mutex, once.
void LockPthreadMutex(benchmark::State& state)
{
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    for (auto _ : state) {
        pthread_mutex_lock(&mutex);
        pthread_mutex_unlock(&mutex);
    }
    pthread_mutex_destroy(&mutex);
}
BENCHMARK(LockPthreadMutex);

} // namespace
} // namespace VLK
