// Command handlers, and the stream that they answer to.
#pragma once

#include <vkmibh/containers.h>

namespace VLK {

struct BSecurityParams;

// Where a console reads its lines and writes its answers.
//
// Ownership: stays with its maker.
// Threads:   as the derived class says; a console uses its stream from the one
//            thread that runs it.
// Errors:    what an implementation returns is passed on, never judged.
// Contract:  the virtuals keep this order.
class VKMIBH_API ICmdStream {
public:
    // In slot order.
    virtual ~ICmdStream();
    // Replaces the line by the next one, without its end.
    virtual int GetLine(BString& line) = 0;
    virtual int Write(const BString& text) = 0;
};

// One row of a handler's command table. The table is constant and static; a
// row {-1, nullptr, nullptr, nullptr} ends it.
struct SCmdMapEntry {
    int id;
    const char* name;            // what the operator types
    const char* description;     // one line of help, may be null
    const char* argsDescription; // the arguments in the list of commands, may be null
};

// Owns some console commands and carries them out.
//
// Ownership: stays with its maker; the texts it returns live as long as it does.
// Threads:   called by the thread that runs the console.
// Errors:    null for a text, -1 for an id that does not exist.
// Contract:  the virtuals keep this order.
class VKMIBH_API ICmdHandler {
public:
    // In slot order.
    virtual ~ICmdHandler();
    virtual const char* CmdHndlrName() = 0;
    virtual int CmdCount() = 0;
    virtual const char* CmdNameAt(int index) = 0;
    virtual int CmdId(const BString& name) = 0;
    virtual const char* CmdGetDescr(const BString& name) = 0;
    virtual const char* CmdGetArgsDescr(const BString& name) = 0;
    // The command's full name, its arguments, and who asks in which context.
    virtual int CmdExecute(ICmdStream& out, const BString& cmd, const BStringArray& args,
                           const BSecurityParams& secParams, const BString& contextName) = 0;
};

// A handler that reads its commands from a table; a derived class gives the
// table, its name and the execution.
//
//   const SCmdMapEntry CClock::s_cliEntries[] = {
//       {0, "time", "Print the time", nullptr},
//       {-1, nullptr, nullptr, nullptr}};
//   const SCmdMapEntry* CClock::CmdGetMap() const { return s_cliEntries; }
//
//   int CClock::CmdExecute(ICmdStream& out, const BString& cmd, ...) {
//       switch (CmdId(cmd, out)) { ...
//
// Names are found exactly as written, the first row first; abbreviations are
// the console's business.
//
// Ownership: the tables are static and never copied.
// Threads:   keeps no state; any.
// Errors:    null or -1 for what is not in the table.
// Contract:  no fields; the virtuals keep this order, two more at the end.
class VKMIBH_API BCmdHandler : public ICmdHandler {
public:
    static const SCmdMapEntry s_cliEntries[]; // empty
    static const char s_cmdHandlerName[];

    // The row at an index or of a name, null when there is none.
    const SCmdMapEntry* CmdAt(int index) const;
    const SCmdMapEntry* CmdFind(const BString& name) const;
    // For CmdExecute(): an unknown name is reported to out, and is 0.
    int CmdId(const BString& name, ICmdStream& out) const;

    // In slot order.
    ~BCmdHandler() override;
    const char* CmdHndlrName() override;
    int CmdCount() override;
    const char* CmdNameAt(int index) override;
    int CmdId(const BString& name) override;
    const char* CmdGetDescr(const BString& name) override;
    const char* CmdGetArgsDescr(const BString& name) override;
    int CmdExecute(ICmdStream& out, const BString& cmd, const BStringArray& args,
                   const BSecurityParams& secParams, const BString& contextName) override = 0;
    virtual const char* CmdGetHndlrName() const;
    virtual const SCmdMapEntry* CmdGetMap() const;
};

} // namespace VLK
