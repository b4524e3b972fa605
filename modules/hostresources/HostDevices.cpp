#include "modules/hostresources/HostDevices.h"

#include <algorithm>

namespace VLK::modules {

CHostDevices::CHostDevices(IHostSource& source, unsigned timeToLive)
    : m_source(source), m_loads(source), m_rows(source, timeToLive, [this] { return Read(); })
{
}

// Names are read again only when there is a processor that was not there then.
void CHostDevices::LearnNames(const std::vector<SProcessorTime>& processors)
{
    const auto isKnown = [this](const SProcessorTime& processor) {
        return m_names.count(processor.number) != 0;
    };
    if (std::all_of(processors.begin(), processors.end(), isKnown))
        return;
    std::map<unsigned, std::string> names = m_source.ReadProcessorNames();
    for (const SProcessorTime& processor : processors)
        names.emplace(processor.number, "cpu" + std::to_string(processor.number));
    m_names.swap(names);
}

SDeviceRows CHostDevices::Read()
{
    const std::vector<SProcessorTime> processors = m_source.ReadProcessorTimes();
    const std::vector<std::optional<int>> loads =
        m_loads.Compare(processors, m_source.Milliseconds());
    LearnNames(processors);
    SDeviceRows rows;
    for (size_t i = 0; i < processors.size(); ++i) {
        const unsigned number = processors[i].number;
        const unsigned index = kFirstProcessorIndex + number;
        rows.devices.push_back({index, eDeviceKindProcessor, m_names[number], eDeviceRunning});
        rows.processors.push_back({index, loads[i]});
    }
    const std::string disk = m_source.ReadLoadDevice();
    if (!disk.empty())
        rows.devices.push_back({kLoadDeviceIndex, eDeviceKindDiskStorage, disk, eDeviceUnknown});
    return rows;
}

} // namespace VLK::modules
