#include "host/StorePath.h"

#include "host/HostError.h"
#include "host/SystemError.h"

#include <cerrno>
#include <cstdlib>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace VLK::host {

namespace {

constexpr size_t kUserTexts = 65536; // far more than the entry of a user takes

std::string HomeDirectory()
{
    if (const char* home = std::getenv("HOME"); home && *home == '/')
        return home;
    passwd user = {};
    passwd* found = nullptr;
    std::vector<char> texts(kUserTexts);
    if (getpwuid_r(geteuid(), &user, texts.data(), texts.size(), &found) == 0 && found &&
        found->pw_dir)
        return found->pw_dir;
    throw BHostError(eExitStore, "no home directory: name the store with --store FILE");
}

} // namespace

void CreateDirectories(const std::string& path)
{
    for (size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        std::string part = path.substr(0, end);
        if (mkdir(part.c_str(), 0700) != 0 && errno != EEXIST)
            throw BHostError(eExitStore,
                             "cannot create directory " + part + ": " + SystemError(errno));
        if (end == path.npos)
            return;
    }
}

std::string StateDirectory()
{
    const char* state = std::getenv("XDG_STATE_HOME");
    std::string directory = state && *state == '/' ? state : HomeDirectory() + "/.local/state";
    return directory + "/vkagentd";
}

std::string DefaultStorePath()
{
    std::string directory = StateDirectory();
    CreateDirectories(directory);
    return directory + "/store.db";
}

} // namespace VLK::host
