#include "host/Options.h"

#include "host/HostError.h"
#include "host/config/ConfigFile.h"
#include "host/config/ConfigValues.h"

#include <CLI/CLI.hpp>

namespace VLK::host {

namespace {

constexpr const char* kDefaultAddress = "udp:127.0.0.1:1161";

BTransportAddress ReadListen(const std::string& text)
{
    BTransportAddress address;
    if (!address.Parse(text))
        throw BHostError(eExitUsage,
                         "--listen: '" + text + "' is neither udp:IP:PORT nor udp6:[IP]:PORT");
    return address;
}

SCommunityOption ReadCommunity(const std::string& text)
{
    size_t colon = text.rfind(':');
    std::string mode = colon == text.npos ? "" : text.substr(colon + 1);
    if (colon == 0 || (mode != "ro" && mode != "rw"))
        throw BHostError(eExitUsage, "--community: '" + text + "' is neither NAME:ro nor NAME:rw");
    std::string name = text.substr(0, colon);
    std::string why = CheckCommunity(name);
    if (!why.empty())
        throw BHostError(eExitUsage, "--community: '" + name + "' " + why);
    return {name, mode == "rw"};
}

template <class T, size_t count>
void ReadChoice(const CLI::Option& option, const SWord (&words)[count], std::optional<T>& choice)
{
    if (!option.count())
        return;
    int value = 0;
    const std::string text = option.as<std::string>();
    const std::string why = ReadWord(text, words, value);
    if (!why.empty())
        throw BHostError(eExitUsage, option.get_name() + ": '" + text + "' " + why);
    choice = static_cast<T>(value);
}

void Remember(std::vector<SCommunityOption>& communities, const SCommunityOption& added)
{
    for (const SCommunityOption& known : communities) {
        if (known.name == added.name)
            throw BHostError(eExitUsage, "--community: '" + added.name + "' is given twice");
    }
    communities.push_back(added);
}

// The options as they stand on the command line.
struct SLine {
    explicit SLine(SOptions& options);
    void Check() const;

