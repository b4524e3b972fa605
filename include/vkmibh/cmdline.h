// The parser of command lines.
#pragma once

#include <vkmibh/containers.h>

namespace VLK {

// Takes a line apart: a command word and its arguments.
//
//   BCmdLineParser line;
//   if (line.Parse("set 'two words' -c7"))
//       Run(line.command, line.args); // "set"; "two words", "-c7"
//
// Blanks, tabs, carriage returns and newlines part the arguments; between
// single or double quotes they belong to one. A quote also ends the word before
// it ("ab"cd is ab and cd), one that is not closed ends with the line, and an
// empty pair is no argument. A word that ends in "=" is put before the arguments
// after it, so that name="a b" is name=a b.
//
// CONTRACT: it is put before all the arguments that follow, up to the end of
// the line: a="x" b is a=x and a=b. A word that ends in "=" and follows a
// finished argument goes before that one as well: a="x y" b="z" is b=x y and
// b=z. A quote drops the argument before it: a="x" "y" is a=y. A lone x= is
// x=x=.
//
// Ownership: owns its texts.
// Threads:   no lock inside; the static operations may run side by side.
// Errors:    Parse: false = the line has no command word, or there is no memory
//            for all of it; command and arguments are then empty, so that no
//            command runs without some of its arguments.
// Contract:  the fields are read by those who parse. A NUL ends the line.
class VKMIBH_API BCmdLineParser {
public:
    BCmdLineParser();
    ~BCmdLineParser();

    // The line may be a text of the parser's own, its first argument for one.
    bool Parse(const BString& line);
    // Adds the arguments of the text. False only when there is no memory; the
    // arguments then end anywhere.
    bool ParseArgs(const char* text);
    // Prints what was parsed to standard output.
    void Dump() const;

    // Whether an argument is a switch: a dash and any other character.
    static bool IsSwitch(const BString& s);
    // Parts -a10.0.0.1 into a and 10.0.0.1, which may be empty. False when it is
    // no switch, or there is no memory for the value: both are then unchanged.
    static bool SplitSwitch(const BString& s, char& sw, BString& value);

    BString command;
    BStringArray args;
};

} // namespace VLK
