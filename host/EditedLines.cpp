#include "host/EditedLines.h"

#include "host/Completion.h"
#include "host/HostError.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <cwchar>
#include <histedit.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace VLK::host {

namespace {

constexpr const char* kPrompt = "vk> ";

bool IsShown(char c) { return c == '\n' || c == '\t' || (c >= 0 ? c >= ' ' && c != 0x7f : true); }

} // namespace

BEditedLines::BEditedLines(int stopDescriptor, const BTerminal& terminal,
                           std::vector<std::string> names, const std::string& historyFile)
    : BConsoleStream(stopDescriptor), m_terminal(terminal), m_names(std::move(names)),
      m_history(historyFile), m_output(nullptr, fclose), m_editor(nullptr, el_end),
      m_logged(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    BOperatorLocale::BUse use(m_locale);
    cookie_io_functions_t functions = {};
    functions.write = OnOutput;
    m_output.reset(fopencookie(this, "w", functions));
    if (m_output)
        m_editor.reset(el_init_fd("vkagentd", stdin, m_output.get(), stderr, STDIN_FILENO,
                                  STDOUT_FILENO, STDERR_FILENO));
    if (!m_editor || !m_logged.IsOpen())
        throw BHostError(eExitUsage, "no line editing on this terminal");
    SetUpEditor();
}

BEditedLines::~BEditedLines()
{
    BOperatorLocale::BUse use(m_locale);
    // The terminal has its settings; setting it once more would throw away what
    // is typed already to the one who reads it next.
    el_set(m_editor.get(), EL_EDITMODE, 0);
    m_editor.reset();
}

void BEditedLines::SetUpEditor()
{
    el_set(m_editor.get(), EL_CLIENTDATA, this);
    el_set(m_editor.get(), EL_PROMPT, OnPrompt);
    el_set(m_editor.get(), EL_EDITOR, "emacs");
    el_set(m_editor.get(), EL_SIGNAL, 0);
    el_set(m_editor.get(), EL_GETCFN, OnReadCharacter);
    if (m_history.Handle())
        el_set(m_editor.get(), EL_HIST, history, m_history.Handle());
    // Its texts are not copied; the editor would copy narrow ones and not free them.
    el_wset(m_editor.get(), EL_ADDFN, L"complete-command", L"Complete a command's name",
            OnComplete);
    const char* const keys[][2] = {
        {"^I", "complete-command"},        {"^R", "em-inc-search-prev"},
        {"\\e[3~", "ed-delete-next-char"}, {"\\e[1~", "ed-move-to-beg"},
        {"\\e[4~", "ed-move-to-end"},      {"\\e[1;5C", "em-next-word"},
        {"\\e[1;5D", "ed-prev-word"},
    };
    for (const auto& key : keys)
        el_set(m_editor.get(), EL_BIND, key[0], key[1], nullptr);
    const char* clearToEnd = nullptr;
    if (el_get(m_editor.get(), EL_GETTC, "ce", &clearToEnd, nullptr) == 0 && clearToEnd)
        m_clearRow = std::string("\r") + clearToEnd;
    else
        m_clearRow = "\n";
}

BEditedLines& BEditedLines::Of(editline* editor)
{
    void* self = nullptr;
    el_get(editor, EL_CLIENTDATA, &self);
    return *static_cast<BEditedLines*>(self);
}

char* BEditedLines::OnPrompt(editline*) { return const_cast<char*>(kPrompt); }

int BEditedLines::OnReadCharacter(editline* editor, wchar_t* character)
{
    return Of(editor).ReadCharacter(*character) ? 1 : 0;
}

unsigned char BEditedLines::OnComplete(editline* editor, int)
{
    try {
        return Of(editor).CompleteHere();
    } catch (const std::exception&) { // out of memory; no exception may pass the editor
        return CC_REFRESH_BEEP;
    }
}

ssize_t BEditedLines::OnOutput(void* self, const char* bytes, size_t length)
{
    const BEditedLines& lines = *static_cast<BEditedLines*>(self);
    return lines.WriteBytes(bytes, length) ? static_cast<ssize_t>(length) : 0;
}

int BEditedLines::Write(const BString& text)
{
    unsigned length = VKStrlen(text.c_str());
    if (length == 0)
        return 0;
    std::string shown(text.c_str(), length);
    for (char& c : shown) {
        if (!IsShown(c))
            c = '?';
    }
    m_atLineStart = shown.back() == '\n';
    return BConsoleStream::Write(BString(shown.data(), length));
}

