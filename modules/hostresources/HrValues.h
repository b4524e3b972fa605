// What the get handlers of the host resources module answer with.
#pragma once

#include <string>
#include <vkmibh/values.h>

namespace VLK::modules {

// Of the objects below 1.3.6.1.2.1.25, the tree of HOST-RESOURCES-MIB.
enum EHrGroup : unsigned { eHrSystem = 1, eHrStorage = 2, eHrDevice = 3 };

// All of them answer noError, or genErr when there is no memory.

// That many bytes at most, as a DisplayString: what is not printable ASCII is a '?'.
int GiveText(const std::string& text, size_t most, BString& value);

// hrStorageTypes or hrDeviceTypes and an arc.
int GiveType(EHrGroup group, unsigned type, BObjectIdentifier& value);

// zeroDotZero: nothing is known.
int GiveUnknown(BObjectIdentifier& value);

} // namespace VLK::modules
