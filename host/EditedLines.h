// The console on a terminal: prompt, line editing, history, completion.
#pragma once

#include "host/ConsoleStream.h"
#include "host/History.h"
#include "host/Log.h"
#include "host/OperatorLocale.h"
#include "host/Terminal.h"

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

struct editline; // the editing library's state

namespace VLK::host {

// Lines that the operator edits. Ctrl-D on an empty line is the end of the
// input. A log line goes above the line that is being edited; Ctrl-Z stops the
// agent, and `bg` lets it serve on without a console until `fg`. The
// terminal is set for editing only while a line is waited for.
//
// What commands write is shown without control characters, so that no value
// moves the cursor, and the prompt begins a line of its own.
//
// Ownership: the terminal is the caller's.
// Threads:   GetLine() and Write() on one; construct and destroy while none uses it.
// Errors:    as BConsoleStream; the constructor throws BHostError.
class BEditedLines : public BConsoleStream, private ILineOwner {
public:
    // The names are those that TAB completes.
    BEditedLines(int stopDescriptor, const BTerminal& terminal, std::vector<std::string> names,
                 const std::string& historyFile);
    ~BEditedLines() override;
    BEditedLines(const BEditedLines&) = delete;
    BEditedLines& operator=(const BEditedLines&) = delete;

    int Write(const BString& text) override;

protected:
    bool NextLine(BString& line) override;

private:
    static BEditedLines& Of(editline* editor);
    static char* OnPrompt(editline*);
    static int OnReadCharacter(editline* editor, wchar_t* character);
    static unsigned char OnComplete(editline* editor, int);
    static ssize_t OnOutput(void* self, const char* bytes, size_t length);

    void SetUpEditor();
    bool ReadCharacter(wchar_t& character);
    bool WaitForKey();
    void FollowTerminal();
    void LeaveTerminal();
    void FollowSize();
    void Regain();
    void Redraw();
    void RedrawRow();
    unsigned char CompleteHere();

    std::string GiveWay() override;
    void TakeBack() override;

    const BTerminal& m_terminal;
    std::vector<std::string> m_names;
    BHistory m_history;
    BOperatorLocale m_locale;
    std::unique_ptr<FILE, int (*)(FILE*)> m_output; // what the editor draws
    std::unique_ptr<editline, void (*)(editline*)> m_editor;
    std::string m_clearRow; // the cursor to the row's beginning, the row empty
    BDescriptor m_logged;   // readable when a log line was written
    bool m_atLineStart = true;
    bool m_mustRegain = false; // the terminal may have been set by others
};

} // namespace VLK::host
