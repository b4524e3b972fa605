#include <vkmibh/cmdhandler.h>

#include "console/CliText.h"

namespace VLK {

namespace {

constexpr int kEndOfTable = -1;

bool IsEnd(const SCmdMapEntry& row) { return row.id == kEndOfTable; }

} // namespace

const SCmdMapEntry BCmdHandler::s_cliEntries[] = {{kEndOfTable, nullptr, nullptr, nullptr}};
// CONTRACT: the quote characters belong to the name; console messages show it so.
const char BCmdHandler::s_cmdHandlerName[] = "\"BCmdHandler\"";

ICmdStream::~ICmdStream() = default;

ICmdHandler::~ICmdHandler() = default;

BCmdHandler::~BCmdHandler() = default;

const char* BCmdHandler::CmdHndlrName() { return CmdGetHndlrName(); }

int BCmdHandler::CmdCount()
{
    const SCmdMapEntry* const map = CmdGetMap();
    int count = 0;
    while (map && !IsEnd(map[count]))
        ++count;
    return count;
}

const char* BCmdHandler::CmdNameAt(int index)
{
    const SCmdMapEntry* const row = CmdAt(index);
    return row ? row->name : nullptr;
}

int BCmdHandler::CmdId(const BString& name)
{
    const SCmdMapEntry* const row = CmdFind(name);
    return row ? row->id : -1;
}

const char* BCmdHandler::CmdGetDescr(const BString& name)
{
    const SCmdMapEntry* const row = CmdFind(name);
    return row ? row->description : nullptr;
}

const char* BCmdHandler::CmdGetArgsDescr(const BString& name)
{
    const SCmdMapEntry* const row = CmdFind(name);
    return row ? row->argsDescription : nullptr;
}

const char* BCmdHandler::CmdGetHndlrName() const { return s_cmdHandlerName; }

const SCmdMapEntry* BCmdHandler::CmdGetMap() const { return s_cliEntries; }

const SCmdMapEntry* BCmdHandler::CmdAt(int index) const
{
    const SCmdMapEntry* row = CmdGetMap();
    if (!row || index < 0)
        return nullptr;
    for (; !IsEnd(*row); ++row, --index) {
        if (index == 0)
            return row;
    }
    return nullptr;
}

const SCmdMapEntry* BCmdHandler::CmdFind(const BString& name) const
{
    const SCmdMapEntry* row = CmdGetMap();
    if (!row || name.empty())
        return nullptr;
    for (; !IsEnd(*row); ++row) {
        if (row->name && IsText(name, row->name))
            return row;
    }
    return nullptr;
}

int BCmdHandler::CmdId(const BString& name, ICmdStream& out) const
{
    const SCmdMapEntry* const row = CmdFind(name);
    if (row)
        return row->id;
    WriteText(out, name, ": unknown command.\n");
    // CONTRACT: the id of a table's first row too; callers come here only with
    // names that the console has found.
    return 0;
}

} // namespace VLK
