// A service manager is told how far the agent is.
#include "ReloadingAgent.h"

#include "host/ServiceManager.h"

#include "tests/support/EnvironmentVariable.h"

#include <cstdlib>
#include <regex>
#include <sys/socket.h>
#include <sys/un.h>

using namespace VLK;

namespace {

// What a service manager listens on: a path, or an abstract name behind '@'.
class Manager {
public:
    explicit Manager(std::string name)
        : m_name(std::move(name)), m_socket(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        m_name.copy(address.sun_path, sizeof address.sun_path);
        if (m_name[0] == '@')
            address.sun_path[0] = '\0';
        EXPECT_EQ(bind(m_socket, reinterpret_cast<sockaddr*>(&address),
                       static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + m_name.size())),
                  0);
        m_variable.Set(m_name);
    }
    ~Manager() { close(m_socket); }

    // The next datagram; empty when none comes for long.
    std::string Told(int milliseconds = 20000) const
    {
        pollfd wait{m_socket, POLLIN, 0};
        if (poll(&wait, 1, milliseconds) != 1)
            return "";
        char text[4096];
        const ssize_t count = recv(m_socket, text, sizeof text, 0);
        return std::string(text, count > 0 ? static_cast<size_t>(count) : 0);
    }

private:
    std::string m_name;
    EnvironmentVariable m_variable{"NOTIFY_SOCKET"};
    int m_socket;
};

std::string Abstract() { return "@vkmibh-test-" + std::to_string(getpid()); }

} // namespace

TEST(ServiceManager, IsToldUnderAPathAndUnderAnAbstractName)
{
    TempDir directory;
    for (const std::string& name : {directory.File("notify"), Abstract()}) {
        SCOPED_TRACE(name);
        Manager manager(name);
        const host::BServiceManager told;
        EXPECT_FALSE(std::getenv("NOTIFY_SOCKET")) << "children would take it for theirs";
        told.TellReady("on x");
        EXPECT_EQ(manager.Told(), "READY=1\nSTATUS=on x");
        told.TellStopping();
        EXPECT_EQ(manager.Told(), "STOPPING=1\nSTATUS=Stopping");
    }
}

TEST(ServiceManager, HearsWhenTheReadingBegan)
{
    Manager manager(Abstract());
    const host::BServiceManager told;
    timespec before = {};
    clock_gettime(CLOCK_MONOTONIC, &before);
    told.TellReloading();
    std::smatch parts;
    const std::string text = manager.Told();
    ASSERT_TRUE(std::regex_match(text, parts,
                                 std::regex("RELOADING=1\nMONOTONIC_USEC=([0-9]+)\nSTATUS=[^\n]+")))
        << text;
    const long long since =
        std::stoll(parts[1]) - before.tv_sec * 1000000ll - before.tv_nsec / 1000;
    EXPECT_GE(since, 0);
    EXPECT_LT(since, 60000000);
}

TEST(ServiceManager, ThatIsNotThereHarmsNobody)
{
    for (const char* name : {"/nowhere/at/all", "@nobody listens", "relative", "", "/", "@"}) {
        SCOPED_TRACE(name);
        const EnvironmentVariable variable("NOTIFY_SOCKET", name);
        const host::BServiceManager told;
        told.TellReady("on x");
        EXPECT_FALSE(std::getenv("NOTIFY_SOCKET"));
    }
    const EnvironmentVariable variable("NOTIFY_SOCKET", "/" + std::string(200, 'x'));
    host::BServiceManager().TellReady("on x");
    host::BServiceManager().TellStopping(); // no variable at all
}

TEST(ServiceManager, HearsOfTheStartTheReadingAndTheEnd)
{
    TempDir directory;
    Manager manager(directory.File("notify"));
    ReloadingAgent agent("");
    ASSERT_TRUE(agent.IsReady()) << agent.LogText();
    const std::string serving = "READY=1\nSTATUS=Serving on " + agent.Address();
    EXPECT_EQ(manager.Told(), serving);
    EXPECT_EQ(agent.Reload("nonsense = 1\n").back(), "the configuration stays as it was");
    EXPECT_EQ(manager.Told().find("RELOADING=1\nMONOTONIC_USEC="), 0u);
    EXPECT_EQ(manager.Told(), serving);
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
    EXPECT_EQ(manager.Told(), "STOPPING=1\nSTATUS=Stopping");
    EXPECT_EQ(manager.Told(0), "");
}

// What it says of itself is true: it is ready when requests are answered.
TEST(ServiceManager, IsNotToldOfAnAgentThatCannotServe)
{
    TempDir directory;
    Manager manager(directory.File("notify"));
    const Outcome outcome = RunToEnd(
        {VKAGENTD, "--store", directory.File("store.db"), "--listen", "udp:203.0.113.1:0"});
    EXPECT_EQ(outcome.status, 2) << outcome.output;
    EXPECT_EQ(manager.Told(0), "");
}
