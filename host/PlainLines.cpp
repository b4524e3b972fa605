#include "host/PlainLines.h"

#include "host/Log.h"
#include "host/SystemError.h"
#include "host/Terminal.h"

#include <cerrno>
#include <poll.h>
#include <unistd.h>

namespace VLK::host {

namespace {

bool IsReadable(int descriptor)
{
    pollfd wait{descriptor, POLLIN, 0};
    return poll(&wait, 1, 0) == 1;
}

} // namespace

bool BPlainLines::NextLine(BString& line)
{
    do {
        // The end of the agent does not wait for the lines that were read ahead.
        if (IsReadable(StopDescriptor()))
            return false;
        if (TakeWaiting(line))
            return true;
    } while (ReadMore());
    return TakeLast(line);
}

bool BPlainLines::TakeWaiting(BString& line)
{
    for (;;) {
        size_t end = m_waiting.find('\n', m_searched);
        if (end == m_waiting.npos) {
            m_searched = m_waiting.size();
            return false;
        }
        size_t length = end - m_start;
        bool taken = Take(length, line);
        m_start = m_searched = end + 1;
        if (taken)
            return true;
    }
}

// False when the line is left out.
bool BPlainLines::Take(size_t length, BString& line)
{
    if (m_leavesOut || length > s_longestLine) {
        m_leavesOut = false;
        Write(BString("line too long.\n"));
        return false;
    }
    line = BString(m_waiting.data() + m_start, static_cast<unsigned>(length));
    return true;
}

bool BPlainLines::TakeLast(BString& line)
{
    size_t length = m_waiting.size() - m_start;
    if (!m_ended || (length == 0 && !m_leavesOut))
        return false;
    bool taken = Take(length, line);
    m_waiting.clear();
    m_start = m_searched = 0;
    return taken;
}

// False at the end of the input and when the agent ends.
bool BPlainLines::ReadMore()
{
    if (m_ended)
        return false;
    m_waiting.erase(0, m_start);
    m_start = 0;
    if (m_waiting.size() > s_longestLine) {
        m_leavesOut = true;
        m_waiting.clear();
    }
    m_searched = m_waiting.size();
    char piece[65536];
    ssize_t count = 0;
    do {
        if (!WaitForInput())
            return false;
        count = read(STDIN_FILENO, piece, sizeof piece);
    } while (count < 0 && (errno == EINTR || errno == EAGAIN));
    if (count < 0)
        LogLine(eLogError, "standard input cannot be read: " + SystemError(errno));
    m_ended = count <= 0;
    if (!m_ended)
        m_waiting.append(piece, static_cast<size_t>(count));
    return !m_ended;
}

// A job in the background that reads the terminal is stopped, and with it all
// that it serves; what can be read there is typed to the shell.
bool BPlainLines::WaitForInput() const
{
    do {
        if (!WaitForForeground() || !IsReadyBeforeStop(STDIN_FILENO, POLLIN, StopDescriptor()))
            return false;
    } while (IsInBackground());
    return true;
}

} // namespace VLK::host
