// The console on a pipe, a file or a terminal without line editing.
#pragma once

#include "host/ConsoleStream.h"

#include <string>

namespace VLK::host {

// Lines of standard input, as they come; no prompt. The last one needs no
// newline. A line of more than s_longestLine characters is left out and told.
//
// Threads, Errors: as BConsoleStream.
class BPlainLines : public BConsoleStream {
public:
    static constexpr size_t s_longestLine = 65536;

    using BConsoleStream::BConsoleStream;

protected:
    bool NextLine(BString& line) override;

private:
    bool TakeWaiting(BString& line);
    bool TakeLast(BString& line);
    bool ReadMore();
    bool WaitForInput() const;
    bool Take(size_t length, BString& line);

    std::string m_waiting;    // what was read and not taken,
    size_t m_start = 0;       // from here on
    size_t m_searched = 0;    // no newline before
    bool m_leavesOut = false; // the line's beginning was too long, and is gone
    bool m_ended = false;
};

} // namespace VLK::host
