#include "host/Terminal.h"

#include "host/HostError.h"
#include "host/SystemError.h"

#include <cerrno>
#include <csignal>
#include <sys/ioctl.h>
#include <sys/signalfd.h>

namespace VLK::host {

namespace {

// As they were found; for the signal handler too.
termios g_settings;
struct sigaction g_actions[NSIG];

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

void PutSettingsBack()
{
    if (!IsInBackground())
        tcsetattr(STDIN_FILENO, TCSANOW, &g_settings);
}

bool IsFault(int number)
{
    return number == SIGILL || number == SIGBUS || number == SIGFPE || number == SIGSEGV;
}

// What is blocked is read from descriptors, and its handler never runs.
bool Kills(int number)
{
    for (int other :
         {SIGKILL, SIGSTOP, SIGTSTP, SIGTTIN, SIGTTOU, SIGCONT, SIGCHLD, SIGURG, SIGWINCH}) {
        if (number == other)
            return false;
    }
    // A sanitizer has handlers of its own for faults.
    const struct sigaction& action = g_actions[number];
    return action.sa_handler == SIG_DFL || (IsFault(number) && action.sa_handler != SIG_IGN);
}

// Does only what a signal handler may. What was to happen follows: a fault comes
// again when this returns, what was sent is sent again.
void OnFatalSignal(int number, siginfo_t* info, void*)
{
    PutSettingsBack();
    sigaction(number, &g_actions[number], nullptr);
    bool comesAgain = IsFault(number) && info->si_code > 0;
    if (!comesAgain)
        raise(number);
}

template <class TDo>
void ForEachFatalSignal(TDo&& act)
{
    for (int number = 1; number < NSIG; ++number) {
        if (Kills(number))
            act(number);
    }
}

void CatchFatalSignals()
{
    for (int number = 1; number < NSIG; ++number)
        sigaction(number, nullptr, &g_actions[number]);
    struct sigaction action = {};
    action.sa_sigaction = OnFatalSignal;
    action.sa_flags = SA_SIGINFO;
    ForEachFatalSignal([&](int number) { sigaction(number, &action, nullptr); });
}

void LeaveFatalSignals()
{
    ForEachFatalSignal([](int number) { sigaction(number, &g_actions[number], nullptr); });
}

} // namespace

BTerminal::BTerminal() : m_signals(BlockAndOpen())
{
    // Stops until it is in the foreground; without a shell that could bring it
    // there, the signal does nothing and nobody continues it.
    while (IsInBackground()) {
        raise(SIGTTIN);
        if (NextSignal() == 0)
            throw BHostError(eExitUsage, "no console in the background of a terminal");
    }
    if (!m_signals.IsOpen() || tcgetattr(STDIN_FILENO, &g_settings) != 0)
        throw BHostError(eExitUsage, "no terminal: " + SystemError(errno));
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
    PutSettingsBack();
    sigset_t stop = SignalSet({SIGTSTP});
    raise(SIGTSTP);
    pthread_sigmask(SIG_UNBLOCK, &stop, nullptr);
    pthread_sigmask(SIG_BLOCK, &stop, nullptr);
}

void BTerminal::KeepSettings() const
{
    termios found = {};
    if (tcgetattr(STDIN_FILENO, &found) == 0 && (found.c_lflag & ICANON))
        g_settings = found;
}

BSettingsGuard::BSettingsGuard()
    : m_settings(), m_restores(tcgetattr(STDIN_FILENO, &m_settings) == 0)
{
}

BSettingsGuard::~BSettingsGuard()
{
    if (m_restores)
        tcsetattr(STDIN_FILENO, TCSANOW, &m_settings);
}

// A session without job control has no background.
bool IsInBackground()
{
    pid_t foreground = tcgetpgrp(STDIN_FILENO);
    return foreground >= 0 && foreground != getpgrp();
}

bool IsOwnTerminal()
{
    if (!isatty(STDIN_FILENO) || IsInBackground())
        return false;
    // The terminal of another session cannot become that of this one.
    bool hasLeft = getsid(0) == getpid() && tcgetpgrp(STDIN_FILENO) < 0 &&
                   ioctl(STDIN_FILENO, TIOCSCTTY, 0) != 0;
    return !hasLeft;
}

} // namespace VLK::host
