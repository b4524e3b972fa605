// The lines that the operator typed, for the arrow keys.
#pragma once

#include <string>

struct history; // the editing library's list of lines

namespace VLK::host {

// Reads the file when it is made and writes it, with mode 0600, when it goes
// after lines were added. A file that cannot be read or written, or none (""),
// is no error: the lines then last as long as the agent.
//
// Threads: no lock inside.
// Errors:  without memory there is no history.
class BHistory {
public:
    static constexpr int s_mostLines = 500;

    explicit BHistory(const std::string& file);
    ~BHistory();
    BHistory(const BHistory&) = delete;
    BHistory& operator=(const BHistory&) = delete;

    // Blank lines, and one that repeats the line before it, are not added.
    void Add(const char* line);
    struct history* Handle() const { return m_lines; }

private:
    void Save() const;

    std::string m_file;
    struct history* m_lines;
    bool m_added = false;
};

// Beside the default store; "" where there is no home directory.
std::string HistoryFile();

} // namespace VLK::host
