// Lines by syslog(3), which would wait for a log service that reads no more.
#pragma once

#include <string>

namespace VLK::host {

enum ESyslog { eSyslogDone, eSyslogFull, eSyslogAbsent };

// Writes one line from the facility daemon, under the program's name and process id. It
// is not written when the service takes nothing for that many milliseconds, nor when
// there is none.
//
// Threads: one at a time.
ESyslog WriteToSyslog(int priority, const std::string& line, int patience);

} // namespace VLK::host
