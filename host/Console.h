// The operator's console, on a thread of its own.
#pragma once

#include "host/ConsoleStream.h"
#include "host/StopSignals.h"

#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>
#include <vkmibh/console.h>

namespace VLK::host {

enum EConsole {
    eConsoleOff,
    eConsolePlain,   // plain lines: on a pipe or a file
    eConsoleEditing, // on a terminal
};

// What the command line asks for; without a word of it, a console for the
// operator who started the agent in the foreground of a terminal.
EConsole ChooseConsole(std::optional<bool> wanted);

// Commands of handlers, from its construction to
// the quit command, the end of the input, or the end of the agent; its own end
// ends the agent.
//
// Ownership: owns the stream. The handlers outlive it.
// Threads:   runs on a thread of its own. Requests meet those of the wire in
//            the handler.
// Errors:    what a command throws is told on the stream; what the stream throws
//            ends the console, and End() throws it as a BHostError.
class BConsole {
public:
    BConsole(const std::vector<ICmdHandler*>& handlers, std::unique_ptr<ICmdStream> stream,
             BStopSignals& stop);
    ~BConsole();
    BConsole(const BConsole&) = delete;
    BConsole& operator=(const BConsole&) = delete;

    // Ends the agent, and waits for the command that is running.
    void End();

private:
    void Run() noexcept;

    std::unique_ptr<ICmdStream> m_stream;
    BCLI m_commands;
    BStopSignals& m_stop;
    std::string m_failure;
    std::thread m_thread;
};

// The names that can be typed: the console's own and the handlers'.
std::vector<std::string> CommandNames(const std::vector<ICmdHandler*>& handlers);

} // namespace VLK::host
