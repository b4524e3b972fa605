// What the console's streams on standard input and output have in common.
#pragma once

#include "host/Output.h"

#include <unistd.h>
#include <vkmibh/console.h>

namespace VLK::host {

// Ends the console, and the agent with it.
inline constexpr const char* kQuitWord = "q";

// Whether the descriptor can be read (POLLIN) or written (POLLOUT) before the
// agent ends; waits for either. With both, it can.
bool IsReadyBeforeStop(int descriptor, short events, int stopDescriptor);

// Standard output, and lines of which the last is the quit word: it comes at
// the end of the input and when the agent ends.
//
// A write waits for whoever reads standard output, but not beyond the end of
// the agent.
//
// Ownership: owns nothing.
// Threads:   GetLine() on one; a Write() is one piece among all that hold a
//            TTraceGuard.
// Errors:    GetLine: 0 = a line, 1 = the quit word in place of one. Write:
//            characters written, below 0 = not all of them.
// Contract:  a text is written up to its first NUL.
class BConsoleStream : public ICmdStream {
public:
    explicit BConsoleStream(int stopDescriptor) : m_stop(stopDescriptor), m_output(STDOUT_FILENO) {}

    int GetLine(BString& line) final;
    int Write(const BString& text) override;

protected:
    // The next line; false when there is none or the agent ends.
    virtual bool NextLine(BString& line) = 0;
    int StopDescriptor() const { return m_stop; }
    // While the agent is a job in the background of the terminal on standard
    // input; false when the agent ends.
    bool WaitForForeground() const;
    // All of the bytes, or false.
    bool WriteBytes(const char* bytes, size_t length) const;

private:
    int m_stop;
    BOutput m_output;
};

} // namespace VLK::host
