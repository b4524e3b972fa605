#include "modules/targets/NamedTable.h"

#include <algorithm>

namespace VLK::modules {

// The state machine calls what is no status a general error of rows that exist.
int CNamedTable::Set(unsigned id, ESnmpSetOpCode op, void** slot, const BVarBind& binding)
{
    if (op == eSetTest && IsRowStatus(binding) &&
        (binding.Value().Int() < eRowActive || binding.Value().Int() > eRowDestroy))
        return eSnmpWrongValue;
    return CWholeSetTable::Set(id, op, slot, binding);
}

bool CNamedTable::ReadName(const BObjectIdentifier& row, std::string& name)
{
    if (row.Length() == 0 || row.Length() > kRowNameMost)
        return false;
    name.clear();
    for (unsigned i = 0; i < row.Length(); ++i) {
        if (row[i] > 255)
            return false;
        name += static_cast<char>(row[i]);
    }
    return true;
}

bool CNamedTable::IsOwn(const std::string& name) { return name.rfind(kOwnNames, 0) == 0; }

std::string CNamedTable::TextOf(const BOctetString& octets)
{
    return std::string(octets.Data(), octets.Data() + octets.Length());
}

// The last name that is not behind the index. One of 32 octets has none between itself
// and what is longer.
std::string CNamedTable::StartOf(const BObjectIdentifier& index)
{
    std::string start;
    for (unsigned i = 0; i < index.Length() && i < kRowNameMost; ++i) {
        if (index[i] > 255) // behind all names that begin so
            return start + std::string(kRowNameMost - i + 1, '\xff');
        start += static_cast<char>(index[i]);
    }
    return start;
}

bool CNamedTable::WriteName(const std::string& name, BObjectIdentifier& row)
{
    unsigned arcs[kRowNameMost];
    const size_t length = std::min<size_t>(name.size(), kRowNameMost);
    for (size_t i = 0; i < length; ++i)
        arcs[i] = static_cast<unsigned char>(name[i]);
    return row.Set(static_cast<unsigned>(length), arcs);
}

} // namespace VLK::modules
