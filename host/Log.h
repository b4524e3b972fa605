// Lines for the operator on standard error.
#pragma once

#include <string>

namespace VLK::host {

// Writes the program's name, ": " and the text as one line, with one write where
// there is room for it; control characters become blanks. A line that nobody
// takes is left out soon, and the next one that comes through tells how many.
//
// Threads: any.
void LogLine(const std::string& text);

// Who is writing a line of its own where log lines go: an edited line on the
// terminal.
//
// Threads: called on the threads that log, one at a time.
class ILineOwner {
public:
    virtual ~ILineOwner() = default;
    // What to write before the log line, to have the row for it; nothing when
    // log lines go elsewhere.
    virtual std::string GiveWay() = 0;
    // It gave way, and the log line is written; the owner's may be drawn again,
    // below it.
    virtual void TakeBack() = 0;
};

// While it lives, log lines respect the owner.
class BLineOwnership {
public:
    explicit BLineOwnership(ILineOwner& owner);
    ~BLineOwnership();
    BLineOwnership(const BLineOwnership&) = delete;
    BLineOwnership& operator=(const BLineOwnership&) = delete;
};

} // namespace VLK::host
