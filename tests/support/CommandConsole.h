// Typing the console commands of a BMibHandler and reading what they print.
#pragma once

#include "tests/support/ScriptedStream.h"

#include <vkmibh/handler.h>

#include <sstream>
#include <string>
#include <vector>

namespace VLK {
namespace Test {

// An operator at the console of one handler.
class CommandConsole {
public:
    using Texts = std::vector<std::string>;

    explicit CommandConsole(BMibHandler& handler) : m_handler(handler)
    {
        security.securityModel = 2;
        security.securityName = BString("operator");
        security.securityLevel = 1;
        context = BString("ctx");
    }

    // A line of words between blanks; gives all that it writes, one text per Write().
    Texts Type(const std::string& line)
    {
        std::istringstream stream(line);
        std::string command;
        stream >> command;
        std::vector<std::string> words;
        for (std::string word; stream >> word;)
            words.push_back(word);
        return Run(command, words);
    }

    Texts Run(const std::string& command, const std::vector<std::string>& words)
    {
        ScriptedStream out;
        BCmdHandler& asConsole = m_handler;
        result = asConsole.CmdExecute(out, StringOf(command), ArgsOf(words), security, context);
        return out.texts;
    }

    BSecurityParams security;
    BString context;
    int result = -1;

private:
    BMibHandler& m_handler;
};

} // namespace Test
} // namespace VLK