    CLI::App app{"SNMP agent: the system, interfaces and resources of this host.", "vkagentd"};
    std::vector<std::string> listen;
    std::vector<std::string> communities;
    CLI::Option* config;
    CLI::Option* checkConfig;
    CLI::Option* store;
    CLI::Option* resetStore;
    CLI::Option* console;
    CLI::Option* noConsole;
    CLI::Option* log;
    CLI::Option* logLevel;
};

SLine::SLine(SOptions& options)
{
    config = app.add_option("--config", options.config, "Read the configuration from FILE")
                 ->type_name("FILE");
    checkConfig = app.add_flag("--check-config", options.checkConfig,
                               "Only say what is wrong with the configuration");
    app.add_option("--listen", listen,
                   "Serve on udp:IP:PORT or udp6:[IP]:PORT (default: as configured, or "
                   "udp:127.0.0.1:1161); may be repeated")
        ->type_name("ADDRESS")
        ->allow_extra_args(false);
    app.add_option("--community", communities,
                   "Answer under NAME, read-only (ro) or read-write (rw), from anywhere, beside "
                   "the communities configured; may be repeated. Without any, here and in the "
                   "configuration, 'public' reads the system group, from this machine only")
        ->type_name("NAME:ro|rw")
        ->allow_extra_args(false);
    store = app.add_option("--store", options.store,
                           "Keep what managers set in FILE (default: as configured, or "
                           "vkagentd/store.db under $XDG_STATE_HOME or ~/.local/state)")
                ->type_name("FILE");
    resetStore =
        app.add_flag("--reset-store", options.resetStore, "Forget what managers have set before");
    console = app.add_flag("--console", "Read commands from standard input, a line each; as when "
                                        "it is a terminal. The end of the input ends the agent");
    noConsole = app.add_flag("--no-console", "Never read standard input");
    app.add_flag("-f,--foreground", "Stay in the foreground: as always, the agent is no daemon of "
                                    "its own making");
    log = app.add_option("--log", "Write log lines to stderr or to syslog (default: as configured, "
                                  "or stderr)")
              ->type_name("stderr|syslog");
    logLevel = app.add_option("--log-level", "Write lines of that level and of the graver ones "
                                             "(default: as configured, or info)")
                   ->type_name("error|warning|notice|info");
    app.add_option("--workers", options.workers,
                   "Run up to N requests at once when modules are slow (default: as configured, "
                   "or four for each processor)")
        ->type_name("N")
        ->check(CLI::Range(1u, kMostWorkers));
    app.set_version_flag("--version", "vkagentd " VKMIBH_VERSION);
}

void SLine::Check() const
{
    if (store->count() && store->as<std::string>().empty())
        throw BHostError(eExitUsage, "--store: the file name is empty");
    if (config->count() && config->as<std::string>().empty())
        throw BHostError(eExitUsage, "--config: the file name is empty");
    if (checkConfig->count() && !config->count())
        throw BHostError(eExitUsage, "--check-config needs --config FILE");
    if (checkConfig->count() && resetStore->count())
        throw BHostError(eExitUsage, "--check-config and --reset-store exclude each other");
    if (console->count() && noConsole->count())
        throw BHostError(eExitUsage, "--console and --no-console exclude each other");
}

// Whether a member of the name is in a group, with a model of the wire.
bool IsMember(const SConfiguration& configuration, const std::string& securityName)
{
    for (const SGroup& group : configuration.groups) {
        for (const SMember& member : group.members) {
            if (member.model != eModelUsm && member.securityName == securityName)
                return true;
        }
    }
    return false;
}

void AddOption(SConfiguration& configuration, const SCommunityOption& option)
{
    for (const SCommunity& known : configuration.communities) {
        if (known.name == option.name)
            throw BHostError(eExitUsage, "--community: '" + option.name + "' is a community of " +
                                             configuration.file + " too");
    }
    if (IsMember(configuration, option.name))
        throw BHostError(eExitUsage, "--community: '" + option.name +
                                         "' is the securityName of a member of a group in " +
                                         configuration.file);
    AddCommunity(configuration, {option.name, option.name, "", BNetwork::Anywhere()},
                 {kViewEverything, option.writable ? kViewEverything : "", kViewEverything});
}

} // namespace

std::optional<int> ParseOptions(int argc, const char* const* argv, SOptions& options,
                                std::ostream& out)
{
    SLine line(options);
    try {
        line.app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0)
            return line.app.exit(error, out, out);
        throw BHostError(eExitUsage, error.what());
    }
    line.Check();
    if (line.console->count() || line.noConsole->count())
        options.console = line.console->count() > 0;
    ReadChoice(*line.log, kLogTargets, options.log);
    ReadChoice(*line.logLevel, kLogLevels, options.logLevel);
    for (const std::string& text : line.listen)
        options.listen.push_back(ReadListen(text));
    for (const std::string& text : line.communities)
        Remember(options.communities, ReadCommunity(text));
    return std::nullopt;
}

SConfiguration Configure(const SOptions& options)
{
    SConfiguration configuration;
    if (!options.config.empty())
        configuration = ReadConfigFile(options.config);
    if (!configuration.hasCommunities && options.communities.empty() &&
        !IsMember(configuration, "public"))
        AddCommunity(configuration, {"public", "public", "", BNetwork::ThisMachine()},
                     {kViewSystemOnly, "", kViewSystemOnly});
    for (const SCommunityOption& community : options.communities)
        AddOption(configuration, community);
    if (!options.listen.empty())
        configuration.listen = options.listen;
    if (configuration.listen.empty()) {
        configuration.listen.emplace_back();
        configuration.listen.front().Parse(kDefaultAddress);
    }
    configuration.trapSinks.insert(configuration.trapSinks.end(), options.trapSinks.begin(),
                                   options.trapSinks.end());
    if (!options.store.empty())
        configuration.store = options.store;
    configuration.log = options.log.value_or(configuration.log);
    configuration.logLevel = options.logLevel.value_or(configuration.logLevel);
    if (options.workers > 0)
        configuration.workers = options.workers;
    OpenConsole(configuration);
    return configuration;
}

} // namespace VLK::host
