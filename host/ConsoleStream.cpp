#include "host/ConsoleStream.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <poll.h>
#include <unistd.h>

namespace VLK::host {

bool IsReadyBeforeStop(int descriptor, short events, int stopDescriptor)
{
    for (;;) {
        pollfd waits[] = {{descriptor, events, 0}, {stopDescriptor, POLLIN, 0}};
        if (poll(waits, 2, -1) >= 0)
            return waits[0].revents != 0;
        if (errno != EINTR)
            return false;
    }
}

int BConsoleStream::GetLine(BString& line)
{
    if (NextLine(line))
        return 0;
    line = BString(kQuitWord);
    return 1;
}

int BConsoleStream::Write(const BString& text)
{
    TTraceGuard guard;
    unsigned length = VKStrlen(text.c_str());
    return WriteBytes(text.c_str(), length) ? static_cast<int>(length) : -1;
}

bool BConsoleStream::WriteBytes(const char* bytes, size_t length) const
{
    // A pipe that can be written takes this much at once without waiting.
    constexpr size_t kPiece = PIPE_BUF;
    for (size_t done = 0; done < length;) {
        if (!IsReadyBeforeStop(STDOUT_FILENO, POLLOUT, m_stop))
            return false;
        ssize_t written = write(STDOUT_FILENO, bytes + done, std::min(kPiece, length - done));
        if (written > 0)
            done += static_cast<size_t>(written);
        else if (errno != EINTR && errno != EAGAIN)
            return false;
    }
    return true;
}

} // namespace VLK::host
