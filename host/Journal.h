// The journal of systemd, where standard error goes there.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <sys/stat.h>

namespace VLK::host {

// Whether what is written to the descriptor goes to the journal, which reads a level off
// the beginning of each line (systemd.exec(5), JOURNAL_STREAM; sd-daemon(3)).
inline bool IsJournal(int descriptor)
{
    const char* const named = std::getenv("JOURNAL_STREAM");
    struct stat status = {};
    return named && fstat(descriptor, &status) == 0 &&
           named == std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
}

} // namespace VLK::host
