#include "host/Options.h"

#include "host/HostError.h"

#include <CLI/CLI.hpp>

namespace VLK::host {

namespace {

BTransportAddress ReadListen(const std::string& text)
{
    BTransportAddress address;
    if (!address.Parse(text))
        throw BHostError(eExitUsage,
                         "--listen: '" + text + "' is neither udp:IP:PORT nor udp6:[IP]:PORT");
    return address;
}

SCommunity ReadCommunity(const std::string& text)
{
    size_t colon = text.rfind(':');
    std::string mode = colon == text.npos ? "" : text.substr(colon + 1);
    if (colon == 0 || (mode != "ro" && mode != "rw"))
        throw BHostError(eExitUsage, "--community: '" + text + "' is neither NAME:ro nor NAME:rw");
    return {text.substr(0, colon), mode == "rw"};
}

void AddCommunity(std::vector<SCommunity>& communities, const SCommunity& added)
{
    for (const SCommunity& known : communities) {
        if (known.name == added.name)
            throw BHostError(eExitUsage, "--community: '" + added.name + "' is given twice");
    }
    communities.push_back(added);
}

} // namespace

std::optional<int> ParseOptions(int argc, const char* const* argv, SOptions& options,
                                std::ostream& out)
{
    CLI::App app("SNMP agent serving the MIB-II system group.", "vkagentd");
    std::vector<std::string> listen;
    std::vector<std::string> communities;
    CLI::Option* store = nullptr;
    app.add_option("--listen", listen,
                   "Serve on udp:IP:PORT or udp6:[IP]:PORT (default udp:127.0.0.1:1161); "
                   "may be repeated")
        ->type_name("ADDRESS")
        ->allow_extra_args(false);
    app.add_option("--community", communities,
                   "Answer under NAME, read-only (ro) or read-write (rw), from anywhere; may be "
                   "repeated. Without any, 'public' reads, from this machine only")
        ->type_name("NAME:ro|rw")
        ->allow_extra_args(false);
    store = app.add_option("--store", options.store,
                           "Keep what managers set in FILE (default vkagentd/store.db under "
                           "$XDG_STATE_HOME or ~/.local/state)")
                ->type_name("FILE");
    app.set_version_flag("--version", "vkagentd " VKMIBH_VERSION);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0)
            return app.exit(error, out, out);
        throw BHostError(eExitUsage, error.what());
    }
    if (store->count() && options.store.empty())
        throw BHostError(eExitUsage, "--store: the file name is empty");

    if (listen.empty())
        listen.emplace_back("udp:127.0.0.1:1161");
    for (const std::string& text : listen)
        options.listen.push_back(ReadListen(text));
    for (const std::string& text : communities)
        AddCommunity(options.communities, ReadCommunity(text));
    return std::nullopt;
}

} // namespace VLK::host
