// vkagentd on a port the system chose.
#pragma once

#include "tests/support/RunningServer.h"

#include <gtest/gtest.h>
#include <sstream>

class RunningAgent : public RunningServer {
public:
    // Readable by `public`, writable by `private`.
    explicit RunningAgent(const std::string& store, const std::string& listen = "udp:127.0.0.1:0")
        : RunningServer({VKAGENTD, "--store", store, "--listen", listen, "--community", "public:ro",
                         "--community", "private:rw"})
    {
    }
};

// A file with a text, for as long as it lives.
class ConfigFile {
public:
    explicit ConfigFile(const std::string& text) { WriteFile(Name(), text); }
    std::string Name() const { return m_directory.File("agent.toml"); }

private:
    TempDir m_directory;
};

// As its file says.
class ConfiguredAgent : public RunningServer {
public:
    ConfiguredAgent(const std::string& store, const ConfigFile& file, const Arguments& more = {})
        : RunningServer(Line(store, file, more))
    {
    }

private:
    static Arguments Line(const std::string& store, const ConfigFile& file, const Arguments& more)
    {
        Arguments line{VKAGENTD, "--store", store, "--config", file.Name()};
        line.insert(line.end(), more.begin(), more.end());
        return line;
    }
};

inline Arguments Lines(const std::string& text)
{
    Arguments lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

namespace oid {
inline const std::string kSystem = ".1.3.6.1.2.1.1";
inline const std::string kSysDescr = ".1.3.6.1.2.1.1.1.0";
inline const std::string kSysContact = ".1.3.6.1.2.1.1.4.0";
inline const std::string kSysName = ".1.3.6.1.2.1.1.5.0";
inline const std::string kSysLocation = ".1.3.6.1.2.1.1.6.0";
} // namespace oid
