// Console streams and command handlers.
#pragma once

#include <vkmibh/containers.h>

namespace VLK {

struct BSecurityParams;

class VKMIBH_API ICmdStream {
public:
    virtual ~ICmdStream();
    virtual int GetLine(BString& line) = 0;
    virtual int Write(const BString& text) = 0;
};

// One row of a handler's command table; id -1 ends the table.
struct SCmdMapEntry {
    int id;
    const char* name;
    const char* description;
    const char* argsDescription;
};

class VKMIBH_API ICmdHandler {
public:
    virtual ~ICmdHandler();
    virtual const char* CmdHndlrName() = 0;
    virtual int CmdCount() = 0;
    virtual const char* CmdNameAt(int index) = 0;
    virtual int CmdId(const BString& name) = 0;
    virtual const char* CmdGetDescr(const BString& name) = 0;
    virtual const char* CmdGetArgsDescr(const BString& name) = 0;
    virtual int CmdExecute(ICmdStream& out, const BString& cmd, const BStringArray& args,
                           const BSecurityParams& secParams, const BString& contextName) = 0;
};

class VKMIBH_API BCmdHandler : public ICmdHandler {
public:
    static const SCmdMapEntry s_cliEntries[];
    static const char s_cmdHandlerName[];

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

    const SCmdMapEntry* CmdAt(int index) const;
    const SCmdMapEntry* CmdFind(const BString& name) const;
    int CmdId(const BString& name, ICmdStream& out) const;
};

} // namespace VLK
