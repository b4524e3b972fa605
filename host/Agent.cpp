#include "host/Agent.h"

#include "host/Console.h"
#include "host/Dispatcher.h"
#include "host/EditedLines.h"
#include "host/EngineIdentity.h"
#include "host/Hangups.h"
#include "host/HostError.h"
#include "host/Log.h"
#include "host/Modules.h"
#include "host/PlainLines.h"
#include "host/Reload.h"
#include "host/ServiceManager.h"
#include "host/StopSignals.h"
#include "host/Store.h"
#include "host/StorePath.h"
#include "host/access/AlarmReader.h"
#include "host/agents/AuthenticationTraps.h"
#include "host/agents/HostAgents.h"
#include "host/agents/TargetSaves.h"
#include "host/config/ConfigFile.h"
#include "host/verbs/Verbs.h"
#include "host/wire/NetSnmpEngine.h"

#include <fcntl.h>
#include <iostream>
#include <memory>

namespace VLK::host {

namespace {

// What an agent without a store keeps of a SET.
class NoSaves : public ISetSaves {
public:
    void Hold() override {}
    bool SaveHeld() override { return true; }
};

constexpr const char* kGreeting =
    "Type ? to list the commands, help COMMAND to explain one, q to end the agent.\n"
    "Try get 1.3.6.1.2.1.1.1.0 (sysDescr), set 1.3.6.1.2.1.1.4.0 4 me (sysContact).\n";

// What is closed would be taken by the next file that is opened: the store's, say.
void OpenStandardDescriptors()
{
    for (int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // It is to stay open.
        // cppcheck-suppress leakReturnValNotUsed
        if (fcntl(descriptor, F_GETFD) < 0 && open("/dev/null", O_RDWR) != descriptor)
            throw BHostError(eExitUsage, "cannot open /dev/null");
    }
}

std::unique_ptr<ICmdStream> OpenStream(const SOptions& options, const BStopSignals& stop,
                                       const BTerminal* terminal,
                                       const std::vector<ICmdHandler*>& handlers)
{
    if (!terminal)
        return std::make_unique<BPlainLines>(stop.Descriptor());
    auto lines =
        std::make_unique<BEditedLines>(stop.Descriptor(), *terminal, CommandNames(handlers),
                                       options.withoutStore ? "" : HistoryFile());
    lines->Write(BString(kGreeting));
    return lines;
}

std::unique_ptr<BStore> OpenStore(const SOptions& options, const SConfiguration& configuration)
{
    if (options.withoutStore)
        return nullptr;
    auto store = std::make_unique<BStore>(configuration.store.empty() ? DefaultStorePath()
                                                                      : configuration.store);
    if (options.resetStore)
        store->Reset(kEngineSection);
    return store;
}

// It is there as long as modules may raise traps: always.
BTrapGate& TrapGate()
{
    static auto* const gate = new BTrapGate;
    return *gate;
}

// Before any address is open: a number of boots counts from the first packet.
std::optional<SEngineIdentity> StartV3(const SConfiguration& configuration, BStore* store)
{
    if (!configuration.SpeaksV3())
        return std::nullopt;
    const SEngineIdentity identity = StartEngine(store);
    if (identity.boots == kMostBoots)
        LogLine(eLogError,
                "SNMPv3 has started as often as an engine can: no authenticated request is "
                "answered until there is another store");
    return identity;
}

// From coldStart to the end, however it comes.
struct SRun {
    explicit SRun(BHostAgents& hostAgents) : agents(hostAgents) { agents.Start(); }
    ~SRun() { agents.Stop(); }
    BHostAgents& agents;
};

// The service manager hears how far the agent is, and SIGHUP is heard.
struct SServing {
    SServing(const BServiceManager& serviceManager, const std::vector<BTransportAddress>& addresses,
             BReload& reload, const BStopSignals& stop)
        : manager(serviceManager), status(StatusOf(addresses))
    {
        manager.TellReady(status);
        hangups = std::make_unique<BHangups>(stop.Hangups(), [this, &reload] {
            manager.TellReloading();
            reload.Read();
            manager.TellReady(status);
        });
    }
    ~SServing()
    {
        hangups.reset();
        manager.TellStopping();
    }

    static std::string StatusOf(const std::vector<BTransportAddress>& addresses)
    {
        std::string status = "Serving on";
        for (const BTransportAddress& address : addresses)
            status += " " + address.ToString();
        return status;
    }

