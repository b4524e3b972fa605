// The console under load.
#include "PipedAgent.h"

#include <thread>

TEST(ConsoleLoad, AHundredThousandCommandsLeaveTheWireAnswered)
{
    constexpr int kCommands = 100000;
    TempDir directory;
    PipedAgent agent(directory.File("store.db"));
    ASSERT_TRUE(agent.IsReady()) << agent.LogText();
    std::atomic<bool> ended{false};
    std::atomic<int> asked{0};
    std::thread wire([&] {
        while (!ended) {
            // One second for the answer, and no second try.
            Outcome get = agent.Ask("snmpget", "public", {oid::kSysDescr}, {"-r", "0", "-t", "1"});
            EXPECT_EQ(get.status, 0) << get.output;
            ++asked;
        }
    });
    std::thread typing([&] {
        std::string commands;
        for (int i = 0; i < kCommands; ++i)
            commands += "get 1.3.6.1.2.1.1.1.0\n";
        agent.Type(commands);
    });
    int answers = 0;
    while (answers < kCommands && agent.Line() == "1.3.6.1.2.1.1.1.0 = Velkoran agent")
        ++answers;
    typing.join();
    EXPECT_EQ(answers, kCommands);
    EXPECT_TRUE(VLK::Eventually([&] { return asked > 0; }));
    ended = true;
    wire.join();
    agent.EndInput();
    EXPECT_EQ(agent.Rest(), "");
    EXPECT_EQ(agent.Wait(), 0);
}
