#include "host/Log.h"

#include <cerrno>
#include <mutex>
#include <unistd.h>

namespace VLK::host {

namespace {

std::mutex g_lock;
ILineOwner* g_owner = nullptr;

void WriteAll(const std::string& line)
{
    for (size_t done = 0; done < line.size();) {
        ssize_t written = write(STDERR_FILENO, line.data() + done, line.size() - done);
        if (written < 0 && errno != EINTR)
            return;
        if (written > 0)
            done += static_cast<size_t>(written);
    }
}

} // namespace

void LogLine(const std::string& text)
{
    std::string line = program_invocation_short_name + (": " + text);
    for (char& c : line) {
        if (static_cast<unsigned char>(c) < ' ')
            c = ' ';
    }
    line += '\n';
    std::lock_guard<std::mutex> lock(g_lock);
    if (!g_owner)
        return WriteAll(line);
    WriteAll(g_owner->GiveWay() + line);
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
