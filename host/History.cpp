#include "host/History.h"

#include "host/HostError.h"
#include "host/StorePath.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <histedit.h>
#include <sys/stat.h>
#include <unistd.h>

namespace VLK::host {

namespace {

bool IsRegularFile(const std::string& file)
{
    struct stat status = {};
    return stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

bool CreateDirectoryOf(const std::string& file)
{
    try {
        CreateDirectories(file.substr(0, file.rfind('/')));
        return true;
    } catch (const BHostError&) {
        return false;
    }
}

} // namespace

BHistory::BHistory(const std::string& file) : m_file(file), m_lines(history_init())
{
    if (!m_lines)
        return;
    HistEvent event;
    history(m_lines, &event, H_SETSIZE, s_mostLines);
    history(m_lines, &event, H_SETUNIQUE, 1);
    if (IsRegularFile(m_file))
        history(m_lines, &event, H_LOAD, m_file.c_str());
}

BHistory::~BHistory()
{
    if (!m_lines)
        return;
    if (m_added && !m_file.empty() && CreateDirectoryOf(m_file))
        Save();
    history_end(m_lines);
}

void BHistory::Add(const char* line)
{
    if (!m_lines || line[std::strspn(line, " \t\r\n")] == '\0')
        return;
    HistEvent event;
    m_added = history(m_lines, &event, H_ENTER, line) >= 0 || m_added;
}

// The file is there whole, old or new, whatever cuts this short.
void BHistory::Save() const
{
    std::string written = m_file + ".XXXXXX";
    int descriptor = mkstemp(written.data()); // with mode 0600
    if (descriptor < 0)
        return;
    HistEvent event;
    FILE* stream = fdopen(descriptor, "w");
    if (!stream)
        close(descriptor);
    bool done = stream && history(m_lines, &event, H_SAVE_FP, stream) >= 0;
    done = stream && fclose(stream) == 0 && done;
    if (!done || rename(written.c_str(), m_file.c_str()) != 0)
        unlink(written.c_str());
}

std::string HistoryFile()
{
    try {
        return StateDirectory() + "/history";
    } catch (const BHostError&) {
        return "";
    }
}

} // namespace VLK::host
