// What an example's first comment tells its reader to do, and what it promises.
#pragma once

#include "tests/support/TempDir.h"

#include <sstream>
#include <vector>

struct Command {
    std::string text;
    std::string answer; // with its line ends
};

// A command stands behind "//   $ ", its answer in the lines "//   " below it; an
// empty comment line is an empty line of the answer.
inline std::vector<Command> CommandsOf(const std::string& example)
{
    const std::string indent = "//   ";
    std::vector<Command> commands;
    bool answering = false;
    std::istringstream lines(ReadFile(EXAMPLE_SOURCES + example + "/main.cpp"));
    for (std::string line; std::getline(lines, line) && line.compare(0, 2, "//") == 0;) {
        if (line.compare(0, indent.size() + 2, indent + "$ ") == 0) {
            commands.push_back({line.substr(indent.size() + 2), ""});
            answering = true;
        } else if (answering && (line == "//" || line.compare(0, indent.size(), indent) == 0)) {
            commands.back().answer += line == "//" ? "\n" : line.substr(indent.size()) + "\n";
        } else {
            answering = false;
        }
    }
    return commands;
}
