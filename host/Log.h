// Lines for the operator, on standard error or by syslog.
#pragma once

#include <string>

namespace VLK::host {

// The priorities of syslog(3): what keeps the agent, or a value, from working; what is
// not as the operator wants it; what the agent does; what becomes of single requests.
enum ELogLevel { eLogError = 3, eLogWarning = 4, eLogNotice = 5, eLogInfo = 6 };

enum ELogTarget { eLogStderr, eLogSyslog };

// Where lines go from now on, and up to which level there are any: at first to standard
// error, all of them. Where syslog is chosen and nobody listens there, they go to
// standard error.
//
// Threads: any.
void SetLog(ELogTarget target, ELogLevel level);

// Whether lines of that level are written at all.
bool IsLogged(ELogLevel level);

// Writes the program's name, ": " and the text as one line, with one write where
// there is room for it; control characters become blanks. What the journal of systemd
// reads begins with the level, "<N>", as it wants it. To syslog goes the text, from the
// facility daemon. A line that nobody takes is left out soon, and the next one that
// comes through tells how many.
//
// Threads: any.
void LogLine(ELogLevel level, const std::string& text);

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
