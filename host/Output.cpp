#include "host/Output.h"

#include <algorithm>
#include <climits>
#include <fcntl.h>
#include <string>

namespace VLK::host {

namespace {

int OpenAgain(int descriptor)
{
    std::string name = "/proc/self/fd/" + std::to_string(descriptor);
    return open(name.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
}

} // namespace

BOutput::BOutput(int descriptor)
    : m_descriptor(descriptor), m_own(isatty(descriptor) ? OpenAgain(descriptor) : -1)
{
}

ssize_t BOutput::Write(const char* bytes, size_t length) const
{
    // A pipe that can be written takes this much at once without waiting.
    constexpr size_t kPiece = PIPE_BUF;
    return write(Descriptor(), bytes, std::min(kPiece, length));
}

} // namespace VLK::host
