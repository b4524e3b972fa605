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
    unsigned long long device = 0;
    unsigned long long inode = 0;
    struct stat status = {};
    return named && std::sscanf(named, "%llu:%llu", &device, &inode) == 2 &&
           fstat(descriptor, &status) == 0 && status.st_dev == device && status.st_ino == inode;
}

} // namespace VLK::host
