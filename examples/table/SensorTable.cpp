#include "examples/table/SensorTable.h"

#include <fstream>
#include <sstream>

namespace VLK::examples {

VKMIBH_CONSTINIT SRqHndlrMapEntry CSensorTable::s_map[] = {
    ColumnRow<eKindInteger>(eIndex, "sensorIndex", eAsnInteger, eRqNotAccessible),
    ColumnRow<eKindDisplayString, &CSensorTable::OnGet_Name>(eName, "sensorName", eAsnOctetString,
                                                             eRqReadOnly),
    ColumnRow<eKindInteger, &CSensorTable::OnGet_Reading>(eReading, "sensorReading", eAsnInteger,
                                                          eRqReadOnly),
    kRqEnd};

const SConstraintMapEntry CSensorTable::s_constraints[] = {
    {eConstraintRange, eIndex, nullptr, 1, 2147483647},
    {eConstraintConvention, eName, cszDisplayString, 0, 0},
    kConstraintEnd};

CSensorTable::CSensorTable(const std::string& path)
    : BMibTableImpl("EXAMPLE-MIB.sensorTable", BObjectIdentifier("1.3.6.1.4.1.32473.2.2.1")),
      m_path(path)
{
}

// Reads the file once for each request, so that all its bindings, and all the rows
// of a GETBULK, show the same state. 0 is no request's id.
void CSensorTable::Refresh(unsigned id)
{
    if (id != 0 && id == m_readFor)
        return;
    std::map<unsigned, SSensor> sensors;
    std::ifstream file(m_path);
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        unsigned index = 0;
        SSensor sensor;
        if (words >> index >> sensor.reading >> std::ws && index >= 1 && index <= 2147483647u &&
            std::getline(words, sensor.name))
            sensors[index] = sensor;
    }
    m_sensors.swap(sensors);
    m_readFor = id;
}

const CSensorTable::SSensor* CSensorTable::Find(unsigned id, const BObjectIdentifier& instance)
{
    Refresh(id);
    const auto sensor = m_sensors.find(instance.Length() == 1 ? instance[0] : 0);
    return sensor != m_sensors.end() ? &sensor->second : nullptr;
}

// The row after the index, which need not be there any more.
int CSensorTable::NextIndex(unsigned id, unsigned, const BObjectIdentifier& index,
                            BObjectIdentifier& nextIndex)
{
    Refresh(id);
    const auto next = m_sensors.upper_bound(index.Length() > 0 ? index[0] : 0);
    return next != m_sensors.end() && nextIndex.Set(next->first);
}

// noSuchName says that there is no such row.
int CSensorTable::OnGet_Name(const BObjectIdentifier& instance, unsigned id, BString& value)
{
    const SSensor* sensor = Find(id, instance);
    if (!sensor)
        return eSnmpNoSuchName;
    value = sensor->name.c_str();
    return eSnmpNoError;
}

int CSensorTable::OnGet_Reading(const BObjectIdentifier& instance, unsigned id, int& value)
{
    const SSensor* sensor = Find(id, instance);
    if (!sensor)
        return eSnmpNoSuchName;
    value = sensor->reading;
    return eSnmpNoError;
}

} // namespace VLK::examples
