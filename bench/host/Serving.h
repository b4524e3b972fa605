// The agent behind the wire, for benchmarks.
#pragma once

#include "host/Dispatcher.h"
#include "host/Options.h"
#include "host/verbs/WatchingHandler.h"

namespace VLK::host {

class NoSaves : public ISetSaves {
public:
    void Hold() override {}
    bool SaveHeld() override { return true; }
};

// `public` reads everything, `private` writes it too; `rows` more subtrees of a view that nobody
// asks for.
inline SConfiguration WithPublic(int rows)
{
    SOptions options;
    options.communities = {{"public", false}, {"private", true}};
    SConfiguration configuration = Configure(options);
    SView other;
    other.name = "other";
    for (int i = 0; i < rows; ++i) {
        BObjectIdentifier subtree(BString("1.3.6.1.4.1.32473"));
        subtree.Append(static_cast<unsigned>(i));
        other.families.push_back({subtree, BOctetString(), eFilterIncluded});
    }
    configuration.views.push_back(other);
    return configuration;
}

inline SRequest RequestFrom(const char* remote)
{
    SRequest request;
    request.remote.Parse(remote);
    request.maxMessage = 65507;
    return request;
}

// A dispatcher and what is behind it, without the wire and a store. Modules are watched,
// and a request has its clock, as in the agent.
struct SServing {
    NoSaves saves;
    BAccess access{WithPublic(0), nullptr};
    BRegions regions;
    BWatchingHandler handler{access, saves, regions};
    modules::SSnmpCounters counters;
    BDispatcher dispatcher{handler, access, counters};

    BRelay relay{1, std::chrono::hours(1)};
    const int64_t ticket = relay.Begin();

    SServing() { handler.Init(nullptr, nullptr); }
    bool Handle(SRequest& request, SResponse& response)
    {
        const BRequestClock clock(&relay, ticket);
        return dispatcher.Handle(request, response);
    }
};

} // namespace VLK::host
