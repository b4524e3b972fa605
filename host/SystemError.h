// What the system says of one of its error numbers.
#pragma once

#include <string>
#include <system_error>

namespace VLK::host {

// For any thread, which strerror() need not be.
inline std::string SystemError(int number) { return std::generic_category().message(number); }

} // namespace VLK::host
