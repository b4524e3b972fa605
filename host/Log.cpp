#include "host/Log.h"

#include "host/Output.h"

#include <cerrno>
#include <mutex>
#include <poll.h>

namespace VLK::host {

namespace {

// How long a line may hold up its thread, which may be the one that serves all
// requests, behind a terminal that was stopped or a pipe that nobody reads.
constexpr int kLongestWaitMs = 200;

std::mutex g_lock;
ILineOwner* g_owner = nullptr;
// Of the lines since the last one that came through.
unsigned long g_omitted = 0;
bool g_isCut = false; // there is the beginning of the first of them

// Whether there is room for more; what held up one line does not hold up the
// next as well.
bool HasRoom(const BOutput& output)
{
    pollfd wait{output.Descriptor(), POLLOUT, 0};
    int count = 0;
    do
        count = poll(&wait, 1, g_omitted ? 0 : kLongestWaitMs);
    while (count < 0 && errno == EINTR);
    return count > 0;
}

bool WriteAll(const BOutput& output, const std::string& text)
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

std::string Omitted()
{
    return g_omitted ? " (" + std::to_string(g_omitted) + " before it were not logged)" : "";
}

} // namespace

void LogLine(const std::string& text)
{
    std::string line = program_invocation_short_name + (": " + text);
    for (char& c : line) {
        if (static_cast<unsigned char>(c) < ' ')
            c = ' ';
    }
    std::lock_guard<std::mutex> lock(g_lock);
    BOutput output(STDERR_FILENO);
    std::string way = g_owner ? g_owner->GiveWay() : "";
    if (!WriteAll(output, (g_isCut ? "\n" : "") + way + line + Omitted() + '\n')) {
        ++g_omitted;
        return;
    }
    g_omitted = 0;
    g_isCut = false;
    if (!way.empty())
        g_owner->TakeBack();
}

BLineOwnership::BLineOwnership(ILineOwner& owner)
{
    std::lock_guard<std::mutex> lock(g_lock);
    g_owner = &owner;
}

BLineOwnership::~BLineOwnership()
{
    std::lock_guard<std::mutex> lock(g_lock);
    g_owner = nullptr;
}

} // namespace VLK::host