    const BServiceManager& manager;
    const std::string status;
    std::unique_ptr<BHangups> hangups;
};

void Serve(const SOptions& options, const FAddModules& addModules)
{
    EConsole kind = ChooseConsole(options.console);
    // Before any thread starts, so that all of them leave the signals alone, and before
    // anything that takes its time: SIGHUP may come early.
    bool isTypedTo = kind != eConsoleOff && isatty(STDIN_FILENO);
    BStopSignals stop(isTypedTo ? BStopSignals::eHangupEnds : BStopSignals::eHangupIsRead);
    const BServiceManager manager;
    SetLog(options.log.value_or(eLogStderr), options.logLevel.value_or(eLogInfo));
    const SConfiguration configuration = Configure(options);
    SetLog(configuration.log, configuration.logLevel);
    std::unique_ptr<BTerminal> terminal;
    if (kind == eConsoleEditing)
        terminal = std::make_unique<BTerminal>();
    std::unique_ptr<BStore> store = OpenStore(options, configuration);
    NoSaves noSaves;
    BTime time;
    time.RecordStartTime();
    BAccess access(configuration, store.get());
    modules::SSnmpCounters counters;
    BTrapGate& gate = TrapGate();
    const std::optional<SEngineIdentity> identity = StartV3(configuration, store.get());
    BModules own(configuration, identity, access, counters, store.get(), gate);
    BHostAgents agents(time, access, gate, own.Targets());
    BTargetSaves saves(store ? *store : static_cast<ISetSaves&>(noSaves), agents);
    BRegions regions;
    BWatchingHandler handler(access, saves, regions);
    handler.Init(&time, store.get());
    own.Register(handler, *handler.SystemGroup(), regions);
    addModules(handler, gate, store.get());
    BAuthenticationTraps failures(own.Snmp(), gate);
    BDispatcher dispatcher(handler, access, counters, &failures);
    BNetSnmpEngine engine(dispatcher, counters,
                          configuration.workers ? configuration.workers
                                                : BNetSnmpEngine::DefaultWorkers());

    if (store)
        store->RequireRead();
    if (identity)
        engine.SpeakV3(*identity, configuration.users);
    agents.Open(engine, configuration);
    for (const BTransportAddress& address : agents.Addresses())
        LogLine(eLogNotice, "ready on " + address.ToString());
    BVerbs verbs({handler, regions, access, dispatcher.Stats(), [&] { return engine.Load(); },
                  [&] { return agents.Totals(); }});
    std::vector<ICmdHandler*> commands{&handler, &agents.Commands(), &verbs};
    SRun run(agents);
    BAlarmReader alarmReader(handler, access);
    modules::CAlarmRun sampling(own.Alarms(), alarmReader);
    std::unique_ptr<BConsole> console;
    if (kind != eConsoleOff)
        console = std::make_unique<BConsole>(
            commands, OpenStream(options, stop, terminal.get(), commands), stop);
    BReload reload(options, configuration, {access, handler, own, engine, agents});
    SServing serving(manager, agents.Addresses(), reload, stop);
    engine.Serve(stop.Descriptor());
    if (console)
        console->End();
}

// The library's singletons end with the agent, however it ends.
struct SSingletonsEnd {
    ~SSingletonsEnd() { BSingletons::DestroyAll(); }
};

// An exit status for every way to end.
int ExitStatusOf(const std::function<int()>& run)
{
    try {
        return run();
    } catch (const BConfigError& error) {
        for (const std::string& line : error.Lines())
            LogLine(eLogError, line);
        return error.Status();
    } catch (const BHostError& error) {
        LogLine(eLogError, error.what());
        return error.Status();
    } catch (const std::exception& error) {
        LogLine(eLogError, error.what());
        return eExitStore;
    }
}

} // namespace

int RunAgent(int argc, const char* const* argv)
{
    return ExitStatusOf([&] {
        SOptions options;
        if (std::optional<int> status = ParseOptions(argc, argv, options, std::cout))
            return *status;
        if (options.checkConfig) {
            Configure(options);
            std::cout << options.config << ": no problems found\n";
            return static_cast<int>(eExitDone);
        }
        return RunAgent(options, [](IMIBHandler&, ITrapSender&, INonVolatile*) {});
    });
}

int RunAgent(const SOptions& options, const FAddModules& addModules)
{
    return ExitStatusOf([&] {
        OpenStandardDescriptors();
        SSingletonsEnd end;
        Serve(options, addModules);
        return static_cast<int>(eExitDone);
    });
}

} // namespace VLK::host
