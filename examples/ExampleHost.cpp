#include "examples/ExampleHost.h"

#include "host/Agent.h"
#include "host/HostError.h"

#include <cstdio>

namespace VLK::examples {

namespace {

int Serve(int argc, char** argv, const host::FAddModules& addModule)
{
    host::BTransportAddress address;
    if (!address.Parse(std::string("udp:") + (argc > 1 ? argv[1] : "127.0.0.1:1161"))) {
        std::fprintf(stderr, "usage: %s [IP:PORT [ARGUMENT]]\n", argv[0]);
        return host::eExitUsage;
    }
    host::SOptions options;
    options.listen = {address};
    options.communities = {{"public", false}, {"private", true}};
    options.withoutStore = true;
    return host::RunAgent(options, addModule);
}

} // namespace

int ServeExample(int argc, char** argv, BMibImplGroup& module)
{
    return Serve(argc, argv, [&](IMIBHandler& handler, ITrapSender&) {
        handler.RegisterGroup(&module);
        module.Init();
    });
}

int ServeExample(int argc, char** argv, BMibSubtreeHandler& module)
{
    return Serve(argc, argv, [&](IMIBHandler& handler, ITrapSender&) {
        handler.RegisterSubtreeHandler(&module);
    });
}

} // namespace VLK::examples
