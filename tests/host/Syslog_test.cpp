// Where log lines go, and which.
#include "ReloadingAgent.h"

#include "host/Log.h"

#include "tests/support/EnvironmentVariable.h"

#include <cstdlib>
#include <regex>
#include <sys/socket.h>
#include <sys/un.h>

using namespace VLK::host;

namespace {

// All as it was at first.
struct LogReset {
    ~LogReset() { SetLog(eLogStderr, eLogInfo); }
};

// The log service of a host: what syslog(3) sends to, in the test's own namespace.
class Service {
public:
    explicit Service(const std::string& path)
        : m_socket(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(bind(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    }
    ~Service() { close(m_socket); }

    // The next line: its priority and its text, as "<30>vkagentd[]: text".
    std::string Line(int milliseconds = 20000) const
    {
        pollfd wait{m_socket, POLLIN, 0};
        if (poll(&wait, 1, milliseconds) != 1)
            return "";
        char bytes[4096];
        const ssize_t count = recv(m_socket, bytes, sizeof bytes, 0);
        const std::string line(bytes, count > 0 ? static_cast<size_t>(count) : 0);
        return std::regex_replace(
            line, std::regex("^(<[0-9]+>)[A-Z][a-z]+ +[0-9]+ [0-9:]+ ([^\\[]*)\\[[0-9]+\\]"),
            "$1$2[]");
    }

private:
    int m_socket;
};

// A shell command that runs the rest of its line with /dev/log in a directory of the
// test's, and as little else in /dev as a program needs.
Arguments WithOwnDevices(const std::string& directory, const Arguments& line)
{
    const std::string command = "d=$0; touch $d/null && mount --bind /dev/null $d/null && "
                                "mount --rbind $d /dev && exec \"$@\"";
    Arguments whole{"unshare", "-rm", "sh", "-c", command, directory};
    whole.insert(whole.end(), line.begin(), line.end());
    return whole;
}

} // namespace

TEST(LogLevels, LinesUpToTheLevelAreWritten)
{
    const LogReset reset;
    SetLog(eLogStderr, eLogWarning);
    testing::internal::CaptureStderr();
    LogLine(eLogError, "one");
    LogLine(eLogWarning, "two");
    LogLine(eLogNotice, "three");
    LogLine(eLogInfo, "four");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "test_host: one\ntest_host: two\n");
    EXPECT_TRUE(IsLogged(eLogWarning));
    EXPECT_FALSE(IsLogged(eLogNotice));
}

TEST(LogLevels, TheJournalIsToldTheLevelOfEachLine)
{
    const LogReset reset;
    testing::internal::CaptureStderr();
    struct stat status = {};
    ASSERT_EQ(fstat(STDERR_FILENO, &status), 0);
    const std::string here = std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
    const EnvironmentVariable journal("JOURNAL_STREAM", here);
    LogLine(eLogError, "one");
    LogLine(eLogInfo, "two");
    journal.Set(here + "0");
    LogLine(eLogInfo, "elsewhere");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "<3>test_host: one\n<6>test_host: two\ntest_host: elsewhere\n");
}

TEST(Syslog, TakesTheLinesOfAnAgentWithTheirPriorities)
{
    TempDir directory;
    TempDir devices;
    const Outcome allowed = RunToEnd(WithOwnDevices(devices.Path(), {"true"}));
    if (allowed.status != 0)
        GTEST_SKIP() << "no mount namespace is permitted: " << allowed.output;
    const Service service(devices.File("log"));
    const std::string config = directory.File("agent.toml");
    const std::string text = "agentAddress = \"udp:127.0.0.1:0\"\n";
    WriteFile(config, text + "log = \"syslog\"\n");
    Process agent(WithOwnDevices(
        devices.Path(), {VKAGENTD, "--store", directory.File("store.db"), "--config", config}));
    EXPECT_EQ(service.Line().find("<29>vkagentd[]: ready on udp:127.0.0.1:"), 0u);
    WriteFile(config, text + "log = \"syslog\"\nx = 1\n");
    kill(agent.Pid(), SIGHUP);
    EXPECT_EQ(service.Line().find("<27>vkagentd[]: " + config + ":3: 'x' is no key"), 0u);
    EXPECT_EQ(service.Line(), "<27>vkagentd[]: the configuration stays as it was");
    WriteFile(config, text);
    kill(agent.Pid(), SIGHUP);
    EXPECT_EQ(agent.Line(), "vkagentd: read " + config + " again") << "on standard error";
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
    EXPECT_EQ(agent.Rest(), "");
    EXPECT_EQ(service.Line(0), "");
}

// The option is known before the file is read.
TEST(Syslog, TakesTheReasonWhyAnAgentDoesNotStart)
{
    TempDir devices;
    const Outcome allowed = RunToEnd(WithOwnDevices(devices.Path(), {"true"}));
    if (allowed.status != 0)
        GTEST_SKIP() << "no mount namespace is permitted: " << allowed.output;
    const Service service(devices.File("log"));
    const Outcome outcome = RunToEnd(WithOwnDevices(
        devices.Path(), {VKAGENTD, "--log", "syslog", "--config", "/nowhere/at.toml"}));
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(service.Line(), "<27>vkagentd[]: /nowhere/at.toml: No such file or directory");
}

// A service that reads no more holds no request up.
TEST(Syslog, ThatTakesNoMoreCostsLinesAndNoRequests)
{
    TempDir directory;
    TempDir devices;
    const Outcome allowed = RunToEnd(WithOwnDevices(devices.Path(), {"true"}));
    if (allowed.status != 0)
        GTEST_SKIP() << "no mount namespace is permitted: " << allowed.output;
    const Service service(devices.File("log"));
    const std::string config = directory.File("agent.toml");
    const std::string text = "agentAddress = \"udp:127.0.0.1:0\"\nlog = \"syslog\"\n";
    WriteFile(config, text);
    Process agent(WithOwnDevices(
        devices.Path(), {VKAGENTD, "--store", directory.File("store.db"), "--config", config}));
    const std::string ready = service.Line();
    ASSERT_NE(ready.find("ready on "), ready.npos) << ready;
    const std::string address = ready.substr(ready.find("udp:"));
    // More lines than a socket keeps: max_dgram_qlen, 10 or 512 by default.
    std::string mistakes;
    for (int i = 0; i < 2000; ++i)
        mistakes += "x" + std::to_string(i) + " = 1\n";
    WriteFile(config, text + mistakes);
    kill(agent.Pid(), SIGHUP);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(SnmpTools().Ask(address, "snmpget", "2c", "public", {oid::kSysDescr}).status, 0);
    EXPECT_EQ(agent.Kill(SIGTERM), 0) << "and the end comes";
}

TEST(Syslog, ThatIsNotThereLeavesTheLinesToStandardError)
{
    TempDir directory;
    TempDir devices;
    const Outcome allowed = RunToEnd(WithOwnDevices(devices.Path(), {"true"}));
    if (allowed.status != 0)
        GTEST_SKIP() << "no mount namespace is permitted: " << allowed.output;
    Process agent(
        WithOwnDevices(devices.Path(), {VKAGENTD, "--store", directory.File("store.db"), "--log",
                                        "syslog", "--listen", "udp:127.0.0.1:0"}));
    EXPECT_EQ(agent.Line().find("vkagentd: ready on "), 0u);
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
}
