// The console's commands that tell how the agent comes to its answers.
#pragma once

#include "host/Dispatcher.h"
#include "host/agents/HostAgents.h"
#include "host/verbs/WatchingHandler.h"

#include <functional>
#include <vkmibh/cmdhandler.h>

namespace VLK::host {

// explain, owners, stats and lastset. They change nothing; explain asks for the value
// of an object that may be read, and shows none.
//
// Ownership: what it is given outlives it.
// Threads:   the console's, beside requests.
// Errors:    mistakes of the operator are told on the stream; CmdExecute() throws
//            std::bad_alloc, and what the stream throws.
class BVerbs : public BCmdHandler {
public:
    struct SSources {
        BWatchingHandler& handler;
        const BRegions& regions;
        BAccess& access;
        const BRequestStats& requests;
        std::function<SEngineLoad()> load;
        std::function<SAgentTotals()> totals;
    };

    // Each class of handlers has its own.
    // cppcheck-suppress duplInheritedMember
    static const SCmdMapEntry s_cliEntries[];
    static const char s_cmdHandlerName[]; // cppcheck-suppress duplInheritedMember

    explicit BVerbs(SSources sources);

    int CmdExecute(ICmdStream& out, const BString& cmd, const BStringArray& args,
                   const BSecurityParams& secParams, const BString& contextName) override;
    const char* CmdGetHndlrName() const override;
    const SCmdMapEntry* CmdGetMap() const override;

private:
    using CWords = std::vector<std::string>;
    using CLines = std::vector<std::string>;

    CLines Run(const BString& cmd, const CWords& words, const BSecurityParams& security,
               const BString& context);
    CLines Explain(const CWords& words, const BSecurityParams& security, const BString& context);
    CLines Owners(const CWords& words) const;

    SSources m_sources;
};

} // namespace VLK::host
