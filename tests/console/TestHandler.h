// A command handler that tells how it was called.
#pragma once

#include "tests/support/ScriptedStream.h"

#include <vkmibh/cmdhandler.h>
#include <vkmibh/transactions.h>

#include <string>
#include <utility>
#include <vector>

namespace VLK {
namespace Test {

class TestHandler : public BCmdHandler {
public:
    // The display name may be null.
    TestHandler(const char* name, std::vector<SCmdMapEntry> rows)
        : m_name(name), m_rows(std::move(rows))
    {
        m_rows.push_back({-1, nullptr, nullptr, nullptr});
    }

    // Writes "[command] 'argument' ... by 'name' model/level in 'context'".
    int CmdExecute(ICmdStream& out, const BString& cmd, const BStringArray& args,
                   const BSecurityParams& security, const BString& context) override
    {
        std::string text = "[" + Text(cmd) + "]";
        for (unsigned i = 0; i < args.Count(); ++i)
            text += " '" + Text(args[static_cast<int>(i)]) + "'";
        text += " by '" + Text(security.securityName) + "' " +
                std::to_string(security.securityModel) + "/" +
                std::to_string(security.securityLevel) + " in '" + Text(context) + "'\n";
        out.Write(StringOf(text));
        ++executed;
        return result;
    }
    const char* CmdGetHndlrName() const override { return m_name; }
    const SCmdMapEntry* CmdGetMap() const override { return m_rows.data(); }

    int executed = 0;
    int result = 0;

protected:
    static std::string Text(const BString& text)
    {
        return std::string(text.c_str(), text.length());
    }

private:
    const char* const m_name;
    std::vector<SCmdMapEntry> m_rows;
};

} // namespace Test
} // namespace VLK
