// Whether a file keeps a secret.
#pragma once

#include <sys/stat.h>

namespace VLK::host {

// Whether it is a regular file that nobody but its owner may read or write.
inline bool IsPrivate(int descriptor)
{
    struct stat status = {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) &&
           !(status.st_mode & (S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH));
}

} // namespace VLK::host
