// The operator's console: a loop that reads lines and runs commands.
#pragma once

#include <vkmibh/cmdhandler.h>
#include <vkmibh/transactions.h>

namespace VLK {

// Standard input and output as a console's stream.
//
// Ownership: owns nothing; all objects are the same input and output.
// Threads:   any; a write is one piece among all that hold a TTraceGuard.
// Errors:    GetLine: always 0. Write: what printf returns, below 0 = not printed.
// Contract:  no fields. Lines keep their carriage returns. A text is printed up
//            to its first NUL.
class VKMIBH_API BCmdStream : public ICmdStream {
public:
    // GetLine reads this many characters at most, the newline among them; what
    // remains of a longer line is the next line.
    static constexpr unsigned s_maxLine = 1024;
    // How long GetLine waits, in milliseconds, before it answers that nothing
    // is left to read: a console that goes on prompting shall not keep a
    // processor busy.
    static std::atomic<unsigned> s_pauseAtEnd;

    // In slot order.
    ~BCmdStream() override;
    // At the end of the input the line is what was read before it, or empty. A
    // terminal, or a file that grew, is read on by the next call.
    int GetLine(BString& line) override;
    int Write(const BString& text) override;
};

// The operator's console. Knows four commands itself (?, help, clivacm, and one
// to quit) and gives all others to the handlers that registered them; the
// operator may shorten those to any beginning that only one of them has.
//
//   BCLI console(&mibHandler, nullptr);
//   console.Register(&clock);
//   console.Start("agent> ", "q"); // returns when q is typed
//
// Commands run as a requester of their own: a security name, model, level and
// context that every handler is given, and that the operator sets by clivacm.
//
// The end of the input does not end Start(): a stream that gives empty lines is
// prompted on. A host that wants its console to end there gives it a stream of
// its own whose GetLine() then answers with the quit word.
//
// Ownership: handlers and the stream stay their makers' and outlive the console.
// Threads:   one thread at a time; all handlers are registered before Start(),
//            and none by a command.
// Errors:    mistakes of the operator are told on the stream. What a handler
//            throws ends its command, which is told too; what a stream throws
//            comes through. Without memory a line is not run, a text not
//            written, a name not changed, or a command not known, also one of
//            the console's own.
// Contract:  field order is ABI. One message or line of a list is one Write().
//            The names of the four commands are never shortened, and go before
//            those of handlers.
class VKMIBH_API BCLI {
public:
    // Command names and the handlers (ICmdHandler*) that own them.
    class VKMIBH_API Commands : public BMapStr2Ptr {
    public:
        static constexpr int s_none = -1;
        static constexpr int s_ambiguous = -2;

        // The one command that is called so or begins so, s_none, or s_ambiguous
        // when more than one begins so; a name in full is never ambiguous.
        // Insert() and Remove() go by exact names.
        int Find(const BString& name) const;
        ICmdHandler* HandlerAt(int index) const { return static_cast<ICmdHandler*>(DataAt(index)); }
    };

    // Without a stream: standard input and output.
    explicit BCLI(ICmdStream* stream);
    BCLI(ICmdHandler* handler, ICmdStream* stream);
    ~BCLI();
    BCLI(const BCLI&) = delete;
    BCLI& operator=(const BCLI&) = delete;

    // Adds a handler's commands and returns their number, 0 for a null handler.
    // A name that is registered, or a beginning of exactly one that is, is
    // refused: the stream is told, the others are added.
    // CONTRACT: refused names count; and so a short name must be registered
    // before the longer ones that begin with it.
    int Register(ICmdHandler* handler);
    // Prompts, reads and runs lines until one is the quit command. Null prompt:
    // none. Null quit name: the one it has, "q" at first.
    void Start(const char* prompt, const char* quitName);
    // Runs one line; false = it is the quit command.
    bool Exec(const BString& line);

    // The commands ?, help and clivacm.
    void ShowCmdList(const BStringArray& args);
    void ShowCmdHelp(const BStringArray& args);
    void CliVacm(const BStringArray& args);

    // That many blanks, at least one.
    static BString Space(int n);

private:
    friend struct SLayoutCheck;
    VKMIBH_LOCAL void RegisterName(const BString& name, ICmdHandler* handler);
    VKMIBH_LOCAL void RunCommand(const BString& command, const BStringArray& args);

    Commands m_commands;
    ICmdHandler* m_handler;
    BSecurityParams m_security;
    BString m_contextName;
    // CONTRACT: takes its place and is not used otherwise.
    BString m_reserved;
    BString m_quitName;
    BString m_listName;
    BString m_helpName;
    BString m_vacmName;
    BCmdStream m_defaultStream;
    ICmdStream* m_stream;
};

} // namespace VLK
