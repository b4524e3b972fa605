// An example on a port the system chose, in a directory of its own, in which there is
// nothing but an empty directory `build`.
#pragma once

#include "tests/support/RunningServer.h"

class RunningExample {
public:
    explicit RunningExample(const std::string& name, const Arguments& arguments = {},
                            const std::string& address = "127.0.0.1:0")
        : m_server(Line(name, arguments, address))
    {
    }

    RunningServer& Server() { return m_server; }
    const std::string& Directory() const { return m_directory.Path(); }

private:
    Arguments Line(const std::string& name, const Arguments& arguments,
                   const std::string& address) const
    {
        std::filesystem::create_directory(m_directory.File("build"));
        Arguments line{
            "env",  "-C", m_directory.Path(), "HOME=" + m_directory.Path(), EXAMPLE_PROGRAMS + name,
            address};
        line.insert(line.end(), arguments.begin(), arguments.end());
        return line;
    }

    TempDir m_directory;
    RunningServer m_server;
};
