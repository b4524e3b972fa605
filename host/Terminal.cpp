#include "host/Terminal.h"

#include "host/HostError.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <iterator>
#include <sys/signalfd.h>

namespace VLK::host {

namespace {

constexpr int kFatalSignals[] = {SIGQUIT, SIGILL, SIGABRT, SIGBUS, SIGFPE, SIGSEGV};

// As they were found; for the signal handler too.
termios g_settings;
struct sigaction g_actions[std::size(kFatalSignals)];

sigset_t SignalSet(std::initializer_list<int> numbers)
{
    sigset_t set;
    sigemptyset(&set);
    for (int number : numbers)
        sigaddset(&set, number);
    return set;
}

int BlockAndOpen()
{
    sigset_t signals = SignalSet({SIGTSTP, SIGCONT, SIGWINCH});
    sigset_t blocked = SignalSet({SIGTSTP, SIGCONT, SIGWINCH, SIGTTOU});
    pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
}

// A session without job control has no foreground: then too.
bool MayBeSet()
{
    pid_t foreground = tcgetpgrp(STDIN_FILENO);
    return foreground < 0 || foreground == getpgrp();
}

void PutSettingsBack()
{
    if (MayBeSet())
        tcsetattr(STDIN_FILENO, TCSANOW, &g_settings);
}

// Does only what a signal handler may. What was to happen follows: a fault comes
// again when this returns, what was sent is sent again.
void OnFatalSignal(int number, siginfo_t* info, void*)
{
    PutSettingsBack();
    for (size_t i = 0; i < std::size(kFatalSignals); ++i) {
        if (kFatalSignals[i] == number)
            sigaction(number, &g_actions[i], nullptr);
    }
    if (info->si_code <= 0)
        raise(number);
}

void CatchFatalSignals()
{
    struct sigaction action = {};
    action.sa_sigaction = OnFatalSignal;
    action.sa_flags = SA_SIGINFO;
    for (size_t i = 0; i < std::size(kFatalSignals); ++i)
        sigaction(kFatalSignals[i], &action, &g_actions[i]);
}

void LeaveFatalSignals()
{
    for (size_t i = 0; i < std::size(kFatalSignals); ++i)
        sigaction(kFatalSignals[i], &g_actions[i], nullptr);
}

} // namespace

BTerminal::BTerminal() : m_signals(BlockAndOpen())
{
    if (!MayBeSet())
        raise(SIGTTIN);
    if (!MayBeSet())
        throw BHostError(eExitUsage, "no console in the background of a terminal");
    if (!m_signals.IsOpen() || tcgetattr(STDIN_FILENO, &g_settings) != 0)
        throw BHostError(eExitUsage, std::string("no terminal: ") + std::strerror(errno));
    CatchFatalSignals();
}

BTerminal::~BTerminal()
{
    PutSettingsBack();
    LeaveFatalSignals();
}

int BTerminal::NextSignal() const
{
    signalfd_siginfo info;
    ssize_t count = read(m_signals.Get(), &info, sizeof info);
    return count == static_cast<ssize_t>(sizeof info) ? static_cast<int>(info.ssi_signo) : 0;
}

void BTerminal::Suspend() const
{
    sigset_t stop = SignalSet({SIGTSTP});
    raise(SIGTSTP);
    pthread_sigmask(SIG_UNBLOCK, &stop, nullptr);
    pthread_sigmask(SIG_BLOCK, &stop, nullptr);
}

bool BTerminal::IsOurs() const { return MayBeSet(); }

BBackgroundGuard::BBackgroundGuard(const BTerminal& terminal)
    : m_settings(), m_restores(!terminal.IsOurs() && tcgetattr(STDIN_FILENO, &m_settings) == 0)
{
}

BBackgroundGuard::~BBackgroundGuard()
{
    if (m_restores)
        tcsetattr(STDIN_FILENO, TCSANOW, &m_settings);
}

bool IsTerminalOfForeground() { return tcgetpgrp(STDIN_FILENO) == getpgrp(); }

} // namespace VLK::host
