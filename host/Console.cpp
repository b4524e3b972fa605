#include "host/Console.h"

#include "host/HostError.h"
#include "host/Terminal.h"

namespace VLK::host {

EConsole ChooseConsole(std::optional<bool> wanted)
{
    if (!wanted.value_or(IsOwnTerminal()))
        return eConsoleOff;
    return isatty(STDIN_FILENO) && isatty(STDOUT_FILENO) ? eConsoleEditing : eConsolePlain;
}

BConsole::BConsole(const std::vector<ICmdHandler*>& handlers, std::unique_ptr<ICmdStream> stream,
                   BStopSignals& stop)
    : m_stream(std::move(stream)), m_commands(m_stream.get()), m_stop(stop)
{
    for (ICmdHandler* handler : handlers)
        m_commands.Register(handler);
    m_thread = std::thread([this] { Run(); });
}

BConsole::~BConsole()
{
    m_stop.Request();
    if (m_thread.joinable())
        m_thread.join();
}

void BConsole::End()
{
    m_stop.Request();
    m_thread.join();
    if (!m_failure.empty())
        throw BHostError(eExitStore, m_failure);
}

void BConsole::Run() noexcept
{
    try {
        m_commands.Start(nullptr, kQuitWord);
    } catch (const std::exception& error) {
        m_failure = std::string("the console failed: ") + error.what();
    }
    m_stop.Request();
}

std::vector<std::string> CommandNames(const std::vector<ICmdHandler*>& handlers)
{
    std::vector<std::string> names{kQuitWord, "?", "help", "clivacm"};
    for (ICmdHandler* handler : handlers) {
        for (int i = 0; i < handler->CmdCount(); ++i) {
            if (const char* name = handler->CmdNameAt(i))
                names.emplace_back(name);
        }
    }
    return names;
}

} // namespace VLK::host
