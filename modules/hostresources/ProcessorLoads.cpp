#include "modules/hostresources/ProcessorLoads.h"

#include <algorithm>

namespace VLK::modules {

namespace {

const SProcessorTime* Find(const std::vector<SProcessorTime>& processors, unsigned number)
{
    const auto found =
        std::lower_bound(processors.begin(), processors.end(), number,
                         [](const SProcessorTime& a, unsigned b) { return a.number < b; });
    return found != processors.end() && found->number == number ? &*found : nullptr;
}

// The kernel lets a counter step back now and then.
uint64_t Grown(uint64_t from, uint64_t to) { return to > from ? to - from : 0; }

} // namespace

CProcessorLoads::CProcessorLoads(IHostSource& source) : m_source(source), m_lock(true) {}

CProcessorLoads::~CProcessorLoads() { Stop(); }

bool CProcessorLoads::Start()
{
    if (m_subscription != 0)
        return true;
    {
        // What was sampled before a pause says nothing of it.
        TMutexLock lock(m_lock);
        m_samples.clear();
    }
    TakeSample();
    BTimer* const timer = BTimer::GetInstance();
    m_subscription = timer ? timer->Subscribe(this, kInterval, -1) : 0;
    return m_subscription != 0;
}

// A timer that is gone has called everybody for the last time; it is not made anew.
void CProcessorLoads::Stop()
{
    BTimer* const timer = BTimer::s_pInstance;
    if (m_subscription != 0 && timer)
        timer->Unsubscribe(m_subscription);
    m_subscription = 0;
}

void CProcessorLoads::TakeSample()
{
    SSample sample{m_source.Milliseconds(), m_source.ReadProcessorTimes()};
    TMutexLock lock(m_lock);
    while (m_samples.size() > 1 && sample.takenAt - m_samples[1].takenAt >= kPeriod)
        m_samples.pop_front();
    m_samples.push_back(std::move(sample));
}

void CProcessorLoads::OnTimeout(BTimeInterval&) { TakeSample(); }

std::vector<std::optional<int>>
CProcessorLoads::Compare(const std::vector<SProcessorTime>& processors, int64_t readAt) const
{
    std::vector<std::optional<int>> loads;
    loads.reserve(processors.size());
    TMutexLock lock(m_lock);
    for (const SProcessorTime& processor : processors)
        loads.push_back(LoadOf(processor, readAt));
    return loads;
}

std::optional<int> CProcessorLoads::LoadOf(const SProcessorTime& processor, int64_t readAt) const
{
    const SProcessorTime* then = nullptr;
    int64_t period = 0;
    for (auto sample = m_samples.rbegin(); sample != m_samples.rend() && period < kPeriod;
         ++sample) {
        const SProcessorTime* const earlier = Find(sample->processors, processor.number);
        const int64_t age = readAt - sample->takenAt;
        if (!earlier || age > kLongest)
            break;
        then = earlier;
        period = age;
    }
    if (!then || period < kShortest)
        return std::nullopt;
    const uint64_t busy = Grown(then->busy, processor.busy);
    const uint64_t all = busy + Grown(then->idle, processor.idle);
    if (all == 0)
        return std::nullopt;
    return static_cast<int>((busy * 100 + all / 2) / all);
}

} // namespace VLK::modules
