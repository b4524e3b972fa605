#include "host/ConsoleStream.h"

#include "host/Terminal.h"

#include <cerrno>
#include <poll.h>

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

bool BConsoleStream::WaitForForeground() const
{
    pollfd stop{m_stop, POLLIN, 0};
    while (IsInBackground()) {
        if (poll(&stop, 1, kForegroundPollMs) > 0)
            return false;
    }
    return true;
}

bool BConsoleStream::WriteBytes(const char* bytes, size_t length) const
{
    for (size_t done = 0; done < length;) {
        if (!IsReadyBeforeStop(m_output.Descriptor(), POLLOUT, m_stop))
            return false;
        ssize_t written = m_output.Write(bytes + done, length - done);
        if (written > 0)
            done += static_cast<size_t>(written);
        else if (errno != EINTR && errno != EAGAIN)
            return false;
    }
    return true;
}

} // namespace VLK::host