bool BEditedLines::NextLine(BString& line)
{
    if (!m_atLineStart)
        Write(BString("\n"));
    if (!WaitForForeground())
        return false;
    BOperatorLocale::BUse use(m_locale);
    el_resize(m_editor.get());               // while a command ran, nobody saw the terminal change
    el_set(m_editor.get(), EL_PREP_TERM, 1); // or what is typed at once is echoed twice
    BLineOwnership ownership(*this);
    int length = 0;
    const char* text = el_gets(m_editor.get(), &length);
    if (!text) {
        WriteBytes("\n", 1); // leave the prompt's row
        return false;
    }
    line = BString(text, static_cast<unsigned>(std::strcspn(text, "\r\n")));
    m_history.Add(line.c_str());
    return true;
}

bool BEditedLines::ReadCharacter(wchar_t& character)
{
    std::mbstate_t state = {};
    while (WaitForKey()) {
        char byte = 0;
        ssize_t count = read(STDIN_FILENO, &byte, 1);
        if (count < 0 && (errno == EINTR || errno == EAGAIN))
            continue;
        if (count <= 0)
            return false;
        // The state is this call's own, so other threads may do the same.
        // NOLINTNEXTLINE(concurrency-mt-unsafe)
        size_t used = std::mbrtowc(&character, &byte, 1, &state);
        if (used == static_cast<size_t>(-1)) { // what came before is no character of this set
            state = {};
            used = std::mbrtowc(&character, &byte, 1, &state); // NOLINT(concurrency-mt-unsafe)
        }
        if (used == 0 || used == 1)
            return true;
        if (used == static_cast<size_t>(-1))
            state = {};
    }
    return false;
}

// False when the agent ends.
bool BEditedLines::WaitForKey()
{
    for (;;) {
        bool ours = !IsInBackground();
        if (ours && m_mustRegain)
            Regain();
        pollfd waits[] = {{StopDescriptor(), POLLIN, 0},
                          {m_terminal.Descriptor(), POLLIN, 0},
                          {m_logged.Get(), POLLIN, 0},
                          {ours ? STDIN_FILENO : -1, POLLIN, 0}};
        if (poll(waits, 4, ours ? -1 : kForegroundPollMs) < 0) {
            if (errno != EINTR)
                return false;
            continue;
        }
        if (waits[0].revents)
            return false;
        if (waits[1].revents)
            FollowTerminal();
        eventfd_t count = 0;
        if (waits[2].revents && eventfd_read(m_logged.Get(), &count) == 0 && ours)
            Redraw();
        if (waits[3].revents)
            return true;
    }
}

void BEditedLines::FollowTerminal()
{
    while (int number = m_terminal.NextSignal()) {
        if (number != SIGWINCH)
            LeaveTerminal();
        if (number == SIGTSTP)
            m_terminal.Suspend();
        if (number == SIGWINCH)
            FollowSize();
    }
}

// The editor forgets how it set the terminal, and nobody else sees a change.
void BEditedLines::LeaveTerminal()
{
    BSettingsGuard guard;
    el_set(m_editor.get(), EL_PREP_TERM, 0);
    m_mustRegain = true;
}

// The shell, or whoever had the terminal meanwhile, may have set it otherwise.
void BEditedLines::Regain()
{
    m_mustRegain = false;
    m_terminal.KeepSettings();
    el_set(m_editor.get(), EL_PREP_TERM, 1);
    RedrawRow();
}

void BEditedLines::FollowSize()
{
    el_resize(m_editor.get());
    if (!IsInBackground())
        RedrawRow();
}

void BEditedLines::RedrawRow()
{
    WriteBytes(m_clearRow.data(), m_clearRow.size());
    Redraw();
}

void BEditedLines::Redraw() { el_set(m_editor.get(), EL_REFRESH); }

std::string BEditedLines::GiveWay()
{
    return isatty(STDERR_FILENO) && !IsInBackground() ? m_clearRow : "";
}

void BEditedLines::TakeBack() { eventfd_write(m_logged.Get(), 1); }

unsigned char BEditedLines::CompleteHere()
{
    const LineInfo* line = el_line(m_editor.get());
    SCompletion completion = Complete(m_names, std::string(line->buffer, line->cursor));
    if (!completion.insert.empty())
        return el_insertstr(m_editor.get(), completion.insert.c_str()) == 0 ? CC_REFRESH : CC_ERROR;
    if (completion.choices.empty())
        return CC_REFRESH_BEEP;
    std::string list = "\n";
    for (const std::string& choice : completion.choices)
        list += choice + "  ";
    list.replace(list.size() - 2, 2, "\n");
    fputs(list.c_str(), m_output.get());
    return CC_REDISPLAY;
}

} // namespace VLK::host
