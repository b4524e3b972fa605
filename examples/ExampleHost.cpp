#include "examples/ExampleHost.h"

#include "host/Agent.h"
#include "host/HostError.h"

#include <cstdio>

namespace VLK::examples {

namespace {

int Usage(const char* program)
{
    std::fprintf(stderr, "usage: %s [IP:PORT [ARGUMENT]...]\n", program);
    return host::eExitUsage;
}

int Serve(int argc, char** argv, const host::FAddModules& addModule, const SExampleHost& needs = {})
{
    host::BTransportAddress address;
    if (!address.Parse(std::string("udp:") + (argc > 1 ? argv[1] : "127.0.0.1:1161")))
        return Usage(argv[0]);
    host::SOptions options;
    options.listen = {address};
    options.communities = {{"public", false}, {"private", true}};
    options.withoutStore = needs.storeFile.empty();
    options.store = needs.storeFile;
    if (!needs.receiver.empty()) {
        host::STrapSink sink;
        if (!sink.address.Parse("udp:" + needs.receiver))
            return Usage(argv[0]);
        sink.community = "public";
        sink.security.securityModel = host::eModelV2c;
        sink.security.securityName = "public";
        sink.security.securityLevel = eNoAuthNoPriv;
        options.trapSinks = {sink};
    }
    return host::RunAgent(options, addModule);
}

void Add(IMIBHandler& handler, BMibImplGroup& module)
{
    handler.RegisterGroup(&module);
    module.Init();
}

} // namespace

int ServeExample(int argc, char** argv, BMibImplGroup& module)
{
    return Serve(argc, argv,
                 [&](IMIBHandler& handler, ITrapSender&, INonVolatile*) { Add(handler, module); });
}

int ServeExample(int argc, char** argv, BMibImpl& module)
{
    return Serve(argc, argv, [&](IMIBHandler& handler, ITrapSender&, INonVolatile*) {
        handler.RegisterSubtreeHandler(&module);
        module.Initialize();
    });
}

int ServeExample(int argc, char** argv, BMibSubtreeHandler& module)
{
    return Serve(argc, argv, [&](IMIBHandler& handler, ITrapSender&, INonVolatile*) {
        handler.RegisterSubtreeHandler(&module);
    });
}

int ServeExample(int argc, char** argv, const SExampleHost& host, const FMakeModule& make)
{
    return Serve(
        argc, argv,
        [&](IMIBHandler& handler, ITrapSender& traps, INonVolatile* store) {
            Add(handler, make(store, traps));
        },
        host);
}

} // namespace VLK::examples
