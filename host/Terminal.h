// The terminal that the operator types on.
#pragma once

#include "host/Descriptor.h"

#include <termios.h>

namespace VLK::host {

// Keeps the settings of the terminal on standard input, and puts them back when
// it goes, when the agent is stopped, and when a signal kills it (all but
// SIGKILL and those that the system keeps for itself). Takes the terminal's own signals SIGTSTP,
// SIGCONT and SIGWINCH as a descriptor, so that they are followed where a line is edited, and
// blocks SIGTTOU: who may be in the background asks before setting the terminal.
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
    // Back in the foreground: from now on puts back what it finds there, unless
    // that is still set for editing.
    void KeepSettings() const;

private:
    BDescriptor m_signals;
};

// Undoes at its end what was done to the terminal's settings while it lived.
class BSettingsGuard {
public:
    BSettingsGuard();
    ~BSettingsGuard();
    BSettingsGuard(const BSettingsGuard&) = delete;
    BSettingsGuard& operator=(const BSettingsGuard&) = delete;

private:
    termios m_settings;
    bool m_restores;
};

// Whether standard input is a terminal in the background of which this process
// runs: it may then neither read nor set it. The shell tells nobody when that
// changes; who waits for it looks this often.
bool IsInBackground();
inline constexpr int kForegroundPollMs = 200;

// Whether standard input is a terminal that is this process's to read: neither
// in its background, nor at the head of a session that has taken leave of it.
bool IsOwnTerminal();

} // namespace VLK::host
