// The terminal that the operator types on.
#pragma once

#include "host/Descriptor.h"

#include <termios.h>

namespace VLK::host {

// Keeps the settings of the terminal on standard input, and puts them back when
// it goes and when a signal kills the agent (SIGSEGV, SIGABRT, SIGQUIT and
// their like). Takes the terminal's own signals SIGTSTP, SIGCONT and SIGWINCH
// as a descriptor, so that they are followed where a line is edited, and blocks
// SIGTTOU: who is in the background asks IsOurs() before setting the terminal.
//
// Threads: construct before all other threads; blocks the signals for the
//          calling thread and those it starts. There is one at a time.
// Errors:  the constructor throws BHostError. In the background it stops like
//          any job that reads the terminal.
class BTerminal {
public:
    BTerminal();
    ~BTerminal();
    BTerminal(const BTerminal&) = delete;
    BTerminal& operator=(const BTerminal&) = delete;

    // Readable when NextSignal() has one.
    int Descriptor() const { return m_signals.Get(); }
    // One of the three signals that came, or 0.
    int NextSignal() const;
    // Does what SIGTSTP does; comes back when the agent is continued.
    void Suspend() const;
    // Whether the agent may read the terminal and set it: a job in the
    // background may not.
    bool IsOurs() const;

private:
    BDescriptor m_signals;
};

// In the background, undoes at its end what was done to the terminal's settings
// while it lived: they are another job's.
class BBackgroundGuard {
public:
    explicit BBackgroundGuard(const BTerminal& terminal);
    ~BBackgroundGuard();
    BBackgroundGuard(const BBackgroundGuard&) = delete;
    BBackgroundGuard& operator=(const BBackgroundGuard&) = delete;

private:
    termios m_settings;
    bool m_restores;
};

// Whether standard input is a terminal that this process, in its foreground,
// is the one to read.
bool IsTerminalOfForeground();

} // namespace VLK::host
