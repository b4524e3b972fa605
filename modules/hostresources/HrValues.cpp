#include "modules/hostresources/HrValues.h"

#include <vkmibh/subtree.h>

namespace VLK::modules {

int GiveText(const std::string& text, size_t most, BString& value)
{
    std::string displayed = text.substr(0, most);
    for (char& c : displayed) {
        if (c < ' ' || c > '~')
            c = '?';
    }
    const auto length = static_cast<unsigned>(displayed.size());
    value.Assign(displayed.data(), length);
    return value.length() == length ? eSnmpNoError : eSnmpGenErr;
}

int GiveType(EHrGroup group, unsigned type, BObjectIdentifier& value)
{
    constexpr unsigned kTypes = 1;
    const unsigned arcs[] = {1, 3, 6, 1, 2, 1, 25, group, kTypes, type};
    return value.Set(std::size(arcs), arcs) ? eSnmpNoError : eSnmpGenErr;
}

int GiveUnknown(BObjectIdentifier& value)
{
    const unsigned arcs[] = {0, 0};
    return value.Set(std::size(arcs), arcs) ? eSnmpNoError : eSnmpGenErr;
}

} // namespace VLK::modules
