#include "host/Log.h"

#include "host/Journal.h"
#include "host/Mutex.h"
#include "host/Output.h"
#include "host/Syslog.h"

#include <atomic>
#include <cerrno>
#include <poll.h>

namespace VLK::host {

namespace {

// How long a line may hold up its thread, which may be the one that serves all
// requests, behind a terminal that was stopped or a pipe that nobody reads.
constexpr int kLongestWaitMs = 200;

std::atomic<ELogLevel> g_level{eLogInfo};
BMutex g_lock;
ELogTarget g_target VKMIBH_TSA(guarded_by(g_lock)) = eLogStderr;
ILineOwner* g_owner VKMIBH_TSA(guarded_by(g_lock)) = nullptr;
// Of the lines since the last one that came through.
unsigned long g_omitted VKMIBH_TSA(guarded_by(g_lock)) = 0;
bool g_isCut VKMIBH_TSA(guarded_by(g_lock)) = false; // there is the beginning of the first of them

// What held up one line does not hold up the next as well.
int Patience() VKMIBH_TSA(requires_capability(g_lock)) { return g_omitted ? 0 : kLongestWaitMs; }

// Whether there is room for more.
bool HasRoom(const BOutput& output) VKMIBH_TSA(requires_capability(g_lock))
{
    pollfd wait{output.Descriptor(), POLLOUT, 0};
    int count = 0;
    do
        count = poll(&wait, 1, Patience());
    while (count < 0 && errno == EINTR);
    return count > 0;
}

bool WriteAll(const BOutput& output, const std::string& text)
    VKMIBH_TSA(requires_capability(g_lock))
{
    for (size_t done = 0; done < text.size();) {
        ssize_t written =
            HasRoom(output) ? output.Write(text.data() + done, text.size() - done) : 0;
        if (written == 0 || (written < 0 && errno != EINTR && errno != EAGAIN)) {
            g_isCut = g_isCut || done > 0;
            return false;
        }
        if (written > 0)
            done += static_cast<size_t>(written);
    }
    return true;
}

std::string Omitted() VKMIBH_TSA(requires_capability(g_lock))
{
    return g_omitted ? " (" + std::to_string(g_omitted) + " before it were not logged)" : "";
}

std::string OnOneLine(std::string text)
{
    for (char& c : text) {
        if (static_cast<unsigned char>(c) < ' ')
            c = ' ';
    }
    return text;
}

bool WriteToStderr(ELogLevel level, const std::string& text) VKMIBH_TSA(requires_capability(g_lock))
{
    BOutput output(STDERR_FILENO);
    const std::string label = IsJournal(STDERR_FILENO) ? "<" + std::to_string(level) + ">" : "";
    std::string way = g_owner ? g_owner->GiveWay() : "";
    if (!WriteAll(output, (g_isCut ? "\n" : "") + way + label + program_invocation_short_name +
                              ": " + text + '\n'))
        return false;
    g_isCut = false;
    if (!way.empty())
        g_owner->TakeBack();
    return true;
}

bool Write(ELogLevel level, const std::string& text) VKMIBH_TSA(requires_capability(g_lock))
{
    switch (g_target == eLogSyslog ? WriteToSyslog(level, text, Patience()) : eSyslogAbsent) {
    case eSyslogDone:
        return true;
    case eSyslogFull:
        return false;
    default:
        return WriteToStderr(level, text);
    }
}

} // namespace

void SetLog(ELogTarget target, ELogLevel level)
{
    const BLock lock(g_lock);
    g_target = target;
    g_level = level;
}

bool IsLogged(ELogLevel level) { return level <= g_level; }

void LogLine(ELogLevel level, const std::string& text)
{
    if (!IsLogged(level))
        return;
    const std::string line = OnOneLine(text);
    const BLock lock(g_lock);
    if (Write(level, line + Omitted()))
        g_omitted = 0;
    else
        ++g_omitted;
}

BLineOwnership::BLineOwnership(ILineOwner& owner)
{
    const BLock lock(g_lock);
    g_owner = &owner;
}

BLineOwnership::~BLineOwnership()
{
    const BLock lock(g_lock);
    g_owner = nullptr;
}

} // namespace VLK::host
