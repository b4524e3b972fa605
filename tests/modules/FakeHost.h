// A host that is whatever a test says.
#pragma once

#include "modules/hostresources/HostResourcesModule.h"

#include <mutex>

namespace VLK {
namespace Test {

struct SFakeHost {
    int64_t milliseconds = 0;
    std::optional<uint64_t> uptime;
    modules::SHostDate date;
    std::optional<std::string> loadParameters;
    std::string loadDevice;
    modules::SHostProcesses processes;
    modules::SHostMemory memory;
    std::vector<modules::SHostDisk> disks;
    std::vector<modules::SProcessorTime> processors;
    std::map<unsigned, std::string> names;
};

// How often what takes time was read.
struct SReadings {
    int processes = 0;
    int memory = 0;
    int disks = 0;
    int processors = 0;
    int names = 0;
};

// Locked, since the timer reads it too.
class FakeHost : public modules::IHostSource {
public:
    template <class Change>
    void Set(Change change)
    {
        std::lock_guard<std::mutex> lock(m_lock);
        change(m_host);
    }
    SReadings Readings() const
    {
        std::lock_guard<std::mutex> lock(m_lock);
        return m_readings;
    }

    int64_t Milliseconds() override { return Give(&SFakeHost::milliseconds); }
    std::optional<uint64_t> ReadUptime() override { return Give(&SFakeHost::uptime); }
    modules::SHostDate ReadDate() override { return Give(&SFakeHost::date); }
    std::optional<std::string> ReadLoadParameters() override
    {
        return Give(&SFakeHost::loadParameters);
    }
    std::string ReadLoadDevice() override { return Give(&SFakeHost::loadDevice); }
    modules::SHostProcesses ReadProcesses() override
    {
        return Give(&SFakeHost::processes, &SReadings::processes);
    }
    modules::SHostMemory ReadMemory() override
    {
        return Give(&SFakeHost::memory, &SReadings::memory);
    }
    std::vector<modules::SHostDisk> ReadDisks() override
    {
        return Give(&SFakeHost::disks, &SReadings::disks);
    }
    std::vector<modules::SProcessorTime> ReadProcessorTimes() override
    {
        return Give(&SFakeHost::processors, &SReadings::processors);
    }
    std::map<unsigned, std::string> ReadProcessorNames() override
    {
        return Give(&SFakeHost::names, &SReadings::names);
    }

private:
    template <class T>
    T Give(T SFakeHost::*value, int SReadings::*readings = nullptr)
    {
        std::lock_guard<std::mutex> lock(m_lock);
        if (readings)
            ++(m_readings.*readings);
        return m_host.*value;
    }

    mutable std::mutex m_lock;
    SFakeHost m_host;
    SReadings m_readings;
};

} // namespace Test
} // namespace VLK
