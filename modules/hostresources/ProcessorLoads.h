// How busy the processors were during the last minute.
#pragma once

#include "modules/hostresources/HostSource.h"

#include <deque>
#include <vkmibh/timer.h>

namespace VLK::modules {

// Keeps samples of the processors' times, one every five seconds, and compares a
// reading with the one of a minute ago: the youngest sample that is that old, or,
// while there is none, the oldest of the last two minutes. A processor that was away
// in between counts from its return on. There is no load where less than a second
// can be compared.
//
// Ownership: not of the source, which outlives it.
// Threads:   for any number of threads; Start() and Stop() by one at a time. The
//            timer's thread takes the samples.
// Errors:    Start() says false when the timer takes no subscriber; loads end two
//            minutes later. A sample that finds no memory is left out.
// Contract:  Stop() waits for a sample under way, and none comes after it.
class CProcessorLoads : private ITimeSubscriber {
public:
    static constexpr int kInterval = 5000; // milliseconds, here and below
    static constexpr int kPeriod = 60000;
    static constexpr int kShortest = 1000;
    static constexpr int kLongest = 2 * kPeriod;

    explicit CProcessorLoads(IHostSource& source);
    ~CProcessorLoads() override;
    CProcessorLoads(const CProcessorLoads&) = delete;
    CProcessorLoads& operator=(const CProcessorLoads&) = delete;

    bool Start();
    void Stop();
    void TakeSample();
    // The percentage for each of those processors, read at that time.
    std::vector<std::optional<int>> Compare(const std::vector<SProcessorTime>& processors,
                                            int64_t readAt) const;

private:
    struct SSample {
        int64_t takenAt;
        std::vector<SProcessorTime> processors;
    };

    std::optional<int> LoadOf(const SProcessorTime& processor, int64_t readAt) const
        VKMIBH_TSA(requires_capability(m_lock));
    void OnTimeout(BTimeInterval& interval) override;

    IHostSource& m_source;
    int m_subscription = 0;
    mutable TMutex m_lock;
    std::deque<SSample> m_samples VKMIBH_TSA(guarded_by(m_lock)); // the oldest first
};

} // namespace VLK::modules
