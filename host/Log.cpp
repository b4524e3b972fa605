#include "host/Log.h"

#include <cerrno>
#include <unistd.h>

namespace VLK::host {

void LogLine(const std::string& text)
{
    std::string line = "vkagentd: " + text;
    for (char& c : line) {
        if (static_cast<unsigned char>(c) < ' ')
            c = ' ';
    }
    line += '\n';
    for (size_t done = 0; done < line.size();) {
        ssize_t written = write(STDERR_FILENO, line.data() + done, line.size() - done);
        if (written < 0 && errno != EINTR)
            return;
        if (written > 0)
            done += static_cast<size_t>(written);
    }
}

} // namespace VLK::host
