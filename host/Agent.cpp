#include "host/Agent.h"

#include "host/Dispatcher.h"
#include "host/HostError.h"
#include "host/Log.h"
#include "host/Options.h"
#include "host/StopSignals.h"
#include "host/Store.h"
#include "host/StorePath.h"
#include "host/wire/NetSnmpEngine.h"

#include <iostream>
#include <vkmibh/handler.h>

namespace VLK::host {

namespace {

void Serve(const SOptions& options)
{
    BStopSignals stop; // before any thread starts, so that all of them leave the signals alone
    BStore store(options.store.empty() ? DefaultStorePath() : options.store);
    BTime time;
    time.RecordStartTime();
    BCommunityAccess access(options.communities);
    BMibHandler handler(&access);
    handler.Init(&time, &store);
    BDispatcher dispatcher(handler, access, store);
    BNetSnmpEngine engine(dispatcher);

    std::vector<BTransportAddress> open;
    for (const BTransportAddress& address : options.listen)
        open.push_back(engine.Open(address));
    for (const BTransportAddress& address : open)
        LogLine("ready on " + address.ToString());
    engine.Serve(stop.Descriptor());
}

// The library's singletons end with the agent, however it ends.
struct SSingletonsEnd {
    ~SSingletonsEnd() { BSingletons::DestroyAll(); }
};

} // namespace

int RunAgent(int argc, const char* const* argv)
{
    try {
        SOptions options;
        if (std::optional<int> status = ParseOptions(argc, argv, options, std::cout))
            return *status;
        SSingletonsEnd end;
        Serve(options);
        return eExitDone;
    } catch (const BHostError& error) {
        LogLine(error.what());
        return error.Status();
    } catch (const std::exception& error) {
        LogLine(error.what());
        return eExitStore;
    }
}

} // namespace VLK::host
